#include <kalmyr/vrml/SoVRMLNurbs.h>

#include "GeometryInput.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/vrml/SoVRMLCoordinate.h>
#include <kalmyr/vrml/SoVRMLMacros.h>
#include <kalmyr/vrml/SoVRMLProto.h>
#include <kalmyr/vrml/SoVRMLTransform.h>

#include "shapes/NurbsBuilder.h"
#include "shapes/VertexKeys.h"

#include <algorithm>
#include <cmath>

using namespace kalmyr::detail;

namespace {

template <class T>
T* as(SoNode* node)
{
    node = SoVRMLProtoInstance::resolve(node);
    return node && node->isOfType(T::getClassTypeId()) ? static_cast<T*>(node) : nullptr;
}

/// Knots of a curve from its first control point to its last one.
std::vector<float> evenKnots(int numPoints, int order)
{
    std::vector<float> knots;
    const int inner = numPoints - order;
    if (inner < 0 || order < 2)
        return knots;
    knots.assign(static_cast<std::size_t>(order), 0.0f);
    for (int i = 1; i <= inner; ++i)
        knots.push_back(static_cast<float>(i) / static_cast<float>(inner + 1));
    knots.insert(knots.end(), static_cast<std::size_t>(order), 1.0f);
    return knots;
}

/// `most` is how many control points are given.
std::string setKnots(NurbsKnots& to, std::span<const float> knots, int numPoints, int order,
                     int most)
{
    if (numPoints > most)
        return "there are fewer control points than " + std::to_string(numPoints);
    if (order > kMaxNurbsOrder)
        return "the order " + std::to_string(order) + " is higher than "
               + std::to_string(kMaxNurbsOrder);
    const std::vector<float> even = evenKnots(knots.empty() ? numPoints : 0, order);
    const std::span<const float> used = knots.empty() ? std::span<const float>(even) : knots;
    const std::string fault = to.set(used, numPoints);
    if (fault.empty() && to.getOrder() != order)
        return std::to_string(knots.size()) + " knots do not fit " + std::to_string(numPoints)
               + " control points and the order " + std::to_string(order);
    return fault;
}

template <class Vec>
std::string setPoints(std::vector<SbVec4d>& to, std::span<const Vec> points,
                      std::span<const float> weights, std::size_t count)
{
    if (points.size() < count)
        return "there are " + std::to_string(points.size()) + " control points where "
               + std::to_string(count) + " are needed";
    to.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double w = i < weights.size() ? weights[i] : 1;
        const Vec& p = points[i];
        double z = 0;
        if constexpr (Vec::kSize > 2)
            z = p[2];
        to.emplace_back(p[0] * w, p[1] * w, z * w, w);
    }
    return checkPoints(to);
}

std::size_t countOf(int u, int v, int w = 1)
{
    return static_cast<std::size_t>(std::max(u, 0)) * static_cast<std::size_t>(std::max(v, 0))
           * static_cast<std::size_t>(std::max(w, 0));
}

int segmentsOf(int tessellation, int numPoints)
{
    constexpr std::int64_t kMost = kMaxCurvePoints;
    const std::int64_t count =
        tessellation >= 0 ? tessellation : -std::int64_t(tessellation) * numPoints;
    return static_cast<int>(std::min(count, kMost));
}

std::uint64_t shapeKey(SoState* state)
{
    const std::uint64_t key = addToKey(0, state->getValueId(SoComplexityElement::getStackIndex()));
    return addToKey(key, hasTexture(state) ? 2 : 1);
}

} // namespace

namespace kalmyr::detail {

ListEvents::ListEvents(SoMFNode& list, SoMFNode& add, SoMFNode& remove)
    : m_list(list),
      m_add(add),
      m_remove(remove),
      m_addSensor(
          [](void* self, SoSensor*) {
              auto* events = static_cast<ListEvents*>(self);
              events->take(events->m_add, true);
          },
          this),
      m_removeSensor(
          [](void* self, SoSensor*) {
              auto* events = static_cast<ListEvents*>(self);
              events->take(events->m_remove, false);
          },
          this)
{
    m_addSensor.setPriority(0);
    m_addSensor.attach(&add);
    m_removeSensor.setPriority(0);
    m_removeSensor.attach(&remove);
}

ListEvents::~ListEvents()
{
    m_addSensor.detach();
    m_removeSensor.detach();
}

void ListEvents::take(SoMFNode& event, bool adds)
{
    const std::vector<SoNode*> nodes = event.getValues();
    if (nodes.empty())
        return;
    const std::vector<SoRef<SoNode>> held(nodes.begin(), nodes.end());
    // An event leaves nothing behind.
    const bool told = event.enableNotify(false);
    event.setNum(0);
    event.setDefault(true);
    event.enableNotify(told);
    for (SoNode* node : nodes) {
        const std::vector<SoNode*> known = m_list.getValues();
        const auto found = std::find(known.begin(), known.end(), node);
        if (adds && node && found == known.end())
            m_list.set1Value(m_list.getNum(), node);
        else if (!adds && found != known.end())
            m_list.deleteValues(static_cast<int>(found - known.begin()), 1);
    }
}

} // namespace kalmyr::detail

// ---- curve

SO_NODE_SOURCE(SoVRMLNurbsCurve)

SoVRMLNurbsCurve::SoVRMLNurbsCurve()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EXPOSED_EMPTY(controlPoint);
    SO_VRML_EXPOSED_EMPTY(weight);
    SO_VRML_EXPOSED(tessellation, (0));
    SO_VRML_EMPTY_FIELD(knot);
    SO_VRML_FIELD(order, (3));
}

SoVRMLNurbsCurve::~SoVRMLNurbsCurve() = default;

void SoVRMLNurbsCurve::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsCurve, SoVRMLGeometry, "VRMLNurbsCurve");
}

std::uint64_t SoVRMLNurbsCurve::stateKey(SoState* state) const
{
    return shapeKey(state);
}

void SoVRMLNurbsCurve::buildGeometry(SoState* state, SoGeometry& geometry)
{
    const int count = controlPoint.getNum();
    if (count == 0)
        return;
    NurbsCurve curve;
    std::string fault = setKnots(curve.knots, knot.values(), count, order.getValue(), count);
    if (fault.empty())
        fault = setPoints(curve.points, controlPoint.values(), weight.values(), countOf(count, 1));
    if (!fault.empty())
        return warnOfNurbs(this, fault);
    buildNurbsCurve(curve, toleranceOf(SoComplexityElement::get(state)) * sizeOf(curve.points),
                    geometry, segmentsOf(tessellation.getValue(), count));
}

// ---- surface

SO_NODE_SOURCE(SoVRMLNurbsSurface)

SoVRMLNurbsSurface::SoVRMLNurbsSurface()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EXPOSED_EMPTY(controlPoint);
    SO_VRML_EXPOSED_EMPTY(texCoord);
    SO_VRML_EXPOSED(uTessellation, (0));
    SO_VRML_EXPOSED(vTessellation, (0));
    SO_VRML_EXPOSED_EMPTY(weight);
    SO_VRML_FIELD(ccw, (true));
    SO_VRML_FIELD(solid, (true));
    SO_VRML_FIELD(uDimension, (0));
    SO_VRML_EMPTY_FIELD(uKnot);
    SO_VRML_FIELD(uOrder, (3));
    SO_VRML_FIELD(vDimension, (0));
    SO_VRML_EMPTY_FIELD(vKnot);
    SO_VRML_FIELD(vOrder, (3));
}

SoVRMLNurbsSurface::~SoVRMLNurbsSurface() = default;

void SoVRMLNurbsSurface::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsSurface, SoVRMLGeometry, "VRMLNurbsSurface");
}

std::uint64_t SoVRMLNurbsSurface::stateKey(SoState* state) const
{
    return shapeKey(state);
}

std::string SoVRMLNurbsSurface::fill(SoState* state, NurbsSurfaceInput& input,
                                     NurbsSurface& texture) const
{
    NurbsSurface& to = input.surface;
    const int numU = uDimension.getValue(), numV = vDimension.getValue();
    const int given = controlPoint.getNum();
    std::string fault = setKnots(to.u, uKnot.values(), numU, uOrder.getValue(), given);
    if (fault.empty())
        fault = setKnots(to.v, vKnot.values(), numV, vOrder.getValue(), given);
    if (fault.empty())
        fault = setPoints(to.points, controlPoint.values(), weight.values(), countOf(numU, numV));
    if (!fault.empty())
        return fault;
    input.tolerance = toleranceOf(SoComplexityElement::get(state)) * sizeOf(to.points);
    input.segments[0] = segmentsOf(uTessellation.getValue(), numU);
    input.segments[1] = segmentsOf(vTessellation.getValue(), numV);
    input.clockwise = !ccw.getValue();
    input.solid = solid.getValue();
    input.makesTexCoords = hasTexture(state);
    SoNode* coords = texCoord.isIgnored() ? nullptr : texCoord.getValue();
    if (!input.makesTexCoords || !coords)
        return {};
    if (const auto* picture = as<SoVRMLNurbsTextureSurface>(coords)) {
        const int u = picture->uDimension.getValue(), v = picture->vDimension.getValue();
        const int most = picture->controlPoint.getNum();
        fault = setKnots(texture.u, picture->uKnot.values(), u, picture->uOrder.getValue(), most);
        if (fault.empty())
            fault =
                setKnots(texture.v, picture->vKnot.values(), v, picture->vOrder.getValue(), most);
        if (fault.empty())
            fault = setPoints(texture.points, picture->controlPoint.values(),
                              picture->weight.values(), countOf(u, v));
    } else {
        texture.u = to.u;
        texture.v = to.v;
        fault =
            setPoints(texture.points, texCoordsOf(texCoord), weight.values(), countOf(numU, numV));
    }
    input.texCoords = &texture;
    return fault.empty() ? fault : "texCoord: " + fault;
}

void SoVRMLNurbsSurface::buildGeometry(SoState* state, SoGeometry& geometry)
{
    if (controlPoint.getNum() == 0 && uDimension.getValue() == 0)
        return; // nothing given yet
    NurbsSurfaceInput input;
    NurbsSurface texture;
    input.node = this;
    const std::string fault = fill(state, input, texture);
    if (!fault.empty())
        return warnOfNurbs(this, fault);
    buildNurbsSurface(input, geometry);
}

SO_NODE_SOURCE(SoVRMLNurbsTextureSurface)

SoVRMLNurbsTextureSurface::SoVRMLNurbsTextureSurface()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(controlPoint);
    SO_VRML_EXPOSED_EMPTY(weight);
    SO_VRML_FIELD(uDimension, (0));
    SO_VRML_EMPTY_FIELD(uKnot);
    SO_VRML_FIELD(uOrder, (3));
    SO_VRML_FIELD(vDimension, (0));
    SO_VRML_EMPTY_FIELD(vKnot);
    SO_VRML_FIELD(vOrder, (3));
}

SoVRMLNurbsTextureSurface::~SoVRMLNurbsTextureSurface() = default;

void SoVRMLNurbsTextureSurface::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsTextureSurface, SoNode, "VRMLNurbsTextureSurface");
}

// ---- trimming

SO_NODE_SOURCE(SoVRMLTrimmedSurface)

SoVRMLTrimmedSurface::SoVRMLTrimmedSurface()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EVENT_IN(addTrimmingContour);
    SO_VRML_EVENT_IN(removeTrimmingContour);
    SO_VRML_EXPOSED_EMPTY(trimmingContour);
    SO_VRML_EXPOSED_EMPTY(surface);
}

SoVRMLTrimmedSurface::~SoVRMLTrimmedSurface() = default;

void SoVRMLTrimmedSurface::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLTrimmedSurface, SoVRMLGeometry, "VRMLTrimmedSurface");
}

std::uint64_t SoVRMLTrimmedSurface::stateKey(SoState* state) const
{
    return shapeKey(state);
}

void SoVRMLTrimmedSurface::buildGeometry(SoState* state, SoGeometry& geometry)
{
    const auto* whole = as<SoVRMLNurbsSurface>(surface.isIgnored() ? nullptr : surface.getValue());
    if (!whole)
        return;
    NurbsSurfaceInput input;
    NurbsSurface texture;
    input.node = this;
    std::string fault = whole->fill(state, input, texture);
    std::vector<SoProfilePiece> pieces;
    for (SoNode* node : trimmingContour.getValues()) {
        const auto* contour = as<SoVRMLContour2D>(node);
        auto line = std::make_shared<std::vector<SbVec2d>>();
        if (contour && fault.empty())
            fault = contour->addLine(SoComplexityElement::get(state), *line);
        pieces.push_back({line, true});
    }
    if (!fault.empty())
        return warnOfNurbs(this, fault);
    input.outlines = outlinesOf(pieces);
    buildNurbsSurface(input, geometry);
}

SO_NODE_SOURCE(SoVRMLContour2D)

SoVRMLContour2D::SoVRMLContour2D()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(addChildren);
    SO_VRML_EVENT_IN(removeChildren);
    SO_VRML_EXPOSED_EMPTY(children);
}

SoVRMLContour2D::~SoVRMLContour2D() = default;

void SoVRMLContour2D::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLContour2D, SoNode, "VRMLContour2D");
}

std::string SoVRMLContour2D::addLine(float complexity, std::vector<SbVec2d>& line) const
{
    for (SoNode* child : children.getValues()) {
        if (const auto* polyline = as<SoVRMLPolyline2D>(child)) {
            for (const SbVec2f& p : polyline->point.values()) {
                if (!std::isfinite(p[0] + p[1]))
                    return "a contour has a point that is not finite";
                line.emplace_back(p);
            }
            continue;
        }
        const auto* given = as<SoVRMLNurbsCurve2D>(child);
        if (!given || given->controlPoint.getNum() == 0)
            continue;
        NurbsCurve curve;
        const int count = given->controlPoint.getNum();
        std::string fault = setPoints(curve.points, given->controlPoint.values(),
                                      given->weight.values(), countOf(count, 1));
        const std::vector<float> even = evenKnots(count, given->order.getValue());
        const std::span<const float> knots =
            given->knot.getNum() > 0 ? given->knot.values() : std::span<const float>(even);
        if (fault.empty())
            fault = makeProfileLine(std::move(curve), knots, complexity, line);
        if (!fault.empty())
            return "contour: " + fault;
    }
    return {};
}

SO_NODE_SOURCE(SoVRMLNurbsCurve2D)

SoVRMLNurbsCurve2D::SoVRMLNurbsCurve2D()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(controlPoint);
    SO_VRML_EXPOSED(tessellation, (0));
    SO_VRML_EXPOSED_EMPTY(weight);
    SO_VRML_EMPTY_FIELD(knot);
    SO_VRML_FIELD(order, (3));
}

SoVRMLNurbsCurve2D::~SoVRMLNurbsCurve2D() = default;

void SoVRMLNurbsCurve2D::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsCurve2D, SoNode, "VRMLNurbsCurve2D");
}

SO_NODE_SOURCE(SoVRMLPolyline2D)

SoVRMLPolyline2D::SoVRMLPolyline2D()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(point);
}

SoVRMLPolyline2D::~SoVRMLPolyline2D() = default;

void SoVRMLPolyline2D::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLPolyline2D, SoNode, "VRMLPolyline2D");
}

// ---- groups

SO_NODE_SOURCE(SoVRMLNurbsGroup)

SoVRMLNurbsGroup::SoVRMLNurbsGroup()
{
    SO_NODE_CONSTRUCTOR(SoVRMLParent);
    SO_VRML_EXPOSED(tessellationScale, (1.0f));
}

SoVRMLNurbsGroup::~SoVRMLNurbsGroup() = default;

void SoVRMLNurbsGroup::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsGroup, SoVRMLParent, "VRMLNurbsGroup");
}

/// The number of segments grows tenfold from no complexity to a whole one.
void SoVRMLNurbsGroup::setState(SoState* state)
{
    const float scale = tessellationScale.getValue();
    if (tessellationScale.isIgnored() || !(scale > 0) || !std::isfinite(scale) || scale == 1)
        return;
    const float before = SoComplexityElement::get(state);
    auto& element = state->write<SoComplexityElement>();
    element.value().value = std::clamp(before + std::log10(scale), 0.0f, 1.0f);
    element.accumulatedBy(this);
}

// ---- interpolator

SO_NODE_SOURCE(SoVRMLNurbsPositionInterpolator)

SoVRMLNurbsPositionInterpolator::SoVRMLNurbsPositionInterpolator()
    : m_sensor([](void* self,
                  SoSensor*) { static_cast<SoVRMLNurbsPositionInterpolator*>(self)->follow(); },
               this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(set_fraction);
    SO_VRML_EXPOSED(dimension, (0));
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EXPOSED_EMPTY(keyWeight);
    SO_VRML_EXPOSED_EMPTY(knot);
    SO_VRML_EXPOSED(order, (4));
    SO_VRML_EVENT_OUT(value_changed);
    m_sensor.setPriority(0);
    m_sensor.attach(&set_fraction);
}

SoVRMLNurbsPositionInterpolator::~SoVRMLNurbsPositionInterpolator()
{
    m_sensor.detach();
}

void SoVRMLNurbsPositionInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsPositionInterpolator, SoNode, "VRMLNurbsPositionInterpolator");
}

void SoVRMLNurbsPositionInterpolator::follow()
{
    if (keyValue.getNum() == 0 || !m_cascade.mayReact())
        return;
    const int count = dimension.getValue() > 0 ? dimension.getValue() : keyValue.getNum();
    NurbsCurve curve;
    std::string fault =
        setKnots(curve.knots, knot.values(), count, order.getValue(), keyValue.getNum());
    if (fault.empty())
        fault = setPoints(curve.points, keyValue.values(), keyWeight.values(), countOf(count, 1));
    const float fraction = set_fraction.getValue();
    if (fault.empty() && !std::isfinite(fraction))
        fault = "the fraction is not finite";
    if (fault.empty())
        value_changed = SbVec3f(curve.at(fraction));
    else
        SoDebugError::postWarning("NurbsPositionInterpolator", "\"%s\": %s", getName().getString(),
                                  fault.c_str());
}

// ---- deformer

SO_NODE_SOURCE(SoVRMLCoordinateDeformer)

SoVRMLCoordinateDeformer::SoVRMLCoordinateDeformer()
{
    SO_NODE_CONSTRUCTOR(SoVRMLParent);
    SO_VRML_EXPOSED_EMPTY(controlPoint);
    SO_VRML_EXPOSED_EMPTY(inputCoord);
    SO_VRML_EXPOSED_EMPTY(inputTransform);
    SO_VRML_EXPOSED_EMPTY(outputCoord);
    SO_VRML_EXPOSED_EMPTY(weight);
    SO_VRML_FIELD(uDimension, (0));
    SO_VRML_EMPTY_FIELD(uKnot);
    SO_VRML_FIELD(uOrder, (2));
    SO_VRML_FIELD(vDimension, (0));
    SO_VRML_EMPTY_FIELD(vKnot);
    SO_VRML_FIELD(vOrder, (2));
    SO_VRML_FIELD(wDimension, (0));
    SO_VRML_EMPTY_FIELD(wKnot);
    SO_VRML_FIELD(wOrder, (2));
    SoField* const watched[] = {&controlPoint, &weight, &inputCoord, &inputTransform};
    for (std::size_t i = 0; i < 4; ++i) {
        m_sensors[i].setFunction([](void* self, SoSensor*) {
            auto* node = static_cast<SoVRMLCoordinateDeformer*>(self);
            // While a file is read, or a lattice is set up, not all is there.
            if (node->outputCoord.getNum() > 0 && node->inputCoord.getNum() > 0
                && node->uDimension.getValue() > 0 && node->wDimension.getValue() > 0)
                node->deform();
        });
        m_sensors[i].setData(this);
        m_sensors[i].setPriority(0);
        m_sensors[i].attach(watched[i]);
    }
}

SoVRMLCoordinateDeformer::~SoVRMLCoordinateDeformer()
{
    for (SoFieldSensor& sensor : m_sensors)
        sensor.detach();
}

void SoVRMLCoordinateDeformer::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLCoordinateDeformer, SoVRMLParent, "VRMLCoordinateDeformer");
}

bool SoVRMLCoordinateDeformer::deform()
{
    if (m_isBusy)
        return true; // what comes of its own output
    const int numU = uDimension.getValue(), numV = vDimension.getValue(),
              numW = wDimension.getValue(), given = controlPoint.getNum();
    NurbsKnots u, v, w;
    std::vector<SbVec4d> points;
    std::string fault = setKnots(u, uKnot.values(), numU, uOrder.getValue(), given);
    if (fault.empty())
        fault = setKnots(v, vKnot.values(), numV, vOrder.getValue(), given);
    if (fault.empty())
        fault = setKnots(w, wKnot.values(), numW, wOrder.getValue(), given);
    if (fault.empty())
        fault =
            setPoints(points, controlPoint.values(), weight.values(), countOf(numU, numV, numW));
    if (!fault.empty()) {
        SoDebugError::postWarning("CoordinateDeformer", "\"%s\": %s", getName().getString(),
                                  fault.c_str());
        return false;
    }
    m_isBusy = true;
    for (int i = 0; i < std::min(inputCoord.getNum(), outputCoord.getNum()); ++i) {
        const auto* from = as<SoVRMLCoordinate>(inputCoord[i]);
        auto* to = as<SoVRMLCoordinate>(outputCoord[i]);
        if (!from || !to || from == to)
            continue;
        const auto* carry =
            i < inputTransform.getNum() ? as<SoVRMLTransform>(inputTransform[i]) : nullptr;
        const SbMatrix matrix = carry ? carry->getLocalMatrix() : SbMatrix::identity();
        std::vector<SbVec3f> bent;
        bent.reserve(static_cast<std::size_t>(from->point.getNum()));
        for (const SbVec3f& p : from->point.values())
            bent.push_back(volumePoint(u, v, w, points, matrix.point(p)));
        to->point.setNumQuietly(static_cast<int>(bent.size()));
        std::copy(bent.begin(), bent.end(), to->point.startEditing());
        to->point.finishEditing();
    }
    m_isBusy = false;
    return true;
}
