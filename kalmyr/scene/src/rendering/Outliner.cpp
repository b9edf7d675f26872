#include "rendering/Outliner.h"

#include "rendering/GLTargets.h"
#include "rendering/RenderTraversal.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoPlaces.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <unordered_set>
#include <utility>

namespace kalmyr::detail {

namespace {

constexpr std::size_t kMaxPlaces = 64; // of one object

std::uint64_t nextNumber()
{
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

/// Sums up values, of which none is left out and none is taken for another in practice.
class Sum {
public:
    void add(std::uint64_t value)
    {
        m_value = (std::rotl(m_value, 5) ^ value) * 0x9E3779B97F4A7C15ull;
        m_value ^= m_value >> 32;
    }
    void add(const void* address) { add(reinterpret_cast<std::uintptr_t>(address)); }
    void add(const float* values, int count)
    {
        int i = 0;
        for (; i + 1 < count; i += 2) {
            add(std::uint64_t(std::bit_cast<std::uint32_t>(values[i])) << 32
                | std::bit_cast<std::uint32_t>(values[i + 1]));
        }
        if (i < count) {
            add(std::uint64_t(std::bit_cast<std::uint32_t>(values[i])));
        }
    }
    void add(float value) { add(&value, 1); }
    void add(const SbVec2s& v)
    {
        add(std::uint64_t(std::uint16_t(v[0])) << 16 | std::uint16_t(v[1]));
    }
    /// Never 0.
    std::uint64_t get() const { return m_value | 1; }

private:
    std::uint64_t m_value = 0;
};

void addRegion(const SbViewportRegion& region, Sum& sum)
{
    sum.add(region.getWindowSize());
    sum.add(region.getViewportOriginPixels());
    sum.add(region.getViewportSizePixels());
    sum.add(region.getPixelsPerPoint());
}

void addView(const RenderView& view, Sum& sum)
{
    sum.add(view.view.projection[0], 16);
    addRegion(view.region, sum);
}

/// Everything of an item that has to do with what it covers and how deep.
void addItem(const FrameItem& item, Sum& sum)
{
    const SoRenderAppearance& look = *item.entry->appearance;
    sum.add(item.entry->geometry->getId());
    sum.add(item.toEye.m, 16);
    const float sizes[] = {look.drawStyle.lineWidth, look.drawStyle.pointSize, look.transparency};
    sum.add(sizes, 3);
    sum.add(std::uint64_t(look.drawStyle.linePattern) << 32
            | std::uint64_t(look.drawStyle.style) << 24 | std::uint64_t(item.layer) << 16
            | std::uint64_t(item.view) << 1 | std::uint64_t(item.entry->transparent));
    sum.add(std::uint64_t(item.surroundings));
    sum.add(look.texture.image.getBytes());
    if (!look.texture.image.isNull()) {
        sum.add(look.textureMatrix[0], 16);
    }
}

void addFrame(const Frame& frame, Sum& sum)
{
    for (const RenderView& view : frame.views) {
        addView(view, sum);
    }
    for (const EyeSurroundings& surroundings : frame.surroundings) {
        for (const SbVec4f& plane : surroundings.clipPlanes) {
            sum.add(plane.getValue(), 4);
        }
        sum.add(std::uint64_t(surroundings.clipPlanes.size()));
    }
    for (const FrameItem& item : frame.items) {
        addItem(item, sum);
    }
}

} // namespace

Outliner::Outliner() : m_number(nextNumber()) {}

Outliner::~Outliner() = default;

void Outliner::setObjects(std::vector<OutlinedObject> objects)
{
    m_objects = std::move(objects);
    if (m_objects.empty()) {
        m_kept = {};
    }
}

/// Sums up everything that the picture of the outline depends on.
std::uint64_t Outliner::keyOf(const Frame& scene, const GLFrameOptions& options,
                              bool followsGraph) const
{
    Sum sum;
    sum.add(std::uint64_t(boundSamples()));
    sum.add(std::uint64_t(options.transparencyType));
    addRegion(options.region, sum);
    for (const int side :
         {options.part.left, options.part.bottom, options.part.right, options.part.top}) {
        sum.add(std::uint64_t(std::uint32_t(side)));
    }
    addFrame(scene, sum);
    for (const OutlinedObject& object : m_objects) {
        for (int i = 0; object.isWhole() && i < object.length; ++i) {
            sum.add(object.path->getNode(i));
            sum.add(std::uint64_t(object.path->getIndex(i)));
        }
        if (object.isPlaced) {
            sum.add(object.toWorld[0], 16);
            sum.add(object.view.view.viewing[0], 16);
            addView(object.view, sum);
        }
        if (followsGraph && object.isWhole()) {
            sum.add(object.getHead()->getChangeId());
        }
    }
    sum.add(style.color.getValue(), 3);
    sum.add(style.width);
    sum.add(std::uint64_t(style.pattern));
    return sum.get();
}

bool Outliner::prepare(GLDevice& device, const SoGLRenderAction& action, SoNode* root,
                       const Frame& scene, const GLFrameOptions& options)
{
    m_stale = false;
    m_asEdges = false;
    // Code of the program that runs while the objects are traversed may draw another frame.
    const bool isSeen =
        isVisible && !m_device
        && std::any_of(m_objects.begin(), m_objects.end(), [root](const OutlinedObject& object) {
               return object.isWhole() && (object.isPlaced || isBelow(root, object.getHead()));
           });
    if (!isSeen) {
        return false;
    }
    m_device = &device;
    m_options = &options;
    m_statistics = {};
    Sum number; // several views may be drawn in one context
    number.add(m_number);
    number.add(&action);
    m_picture = number.get();
    m_key = keyOf(scene, options, picture().followsGraph);
    if (picture().getKey() == m_key) {
        return true;
    }
    collect(root);
    const char* error = "";
    if (GLDevice::current(error) != &device) {
        close(); // a callback in the scene has changed what is current
        return false;
    }
    picture().followsGraph = !areAllIn(scene);
    openPicture(options);
    return true;
}

void Outliner::openPicture(const GLFrameOptions& options)
{
    GLOutline& outline = picture();
    const PixelBox box = inTarget(boxOf(options), options);
    const SbVec2s& window = options.region.getWindowSize();
    const PixelBox target =
        options.part.isEmpty() ? PixelBox{0, 0, window[0], window[1]} : options.part;
    if (SoPreferences::getBool("KMR_OUTLINE_EDGES", false)) {
        m_asEdges = true;
    } else if (box.isEmpty()) {
        outline.setEmpty(m_key);
    } else {
        m_stale = outline.begin(target.width(), target.height(), box);
        m_asEdges = !m_stale;
    }
}

void Outliner::close()
{
    m_collected.clear();
    m_stale = false;
    m_device = nullptr;
    m_options = nullptr;
}

void Outliner::collect(SoNode* root)
{
    if (!m_collector) {
        m_collector = std::make_unique<SoGLRenderAction>();
        m_collector->setCaching(false);
    }
    m_collector->setViewportRegion(m_options->region);
    m_collected.clear();
    const std::vector<OutlinedObject> objects = m_objects; // callbacks may change them
    for (const OutlinedObject& object : objects) {
        if (!object.isWhole()) {
            continue;
        }
        if (object.isPlaced) {
            collectPlaced(object);
            continue;
        }
        m_collector->traversal().clearStart();
        for (const SoRef<SoPath>& place : findPlaces(root, object.getHead(), kMaxPlaces)) {
            for (int i = object.first + 1; i < object.length; ++i) {
                place->append(object.path->getNode(i), object.path->getIndex(i));
            }
            collect(*place);
        }
    }
    m_collector->traversal().clear();
}

void Outliner::collectPlaced(const OutlinedObject& object)
{
    const std::uint64_t changeId = object.path->getHead()->getChangeId();
    if (m_kept.list && m_kept.path == object.path && m_kept.changeId == changeId
        && m_kept.toWorld == object.toWorld) {
        Collected& one = m_collected.emplace_back();
        one.list = m_kept.list;
        buildFrame(*one.list, {object.view}, one.frame);
        return;
    }
    RenderTraversal& walk = m_collector->traversal();
    walk.setStart(object.toWorld, object.view);
    collect(*object.path);
    m_kept = {};
    if (!walk.isViewDependent() && walk.getViews().size() == 1) {
        m_kept = {m_collected.back().list, object.path, changeId, object.toWorld};
    }
}

void Outliner::collect(const SoPath& path)
{
    // Actions follow a path and change nothing of it.
    m_collector->SoAction::apply(const_cast<SoPath*>(&path));
    RenderTraversal& walk = m_collector->traversal();
    Collected& one = m_collected.emplace_back();
    one.list = walk.getList();
    buildFrame(*one.list, walk.getViews(), one.frame);
}

/// Whether the scene shows all shapes of the objects.
bool Outliner::areAllIn(const Frame& scene) const
{
    std::unordered_set<const SoNode*> shown;
    for (const FrameItem& item : scene.items) {
        shown.insert(item.entry->node);
    }
    return std::all_of(m_collected.begin(), m_collected.end(), [&](const Collected& one) {
        return !one.frame.items.empty()
               && std::all_of(
                   one.frame.items.begin(), one.frame.items.end(),
                   [&](const FrameItem& item) { return shown.count(item.entry->node) > 0; });
    });
}

PixelBox Outliner::boxOf(const GLFrameOptions& options) const
{
    PixelBox all;
    for (const Collected& one : m_collected) {
        for (const FrameItem& item : one.frame.items) {
            all = all.unionWith(kalmyr::detail::boxOf(item, one.frame.views[item.view]));
        }
    }
    if (all.isEmpty()) {
        return all;
    }
    const int reach = GLOutline::reachOf(style, options.region.getPixelsPerPoint());
    return PixelBox{all.left - reach, all.bottom - reach, all.right + reach, all.top + reach}
        .intersection(kalmyr::detail::boxOf(options.region));
}

void Outliner::layerDrawn(int layer)
{
    picture().addLayer([this, layer] {
        for (const Collected& one : m_collected) {
            GLRenderer(*m_device, one.frame, *m_options, m_statistics).drawMask(layer);
        }
    });
}

void Outliner::drawEdges()
{
    const float scale = std::max(m_options->region.getPixelsPerPoint(), 1.0f);
    for (const Collected& one : m_collected) {
        GLRenderer(*m_device, one.frame, *m_options, m_statistics)
            .drawEdges(style, style.width * scale);
    }
}

void Outliner::finish(RenderStatistics& statistics)
{
    GLOutline& outline = picture();
    if (m_asEdges) {
        drawEdges();
    } else {
        if (m_stale) {
            outline.end(style, m_options->region.getPixelsPerPoint(), m_key);
        }
        outline.lay();
    }
    statistics.outlineDrawCalls += m_statistics.drawCalls;
    close();
}

} // namespace kalmyr::detail
