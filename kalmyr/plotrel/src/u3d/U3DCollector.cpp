#include "U3DCollector.h"

#include <kalmyr/base/SbRotation.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLightElement.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kalmyr::detail {

namespace {

constexpr float kDegrees = 180 / std::numbers::pi_v<float>;

bool isFinite(const SbVec3f& v)
{
    return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]);
}

/// Space whose -z axis is the direction and whose y axis is as near to `up` as it can be, without
/// any scaling. False for directions without length.
bool makeRigid(const SbVec3f& position, SbVec3f direction, const SbVec3f& up, SbMatrix& space)
{
    if (!hasPlace(position) || !isFinite(direction) || direction.normalize() == 0)
        return false;
    const SbVec3f back = -direction;
    SbVec3f right = up.cross(back);
    if (!(right.normalize() > 1e-6f)) {
        right = (std::abs(back[1]) < 0.9f ? SbVec3f(0, 1, 0) : SbVec3f(0, 0, 1)).cross(back);
        right.normalize();
    }
    const SbVec3f top = back.cross(right);
    space = SbMatrix(right[0], right[1], right[2], 0, top[0], top[1], top[2], 0, back[0], back[1],
                     back[2], 0, position[0], position[1], position[2], 1);
    return true;
}

bool hasRoom(const SbBox3f& box)
{
    return !box.isEmpty() && hasPlace(box.getMin()) && hasPlace(box.getMax());
}

/// Counts and measures the faces that have a place.
void measureFaces(const SoGeometry& geometry, std::size_t& count, SbBox3f& box)
{
    const auto& positions = geometry.positions;
    for (std::size_t c = 0; c + 2 < geometry.triangles.size(); c += 3) {
        const std::uint32_t* corners = &geometry.triangles[c];
        if (!std::all_of(corners, corners + 3,
                         [&](std::uint32_t i) { return hasPlace(positions[i]); }))
            continue;
        ++count;
        for (int i = 0; i < 3; ++i)
            box.extendBy(positions[corners[i]]);
    }
}

std::size_t countPrimitives(const SoGeometry& geometry)
{
    return geometry.getNumTriangles() + geometry.getNumLines() + geometry.points.size();
}

template <class Value>
void append(std::string& key, const Value& value)
{
    key.append(reinterpret_cast<const char*>(&value), sizeof(value));
}

/// Type names as people know them.
std::string_view kindOf(const SoNode* node)
{
    constexpr std::string_view kPrefix = "VRML";
    std::string_view kind = node->getTypeId().getName().view();
    if (kind.size() > kPrefix.size() && kind.starts_with(kPrefix))
        kind.remove_prefix(kPrefix.size());
    return kind;
}

} // namespace

// ---- groups

void U3DCollector::enter(const SoNode* group, const SbMatrix& toWorld)
{
    Open& open = m_open.emplace_back();
    open.group = group;
    open.entered = toWorld;
}

void U3DCollector::leave()
{
    m_open.pop_back();
    m_numMade = std::min(m_numMade, m_open.size());
}

std::string U3DCollector::nameOf(const SoNode* node)
{
    const SbName own = node->getName();
    return own ? m_nodeNames.makeUnique(own.view()) : m_nodeNames.makeNumbered(kindOf(node));
}

SbMatrix U3DCollector::relative(const SbMatrix& toWorld, const Open& above)
{
    return toWorld == above.world ? SbMatrix::identity()
                                  : (U3DAffine(toWorld) * above.inverse).toMatrix();
}

/// The groups on the way become nodes. Each takes the transformation that was in force where the
/// one below it was entered, the innermost the present one.
void U3DCollector::makeGroups(const SbMatrix& toWorld)
{
    const std::size_t wanted = std::min(m_open.size(), kMaxDepth);
    for (; m_numMade < wanted; ++m_numMade) {
        const bool isLast = m_numMade + 1 == m_open.size();
        makeGroup(m_open[m_numMade], innermost(), isLast ? toWorld : m_open[m_numMade + 1].entered);
    }
}

void U3DCollector::makeGroup(Open& open, const Open& above, const SbMatrix& toWorld)
{
    U3DNode node;
    node.kind = U3DNode::GROUP;
    node.name = nameOf(open.group);
    node.parent = above.node;
    node.matrix = relative(toWorld, above);
    open.world = toWorld;
    // Nodes below are placed relative to the rounded matrices, so that errors do not add up from
    // level to level.
    open.frame = U3DAffine(node.matrix) * above.frame;
    if (!isFinite(toWorld) || !isFinite(node.matrix) || !open.frame.invert(open.inverse)) {
        node.matrix = SbMatrix::identity();
        open.world = above.world;
        open.frame = above.frame;
        open.inverse = above.inverse;
    }
    open.node = static_cast<int>(m_scene.nodes.size());
    m_scene.nodes.push_back(std::move(node));
}

int U3DCollector::addNode(U3DNode::Kind kind, std::string name, const SbMatrix& toWorld)
{
    U3DNode node;
    node.kind = kind;
    node.name = std::move(name);
    node.parent = innermost().node;
    node.matrix = relative(toWorld, innermost());
    m_scene.nodes.push_back(std::move(node));
    return static_cast<int>(m_scene.nodes.size()) - 1;
}

// ---- shapes

void U3DCollector::shape(SoShape* shape, const SoNode* named, SoState* state)
{
    const SoDrawStyleValues::Style style = SoDrawStyleElement::get(state).style;
    if (style == SoDrawStyleValues::INVISIBLE)
        return;
    const SoRef<SoGeometry> geometry = shape->getGeometry(state);
    if (!geometry)
        return;
    const SbMatrix& toWorld = SoModelMatrixElement::get(state);
    if (!isFinite(toWorld)) {
        m_scene.numLeftOut += countPrimitives(*geometry);
        return;
    }
    const Seen seen{named, shape, geometry, state};
    if (style == SoDrawStyleValues::POINTS) {
        addWires(seen, U3DWireSource::VERTICES);
        return;
    }
    if (!geometry->triangles.empty() && style == SoDrawStyleValues::LINES)
        addWires(seen, U3DWireSource::EDGES);
    else if (!geometry->triangles.empty())
        addSurface(seen);
    if (!geometry->lines.empty())
        addWires(seen, U3DWireSource::LINES);
    if (!geometry->points.empty())
        addWires(seen, U3DWireSource::POINTS);
}

std::string U3DCollector::nameOf(const Seen& seen)
{
    const SbName own = seen.named->getName();
    return own ? m_nodeNames.makeUnique(own.view()) : m_nodeNames.makeNumbered(kindOf(seen.shape));
}

void U3DCollector::addSurface(const Seen& seen)
{
    const SoGeometry& geometry = *seen.geometry;
    const bool isTextured = U3DLooks::hasTexture(seen.state, geometry);
    const SbMatrix textureMatrix =
        isTextured ? SoTextureMatrixElement::get(seen.state) : SbMatrix::identity();
    std::string key;
    append(key, geometry.getId());
    append(key, isTextured);
    append(key, textureMatrix);
    const auto [at, isNew] = m_known.try_emplace(std::move(key));
    Known& known = at->second;
    if (isNew) {
        U3DGenerator made;
        made.mesh = {seen.geometry, 0, isTextured, textureMatrix};
        measureFaces(geometry, made.mesh.numFaces, made.box);
        known.numLeftOut = geometry.getNumTriangles() - made.mesh.numFaces;
        if (made.mesh.numFaces > 0)
            known.generators.push_back(addGenerator(seen, std::move(made)));
    }
    m_scene.numLeftOut += known.numLeftOut;
    // A reader that does not turn faces round in mirrored spaces would leave out the wrong ones.
    const bool isMirrored = U3DAffine(SoModelMatrixElement::get(seen.state)).getDeterminant() < 0;
    const bool bothSides = !geometry.solid || isMirrored;
    for (const int generator : known.generators)
        addModel(seen, generator, {m_looks.surfaceShader(seen.state, geometry)}, bothSides);
}

void U3DCollector::addWires(const Seen& seen, U3DWireSource source)
{
    std::string key;
    append(key, seen.geometry->getId());
    append(key, source);
    const auto [at, isNew] = m_known.try_emplace(std::move(key));
    Known& known = at->second;
    if (isNew) {
        for (U3DWire& wire : makeWires(*seen.geometry, source, known.numLeftOut)) {
            U3DGenerator made;
            for (const SbVec3f& p : wire.positions)
                made.box.extendBy(p);
            made.wire = std::move(wire);
            known.generators.push_back(addGenerator(seen, std::move(made)));
        }
    }
    m_scene.numLeftOut += known.numLeftOut;
    for (const int generator : known.generators) {
        const U3DWire& wire = m_scene.generators[static_cast<std::size_t>(generator)].wire;
        std::vector<int> shaders;
        for (const std::uint32_t color : wire.colors)
            shaders.push_back(m_looks.wireShader(seen.state, color));
        if (shaders.empty())
            shaders.push_back(m_looks.wireShader(seen.state));
        addModel(seen, generator, std::move(shaders), true);
    }
}

int U3DCollector::addGenerator(const Seen& seen, U3DGenerator generator)
{
    const SbName own = seen.named->getName();
    generator.name = own ? m_generatorNames.makeUnique(own.view())
                         : m_generatorNames.makeNumbered(kindOf(seen.shape));
    m_scene.generators.push_back(std::move(generator));
    return static_cast<int>(m_scene.generators.size()) - 1;
}

void U3DCollector::addModel(const Seen& seen, int generator, std::vector<int> shaders,
                            bool bothSides)
{
    const SbMatrix& toWorld = SoModelMatrixElement::get(seen.state);
    SbBox3f box = m_scene.generators[static_cast<std::size_t>(generator)].box;
    box.transform(U3DAffine(toWorld).toMatrix());
    makeGroups(toWorld);
    if (!hasRoom(box) || !isFinite(relative(toWorld, innermost()))) {
        m_scene.numLeftOut += countPrimitives(*seen.geometry);
        return;
    }
    m_scene.box.extendBy(box);
    ++m_scene.numModels;
    U3DNode& node =
        m_scene.nodes[static_cast<std::size_t>(addNode(U3DNode::MODEL, nameOf(seen), toWorld))];
    node.resource = generator;
    node.bothSides = bothSides;
    node.shaders = std::move(shaders);
}

// ---- lights and views

void U3DCollector::light(const SoNode* node, const SoLightRecord& record)
{
    const SbMatrix& toWorld = record.toWorld;
    const bool hasPlace = record.kind != SoLightRecord::DIRECTIONAL;
    const bool hasDirection = record.kind != SoLightRecord::POINT;
    const SbVec3f position = toWorld.point(hasPlace ? record.position : SbVec3f());
    const SbVec3f direction =
        hasDirection ? toWorld.direction(record.direction) : SbVec3f(0, 0, -1);
    SbMatrix space;
    if (!makeRigid(position, direction, SbVec3f(0, 1, 0), space))
        return;
    U3DLight made;
    made.kind =
        hasPlace ? (hasDirection ? U3DLight::SPOT : U3DLight::POINT) : U3DLight::DIRECTIONAL;
    for (int i = 0; i < 3; ++i) {
        made.color[i] = record.color[i] > 0 ? std::min(record.color[i], 1.0f) : 0;
        made.attenuation[i] = record.attenuation[i] > 0 ? record.attenuation[i] : 0;
    }
    if (!isFinite(made.attenuation) || made.attenuation == SbVec3f())
        made.attenuation = SbVec3f(1, 0, 0);
    made.intensity = record.intensity > 0 ? std::min(record.intensity, 1e6f) : 0;
    constexpr float kMaxCutOff = std::numbers::pi_v<float> / 2;
    const float cutOff = record.cutOffAngle > 0 ? std::min(record.cutOffAngle, kMaxCutOff) : 0;
    made.spotAngle = 2 * cutOff * kDegrees;
    made.fades = record.dropOffRate > 0 || record.beamWidth >= 0;
    makeGroups(toWorld);
    const int index = addNode(U3DNode::LIGHT, nameOf(node), space);
    m_scene.nodes[static_cast<std::size_t>(index)].resource =
        static_cast<int>(m_scene.lights.size());
    m_scene.lights.push_back(made);
}

void U3DCollector::camera(const SoNode* node, const SbViewVolume& volume, const SbMatrix& toWorld)
{
    U3DView view;
    view.perspective = volume.getProjectionType() == SbViewVolume::PERSPECTIVE;
    view.nearDistance = volume.getNearDist();
    view.farDistance = view.nearDistance + volume.getDepth();
    const float height = volume.getHeight();
    view.extent =
        view.perspective ? 2 * std::atan2(height / 2, view.nearDistance) * kDegrees : height;
    const float aspect = volume.getWidth() / height;
    view.aspect = aspect > 0 && std::isfinite(aspect) ? aspect : 1;
    addView(node, view, volume.getProjectionPoint(), volume.getProjectionDirection(),
            volume.getViewUp(), toWorld);
}

void U3DCollector::viewpoint(const SoVRMLViewpoint* node, const SbMatrix& toWorld)
{
    U3DView view;
    view.extent = node->getHeightAngle(view.aspect) * kDegrees;
    const SbRotation orientation = node->getOrientation(toWorld);
    addView(node, view, node->getPosition(toWorld), orientation.rotated(SbVec3f(0, 0, -1)),
            orientation.rotated(SbVec3f(0, 1, 0)), toWorld);
}

void U3DCollector::addView(const SoNode* node, U3DView view, const SbVec3f& position,
                           const SbVec3f& direction, const SbVec3f& up, const SbMatrix& toWorld)
{
    SbMatrix space;
    if (!(view.extent > 0) || !std::isfinite(view.extent) || !std::isfinite(view.nearDistance)
        || !std::isfinite(view.farDistance) || !makeRigid(position, direction, up, space))
        return;
    makeGroups(toWorld);
    U3DNode& made =
        m_scene.nodes[static_cast<std::size_t>(addNode(U3DNode::VIEW, nameOf(node), space))];
    made.resource = static_cast<int>(m_scene.views.size());
    view.position = position;
    m_scene.views.push_back(view);
}

void U3DCollector::finish()
{
    constexpr float kFarPerNear = 1e4f;
    for (U3DView& view : m_scene.views) {
        if (view.farDistance > view.nearDistance)
            continue;
        float reach = 0;
        for (int i = 0; i < 8 && !m_scene.box.isEmpty(); ++i)
            reach = std::max(reach, (m_scene.box.getCorner(i) - view.position).length());
        view.farDistance = std::isfinite(reach) && reach > 0 ? reach * 1.01f : 1;
        view.nearDistance = view.farDistance / kFarPerNear;
    }
}

} // namespace kalmyr::detail
