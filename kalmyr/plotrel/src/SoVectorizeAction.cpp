#include <kalmyr/plotrel/SoVectorizeAction.h>

#include "DrawingBuilder.h"
#include "FacetCollector.h"
#include "VectorDrawing.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/plotrel/SoVectorOutput.h>
#include <kalmyr/rendering/SoSceneView.h>

#include <algorithm>
#include <cmath>
#include <type_traits>

using namespace kalmyr::detail;

SO_ACTION_SOURCE(SoVectorizeAction, SoAction, "VectorizeAction")

namespace {

constexpr float kMinTolerance = 1.0f / 255;
/// Shares of the work: seeing the scene, collecting its facets, ordering them; the rest is writing.
constexpr float kSeen = 0.05f, kCollected = 0.3f, kOrdered = 0.85f;

float luminance(const SbColor& color)
{
    return 0.2126f * color[0] + 0.7152f * color[1] + 0.0722f * color[2];
}

/// The largest rectangle of the given proportions within the given one.
SbVec2f fitted(const SbVec2f& room, float aspect)
{
    return room[0] / room[1] > aspect ? SbVec2f(room[1] * aspect, room[1])
                                      : SbVec2f(room[0], room[0] / aspect);
}

/// Leaves out stops whose colours lie on the way between those around them.
std::vector<VectorBackgroundStop> withoutStraight(const std::vector<VectorBackgroundStop>& stops)
{
    constexpr float kNoticed = 0.5f / 255;
    std::vector<VectorBackgroundStop> kept{stops.front()};
    std::size_t from = 0;
    for (std::size_t to = 2; to < stops.size(); ++to) {
        const auto isOff = [&](std::size_t i) {
            const float t =
                (stops[i].share - stops[from].share) / (stops[to].share - stops[from].share);
            for (int c = 0; c < 3; ++c) {
                const float even = std::lerp(stops[from].color[c], stops[to].color[c], t);
                if (std::abs(even - stops[i].color[c]) > kNoticed)
                    return true;
            }
            return false;
        };
        // The middle and the last one before stand for all between: the colours bend one way.
        if (isOff(to - 1) || isOff((from + to) / 2)) {
            from = to - 1;
            kept.push_back(stops[from]);
        }
    }
    kept.push_back(stops.back());
    return kept;
}

/// The colours of a sky down the middle of the picture.
std::vector<VectorBackgroundStop> skyStops(const SoSceneView& view)
{
    constexpr int kSteps = 1024;
    constexpr float kParallelTangent = 0.414f; // as the renderer takes it
    const SoView& camera = view.cameras.back().view;
    const bool parallel = camera.projection[2][3] == 0;
    const float scale = camera.projection[1][1];
    const float tangent = parallel || scale == 0 ? kParallelTangent : 1 / scale;
    const SbVec3f up = camera.viewing.direction(view.zenith).normalized();
    const auto colorAt = [&](float angle) {
        SbColor color = view.background.front().color;
        for (std::size_t i = 1; i < view.background.size(); ++i) {
            const auto& from = view.background[i - 1];
            const auto& to = view.background[i];
            const float size = to.angle - from.angle;
            const float t = size > 0 ? std::clamp((angle - from.angle) / size, 0.0f, 1.0f)
                                     : static_cast<float>(angle >= from.angle);
            for (int c = 0; c < 3; ++c)
                color[c] += (to.color[c] - color[c]) * t;
        }
        return color;
    };
    std::vector<VectorBackgroundStop> stops;
    for (int i = 0; i <= kSteps; ++i) {
        const float share = static_cast<float>(i) / kSteps;
        const SbVec3f towards = SbVec3f(0, (1 - 2 * share) * tangent, -1).normalized();
        stops.push_back({colorAt(std::acos(std::clamp(towards.dot(up), -1.0f, 1.0f))), share});
    }
    return withoutStraight(stops);
}

std::vector<VectorBackgroundStop>
backgroundOf(const SoSceneView& view, const std::optional<SbColor>& color, bool isLineDrawing)
{
    std::vector<VectorBackgroundStop> stops;
    if (view.background.empty() || isLineDrawing) {
        if (color)
            stops.push_back({*color, 0});
    } else if (view.zenith != SbVec3f(0, 0, 0)) {
        stops = skyStops(view);
    } else {
        for (const SoSceneView::BackgroundStop& stop : view.background)
            stops.push_back({stop.color, stop.angle});
    }
    return stops;
}

} // namespace

/// One application.
struct SoVectorizeAction::Job {
    const SoVectorizeAction& action;
    const SoVectorOutput& output;
    VectorDrawing drawing;
    SbViewportRegion region;
    bool isStopped = false;

    explicit Job(const SoVectorizeAction& owner) : action(owner), output(*owner.m_output)
    {
        placeOnPage();
    }

    bool goesOn(float share)
    {
        isStopped = isStopped || (action.m_progress && !action.m_progress(share));
        return !isStopped;
    }
    std::function<bool(float)> within(float from, float to)
    {
        return [this, from, to](float share) { return goesOn(from + (to - from) * share); };
    }

    void placeOnPage();
    CollectOptions collectOptions() const;
    bool draw(const SoSceneView& view);
};

void SoVectorizeAction::Job::placeOnPage()
{
    const SbVec2f page = output.getOrientedPageSize();
    region = action.m_region;
    const SbVec2s window = region.getWindowSize();
    SbVec2f size = output.getDrawingSize();
    if (size[0] > 0 && size[1] > 0) {
        // The viewport takes the proportions of the drawing.
        const float height = static_cast<float>(window[0]) * size[1] / size[0];
        region.setWindowSize(
            SbVec2s(window[0], static_cast<short>(std::clamp(std::lround(height), 1l, 32767l))));
    } else {
        const float margin = std::min(output.getMargin(), 0.45f * std::min(page[0], page[1]));
        size = fitted(SbVec2f(page[0] - 2 * margin, page[1] - 2 * margin),
                      static_cast<float>(window[0]) / static_cast<float>(window[1]));
    }
    drawing.pageWidth = page[0];
    drawing.pageHeight = page[1];
    drawing.width = size[0];
    drawing.height = size[1];
    drawing.x = (page[0] - size[0]) / 2;
    drawing.y = (page[1] - size[1]) / 2;
    drawing.title = output.getTitle().getString();
}

CollectOptions SoVectorizeAction::Job::collectOptions() const
{
    constexpr double kImageResolution = 150 / 25.4;
    CollectOptions options;
    options.area = {drawing.x, drawing.y, drawing.width, drawing.height};
    options.pixelSize = output.getPixelSize() > 0
                            ? static_cast<double>(output.getPixelSize())
                            : static_cast<double>(drawing.width) / region.getWindowSize()[0];
    options.minLineWidth = output.getMinLineWidth();
    options.tolerance = action.m_tolerance;
    options.resolution = kImageResolution;
    options.isLineDrawing = action.m_style == HIDDEN_LINES;
    const bool isDark =
        !drawing.background.empty()
        && luminance(drawing.background.front().color) + luminance(drawing.background.back().color)
               < 1;
    options.ink = isDark ? SbColor(1, 1, 1) : SbColor(0, 0, 0);
    return options;
}

bool SoVectorizeAction::Job::draw(const SoSceneView& view)
{
    if (view.cameras.empty())
        return false;
    drawing.background = backgroundOf(view, action.m_background, action.m_style == HIDDEN_LINES);
    FacetCollector collector(view, collectOptions());
    // From here on the scene may change.
    if (!goesOn(kSeen) || !collector.collect(within(kSeen, kCollected)))
        return false;
    if (const std::size_t broken = collector.getNumBroken())
        SoDebugError::postWarning(
            "SoVectorizeAction::apply",
            "%zu faces, lines or points have coordinates that are not finite and are left out",
            broken);
    drawing.images = std::move(collector.getImages());
    BuildOptions options;
    options.tolerance = action.m_tolerance;
    options.isLineDrawing = action.m_style == HIDDEN_LINES;
    options.isCutting = action.m_cutting || !output.getAbilities().overpainting;
    DrawingBuilder builder(drawing, collector.getTolerance(), options);
    const auto layers = static_cast<float>(collector.getLayers().size());
    float done = 0;
    for (FacetLayer& layer : collector.getLayers()) {
        const float from = kCollected + (kOrdered - kCollected) * done++ / layers;
        builder.setProgress(within(from, from + (kOrdered - kCollected) / layers));
        if (!builder.add(layer))
            return false;
        layer = {}; // frees its memory
    }
    if (drawing.primitives.empty()) {
        SoError::post("vector export: nothing of the scene is in view");
        return false;
    }
    drawing.texts = std::move(collector.getTexts());
    for (std::uint32_t i = 0; i < drawing.texts.size(); ++i)
        drawing.add(VectorPrimitive::TEXT).first = i;
    return goesOn(kOrdered);
}

void SoVectorizeAction::initMethods() {}

SoVectorizeAction::SoVectorizeAction(SoVectorOutput* output) : m_output(output) {}

SoVectorizeAction::~SoVectorizeAction()
{
    delete m_output;
}

void SoVectorizeAction::sceneViewed(SoNode*, const SoSceneView&) {}

SoVectorOutput* SoVectorizeAction::getVectorOutput() const
{
    return m_output;
}

void SoVectorizeAction::setShadingTolerance(float tolerance)
{
    if (kalmyr::holds(std::isfinite(tolerance), "a finite tolerance"))
        m_tolerance = std::clamp(tolerance, kMinTolerance, 1.0f);
}

template <class Scene>
void SoVectorizeAction::draw(Scene* scene)
{
    m_drawn = false;
    m_stopped = false;
    if (!m_output->isOpen()) {
        SoError::post("vector export: no file is open");
        return;
    }
    Job job(*this);
    SoGLRenderAction renderer(job.region);
    const SoSceneView view = kalmyr::viewScene(renderer, scene);
    if constexpr (std::is_same_v<Scene, SoNode>)
        sceneViewed(scene, view);
    else
        sceneViewed(nullptr, view);
    if (job.draw(view))
        m_drawn = m_output->writeDrawing(job.drawing, m_tolerance);
    m_stopped = job.isStopped;
}

void SoVectorizeAction::apply(SoNode* root)
{
    if (!kalmyr::holds(root, "a scene"))
        return;
    const SoRef<SoNode> held(root);
    Job page(*this);
    draw(m_defaultCamera ? kalmyr::withDefaultCamera(root, page.region).get() : root);
}

void SoVectorizeAction::apply(SoPath* path)
{
    if (!kalmyr::holds(path, "a path"))
        return;
    const SoRef<SoPath> held(path);
    draw(path);
}
