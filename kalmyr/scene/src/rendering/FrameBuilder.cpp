#include "rendering/FrameBuilder.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>

namespace kalmyr::detail {

namespace {

using Plane = std::array<float, 4>;
using Planes = std::array<Plane, 6>;

/// Row of an SbMatrix-like array times a matrix.
template <class Sum>
void multiplyRow(const float* row, const Matrix4& b, float* out)
{
    for (int c = 0; c < 4; ++c) {
        Sum sum = 0;
        for (int k = 0; k < 4; ++k) {
            sum += static_cast<Sum>(row[k]) * static_cast<Sum>(b.m[4 * k + c]);
        }
        out[c] = static_cast<float>(sum);
    }
}

bool isMirroring(const Matrix4& m)
{
    const float* a = m.m;
    return a[0] * (a[5] * a[10] - a[6] * a[9]) - a[1] * (a[4] * a[10] - a[6] * a[8])
               + a[2] * (a[4] * a[9] - a[5] * a[8])
           < 0;
}

float eyeDepth(const SbVec3f& p, const Matrix4& m)
{
    return p[0] * m.m[2] + p[1] * m.m[6] + p[2] * m.m[10] + m.m[14];
}

/// Planes of the view in the space that `toEye` leads out of; inside is positive. The sides stand
/// `reach` pixels outside.
Planes planesOf(const RenderView& view, const Matrix4& toEye, float reach = 0)
{
    const SbMatrix& projection = view.view.projection;
    const SbVec2s& pixels = view.region.getViewportSizePixels();
    const Matrix4 toClip = Matrix4::product(SbMatrix(toEye.m), Matrix4::from(projection));
    Planes planes;
    for (int i = 0; i < 6; ++i) {
        const int axis = i / 2;
        const float sign = i % 2 ? -1.0f : 1.0f;
        // A position is drawn at a corner of a pixel.
        const float growth =
            reach > 0 && axis < 2 ? 2 * (reach + 1) / std::max(1.0f, float(pixels[axis])) : 0;
        for (int row = 0; row < 4; ++row) {
            planes[static_cast<std::size_t>(i)][static_cast<std::size_t>(row)] =
                (1 + growth) * toClip.m[4 * row + 3] + sign * toClip.m[4 * row + axis];
        }
    }
    return planes;
}

enum class Side { OUTSIDE, CROSSING, INSIDE };

/// Boxes with a value that is not finite count as crossing.
Side classify(const SbBox3f& box, const Planes& planes)
{
    const SbVec3f& low = box.getMin();
    const SbVec3f& high = box.getMax();
    bool inside = true;
    for (const Plane& p : planes) {
        float nearest = p[3];
        float farthest = p[3];
        for (int axis = 0; axis < 3; ++axis) {
            const float a = p[static_cast<std::size_t>(axis)];
            nearest += a * (a > 0 ? high[axis] : low[axis]);
            farthest += a * (a > 0 ? low[axis] : high[axis]);
        }
        if (nearest < 0) {
            return Side::OUTSIDE;
        }
        inside = inside && farthest >= 0;
    }
    return inside ? Side::INSIDE : Side::CROSSING;
}

SbVec3f eyeDirection(const SbVec3f& direction, const SbMatrix& toList, const Matrix4& toEye)
{
    const SbVec3f d = toList.direction(direction);
    SbVec3f out;
    for (int c = 0; c < 3; ++c) {
        out[c] = d[0] * toEye.m[c] + d[1] * toEye.m[4 + c] + d[2] * toEye.m[8 + c];
    }
    out.normalize();
    return out;
}

/// How much larger things are in the space of the eye, on the whole.
float sizeInEye(const SbMatrix& toList, const Matrix4& toEye)
{
    const SbVec3f x(toEye.m[0], toEye.m[1], toEye.m[2]), y(toEye.m[4], toEye.m[5], toEye.m[6]),
        z(toEye.m[8], toEye.m[9], toEye.m[10]);
    return std::cbrt(std::abs(toList.det3() * x.cross(y).dot(z)));
}

EyeLight toEyeLight(const SoLightRecord& light, const Matrix4& toEye)
{
    EyeLight out{};
    const bool directional = light.kind == SoLightRecord::DIRECTIONAL;
    const SbVec3f direction = eyeDirection(light.direction, light.toWorld, toEye);
    const SbVec3f place = light.toWorld.point(light.position);
    const float reach = light.radius < SoLightRecord::kUnlimited
                            ? light.radius * sizeInEye(light.toWorld, toEye)
                            : SoLightRecord::kUnlimited;
    // The shaders multiply the ambient part by the intensity, on which it does not depend.
    constexpr float kLeastIntensity = 1e-6f;
    const float intensity =
        light.ambientIntensity > 0 ? std::max(light.intensity, kLeastIntensity) : light.intensity;
    for (int c = 0; c < 3; ++c) {
        const float position = place[0] * toEye.m[c] + place[1] * toEye.m[4 + c]
                               + place[2] * toEye.m[8 + c] + toEye.m[12 + c];
        out.position[c] = directional ? -direction[c] : position;
        out.color[c] = light.color[c] * intensity;
        out.direction[c] = direction[c] * reach;
        out.attenuation[c] = light.attenuation[c];
    }
    out.position[3] = static_cast<float>(light.kind);
    out.color[3] = light.ambientIntensity > 0 ? light.ambientIntensity / intensity : 0;
    // A spot of half a circle or more reaches everything in front and behind alike.
    out.direction[3] = std::cos(std::min(light.cutOffAngle, 3.14159265f));
    out.attenuation[3] = light.beamWidth < 0 ? light.dropOffRate * 128 : -1 - light.beamWidth;
    if (light.attenuation == SbVec3f(0, 0, 0)) {
        out.attenuation[0] = 1;
    }
    return out;
}

SbVec4f toEyePlane(const SbVec4f& plane, const SbMatrix& fromEye)
{
    SbVec4f out;
    for (int row = 0; row < 4; ++row) {
        for (int c = 0; c < 4; ++c) {
            out[row] += fromEye[row][c] * plane[c];
        }
    }
    return out;
}

using Place = ListPlace;

class Builder {
public:
    explicit Builder(Frame& frame) : m_frame(frame) {}

    /// Lights that shine on everything; in the world.
    void setSceneLights(const std::vector<SoLightRecord>& lights);
    std::uint32_t surroundingsOf(std::size_t view) const
    {
        return m_lit ? static_cast<std::uint32_t>(view + 1) : 0;
    }

    void walk(const RenderList& list, const Place& place, bool isTop);
    /// Places the items of an entry again; false when they are no longer as many.
    bool patch(const RenderList& list, std::size_t entry, const Frame::Occurrence& occurrence,
               bool hasNewLook);

private:
    struct Scope {
        const Place& place;
        Planes planes;
        int planesView = -1; ///< view that the planes are of
        const Surroundings* local = nullptr;
        std::uint32_t combined = 0;
        int combinedView = -1;
    };
    Place placeOf(const RenderList::Entry& entry, Scope& scope, bool isTop);
    std::uint32_t combine(const Surroundings* local, const Place& outer, Scope& scope);
    Side test(const RenderList::Entry& entry, const Place& outer, Scope& scope) const;
    void addItem(const RenderList::Entry& entry, const Place& outer, Scope& scope);
    void placeItem(FrameItem& item, const RenderList::Entry& entry, const Place& outer) const;
    Place placeBelow(const RenderList::Entry& entry, const Place& outer) const;
    bool patchList(const RenderList::Entry& entry, const Place& outer, FrameItem* items,
                   std::size_t count);
    void addSelection(const RenderList::Entry& entry, const Place& outer);
    void setBackground(const RenderList::Background& background, const Place& place);

    Frame& m_frame;
    bool m_lit = false; ///< there are lights that shine on everything
};

void Builder::setSceneLights(const std::vector<SoLightRecord>& lights)
{
    m_lit = !lights.empty();
    for (std::size_t i = 0; m_lit && i < m_frame.views.size(); ++i) {
        const Matrix4 toEye = Matrix4::from(m_frame.views[i].view.viewing);
        EyeSurroundings& all = m_frame.surroundings.emplace_back();
        for (const SoLightRecord& light : lights) {
            all.lights.push_back(toEyeLight(light, toEye));
        }
    }
}

/// The entry's surrounding place: that of the list, under the entry's own view in a top list.
Place Builder::placeOf(const RenderList::Entry& entry, Scope& scope, bool isTop)
{
    Place outer = scope.place;
    if (isTop && entry.index >= 0) {
        outer.view = static_cast<std::uint16_t>(entry.index);
        outer.toEye = Matrix4::from(m_frame.views[outer.view].view.viewing);
        outer.surroundings = surroundingsOf(outer.view);
    }
    return outer;
}

std::uint32_t Builder::combine(const Surroundings* local, const Place& outer, Scope& scope)
{
    if (!local) {
        return outer.surroundings;
    }
    if (local == scope.local && scope.combinedView == outer.view) {
        return scope.combined;
    }
    EyeSurroundings all = m_frame.surroundings[outer.surroundings];
    for (const SoLightRecord& light : local->lights) {
        all.lights.push_back(toEyeLight(light, outer.toEye));
    }
    if (!local->clipPlanes.empty()) {
        const SbMatrix fromEye = SbMatrix(outer.toEye.m).inverse();
        for (const SbVec4f& plane : local->clipPlanes) {
            all.clipPlanes.push_back(toEyePlane(plane, fromEye));
        }
    }
    m_frame.surroundings.push_back(std::move(all));
    scope.local = local;
    scope.combinedView = outer.view;
    scope.combined = static_cast<std::uint32_t>(m_frame.surroundings.size() - 1);
    return scope.combined;
}

Side Builder::test(const RenderList::Entry& entry, const Place& outer, Scope& scope) const
{
    if (entry.box.isEmpty()) {
        return Side::OUTSIDE;
    }
    if (outer.visible) {
        return Side::INSIDE;
    }
    const RenderView& view = m_frame.views[outer.view];
    if (entry.pixelReach > 0) {
        return classify(entry.box, planesOf(view, outer.toEye, entry.pixelReach));
    }
    if (scope.planesView != outer.view) {
        scope.planesView = outer.view;
        scope.planes = planesOf(view, outer.toEye);
    }
    return classify(entry.box, scope.planes);
}

void Builder::placeItem(FrameItem& item, const RenderList::Entry& entry, const Place& outer) const
{
    item.entry = &entry;
    item.toEye = entry.identity ? outer.toEye : Matrix4::product(entry.matrix, outer.toEye);
    item.depth = eyeDepth(entry.box.getCenter(), outer.toEye);
    item.mirrored = isMirroring(item.toEye);
}

void Builder::addItem(const RenderList::Entry& entry, const Place& outer, Scope& scope)
{
    FrameItem& item = m_frame.items.emplace_back();
    placeItem(item, entry, outer);
    item.surroundings = combine(entry.surroundings.get(), outer, scope);
    item.view = outer.view;
    item.layer = static_cast<std::uint8_t>(std::min(255, outer.layer + entry.layer));
    m_frame.numLayers = std::max(m_frame.numLayers, item.layer + 1);
    m_frame.nearDepth = std::max(m_frame.nearDepth, item.depth);
    m_frame.farDepth = std::min(m_frame.farDepth, item.depth);
}

Place Builder::placeBelow(const RenderList::Entry& entry, const Place& outer) const
{
    Place inner = outer;
    inner.layer = static_cast<std::uint8_t>(std::min(255, outer.layer + entry.layer));
    if (!entry.identity) {
        inner.toEye = Matrix4::product(entry.matrix, outer.toEye);
        inner.toWorld = entry.matrix * outer.toWorld;
    }
    return inner;
}

void Builder::addSelection(const RenderList::Entry& entry, const Place& outer)
{
    const SbMatrix toWorld = entry.matrix * outer.toWorld;
    m_frame.selections.push_back({entry.node, toWorld, outer.view});
}

/// The last gradient counts, but the first sky, which gradients do not cover.
void Builder::setBackground(const RenderList::Background& background, const Place& place)
{
    if (m_frame.hasBackground && m_frame.background.isSky())
        return;
    m_frame.background = background;
    m_frame.background.up = place.toWorld.direction(background.up);
    m_frame.background.toWorld = background.toWorld * place.toWorld;
    m_frame.hasBackground = true;
}

void Builder::walk(const RenderList& list, const Place& place, bool isTop)
{
    Scope scope{place, {}};
    std::vector<std::uint32_t> firstItems;
    for (const RenderList::Entry& entry : list.getEntries()) {
        if (list.getParts()) {
            firstItems.push_back(static_cast<std::uint32_t>(m_frame.items.size()));
        }
        if (entry.kind == RenderList::BACKGROUND) {
            setBackground(list.getBackground(entry), place);
            continue;
        }
        if (entry.kind == RenderList::LIGHT || entry.kind == RenderList::FOG) {
            continue;
        }
        Place outer = placeOf(entry, scope, isTop);
        if (entry.kind == RenderList::SELECTION) {
            addSelection(entry, outer);
            continue;
        }
        const Side side = test(entry, outer, scope);
        if (side == Side::OUTSIDE && !entry.box.isEmpty()) {
            ++m_frame.culled;
        }
        if (entry.kind == RenderList::ITEM) {
            if (side != Side::OUTSIDE) {
                addItem(entry, outer, scope);
            }
            continue;
        }
        Place inner = placeBelow(entry, outer);
        // A list out of view may still hold a background or a selection, so only one with a box
        // and nothing of the kind can be left out.
        if (side == Side::OUTSIDE && !entry.list->hasMarks()) {
            if (entry.list->getParts()) {
                m_frame.occurrences[entry.list.get()].push_back({inner, {}});
            }
            continue;
        }
        inner.surroundings = combine(entry.surroundings.get(), outer, scope);
        inner.visible = side == Side::INSIDE;
        walk(*entry.list, inner, false);
    }
    if (list.getParts()) {
        firstItems.push_back(static_cast<std::uint32_t>(m_frame.items.size()));
        m_frame.occurrences[&list].push_back({place, std::move(firstItems)});
    }
}

bool Builder::patch(const RenderList& list, std::size_t index, const Frame::Occurrence& occurrence,
                    bool hasNewLook)
{
    const RenderList::Entry& entry = list.getEntries()[index];
    const Place& outer = occurrence.place;
    if (entry.kind != RenderList::ITEM && entry.kind != RenderList::LIST) {
        return false;
    }
    const std::size_t first = occurrence.firstItems.empty() ? 0 : occurrence.firstItems[index];
    const std::size_t end = occurrence.firstItems.empty() ? 0 : occurrence.firstItems[index + 1];
    if (first == end) {
        Place asked = outer;
        asked.visible = false;
        Scope scope{asked, {}};
        return test(entry, asked, scope) == Side::OUTSIDE;
    }
    // What moved out of view stays; it costs little.
    if (entry.kind == RenderList::LIST) {
        return patchList(entry, outer, &m_frame.items[first], end - first);
    }
    FrameItem& item = m_frame.items[first];
    const bool wasMirrored = item.mirrored;
    placeItem(item, entry, outer);
    m_frame.patches.push_back({static_cast<std::uint32_t>(first), hasNewLook});
    return item.mirrored == wasMirrored;
}

/// The items of a list that stands elsewhere now, each placed as before relative to the list.
bool Builder::patchList(const RenderList::Entry& entry, const Place& outer, FrameItem* items,
                        std::size_t count)
{
    Place inner = placeBelow(entry, outer);
    if (entry.list->getParts()) {
        // It comes with patches of its own, unless it moved as a whole.
        const auto& all = m_frame.occurrences[entry.list.get()];
        return std::any_of(all.begin(), all.end(), [&inner](const Frame::Occurrence& one) {
            return std::equal(inner.toEye.m, inner.toEye.m + 16, one.place.toEye.m);
        });
    }
    Frame moved;
    moved.views = m_frame.views;
    moved.surroundings = m_frame.surroundings;
    inner.visible = true;
    inner.surroundings = items->surroundings;
    Builder(moved).walk(*entry.list, inner, false);
    if (moved.items.size() != count || !moved.occurrences.empty()) {
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (items[i].entry != moved.items[i].entry
            || items[i].mirrored != moved.items[i].mirrored) {
            return false;
        }
        items[i].toEye = moved.items[i].toEye;
        items[i].depth = moved.items[i].depth;
        m_frame.patches.push_back(
            {static_cast<std::uint32_t>(&items[i] - m_frame.items.data()), false});
    }
    return true;
}

bool areEqual(const RenderView& a, const RenderView& b)
{
    return a.view.viewing == b.view.viewing && a.view.projection == b.view.projection
           && a.view.volume.getNearDist() == b.view.volume.getNearDist()
           && a.view.volume.getDepth() == b.view.volume.getDepth() && a.region == b.region;
}

/// More patches than this many times the items are not kept.
constexpr std::size_t kPatchesPerItem = 2;
constexpr std::size_t kFewPatches = 1024;

bool patchFrame(const std::vector<ListPatch>& patches, Frame& frame)
{
    Builder builder(frame);
    for (const ListPatch& patch : patches) {
        const auto found = frame.occurrences.find(patch.list);
        if (!patch.isSameKind || found == frame.occurrences.end()) {
            return false;
        }
        for (const Frame::Occurrence& occurrence : found->second) {
            for (std::size_t i = 0; i < patch.count; ++i) {
                if (!builder.patch(*patch.list, patch.first + i, occurrence, patch.hasNewLook)) {
                    return false;
                }
            }
        }
    }
    return frame.patches.size() < kFewPatches + kPatchesPerItem * frame.items.size();
}

} // namespace

Matrix4 Matrix4::from(const SbMatrix& matrix)
{
    Matrix4 out;
    std::copy_n(matrix[0], 16, out.m);
    return out;
}

Matrix4 Matrix4::product(const SbMatrix& a, const Matrix4& b)
{
    Matrix4 out;
    for (int row = 0; row < 3; ++row) {
        multiplyRow<float>(a[row], b, out.m + 4 * row);
    }
    multiplyRow<double>(a[3], b, out.m + 12);
    return out;
}

void Frame::clear()
{
    views.clear();
    surroundings.assign(1, {});
    items.clear();
    selections.clear();
    hasBackground = false;
    culled = 0;
    numLayers = 1;
    nearDepth = farDepth = 0;
    generation = nextNumber();
    patches.clear();
    list.reset();
    occurrences.clear();
}

std::uint64_t Frame::nextNumber()
{
    static std::atomic<std::uint64_t> latest{0};
    return latest.fetch_add(1, std::memory_order_relaxed) + 1;
}

void buildFrame(const RenderList& list, const std::vector<RenderView>& views, Frame& frame)
{
    frame.clear();
    frame.list = &list;
    frame.views = views;
    Builder builder(frame);
    std::vector<SoLightRecord> lights;
    list.gatherLights(SbMatrix::identity(), lights);
    builder.setSceneLights(lights);
    FogMark fog;
    list.findFog(SbMatrix::identity(), fog);
    frame.fog = fog.values;
    Place top{Matrix4::from(views.front().view.viewing),
              SbMatrix(),
              builder.surroundingsOf(0),
              0,
              0,
              false};
    builder.walk(list, top, true);
}

void updateFrame(const RenderList& list, const std::vector<RenderView>& views,
                 std::uint64_t traversal, const std::vector<ListPatch>& patches, Frame& frame)
{
    const bool follows = frame.list && frame.traversal + 1 == traversal;
    frame.traversal = traversal;
    if (!follows
        || !std::equal(views.begin(), views.end(), frame.views.begin(), frame.views.end(), areEqual)
        || !frame.list->isSameAs(list) || !patchFrame(patches, frame)) {
        buildFrame(list, views, frame);
    }
}

} // namespace kalmyr::detail
