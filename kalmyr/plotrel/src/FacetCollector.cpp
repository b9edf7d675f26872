#include "FacetCollector.h"

#include "FaceCollector.h"
#include "LineCollector.h"
#include "TextCollector.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

/// The nearest thing gets this nearness, about the size of a page.
constexpr double kNearness = 200;
constexpr std::size_t kItemsPerStep = 64;

/// Whether a page can show the unit: a flat picture by the coordinates that all units share. The
/// others are left out.
bool canBake(const SoRenderAppearance& look, const SoGeometry& geometry, std::size_t unit)
{
    const bool isStage = look.extras && unit < look.extras->stages.size();
    const SoTextureValues& values = unit == 0 ? look.texture : look.extras->stages[unit].texture;
    if (values.image.isNull())
        return false;
    if (!isStage)
        return true;
    const SoTextureStage& stage = look.extras->stages[unit];
    const bool hasOwn =
        geometry.extras
        && std::any_of(geometry.extras->texCoordSets.begin(), geometry.extras->texCoordSets.end(),
                       [unit](const auto& set) { return set.unit == static_cast<int>(unit); });
    return stage.kind == SoTextureStage::FLAT && stage.mode != SoTextureStage::OFF
           && (stage.coordinates == SoTextureStage::GIVEN
               || (unit == 0 && stage.coordinates == SoTextureStage::SPHERE))
           && (unit == 0 || (!hasOwn && !mirrors(look)));
}

} // namespace

FacetCollector::FacetCollector(const SoSceneView& view, const CollectOptions& options)
    : m_view(view), m_options(options)
{
    for (const SoSceneView::Camera& camera : view.cameras)
        m_isParallel = m_isParallel || Projection(camera, options.area).isParallel();
    for (const SoSceneView::Item& item : view.items)
        if (auto strings = stringsOf(item.node); !strings.empty())
            m_strings[&item] = std::move(strings); // now: the node may go while the work goes on
    m_depthTolerance =
        m_isParallel ? DepthTolerance{0, kNearness * 1e-6} : DepthTolerance{4e-6, 1e-12};
}

FacetLayer& FacetCollector::layer(int index)
{
    const auto i = static_cast<std::size_t>(std::max(0, index));
    if (m_layers.size() <= i)
        m_layers.resize(i + 1);
    return m_layers[i];
}

bool FacetCollector::collect(const std::function<bool(float)>& progress)
{
    int layers = 0;
    for (const SoSceneView::Item& item : m_view.items)
        layers = std::max(layers, item.layer);
    layer(layers);
    std::size_t done = 0;
    for (const SoSceneView::Item& item : m_view.items) {
        if (done++ % kItemsPerStep == 0 && progress
            && !progress(static_cast<float>(done) / static_cast<float>(m_view.items.size())))
            return false;
        collectItem(item);
    }
    scaleNearness();
    return true;
}

void FacetCollector::scaleNearness()
{
    double largest = 0;
    const auto forAll = [this](auto function) {
        for (FacetLayer& one : m_layers)
            for (FacetList* list : {&one.opaque, &one.above})
                for (Corner& corner : list->corners)
                    function(corner);
    };
    forAll([&](const Corner& corner) { largest = std::max(largest, std::abs(corner.z)); });
    const double scale = largest > 0 ? kNearness / largest : 1;
    forAll([&](Corner& corner) { corner.z *= scale; });
}

void FacetCollector::collectItem(const SoSceneView::Item& item)
{
    FacetContext context(m_view, item, layer(item.layer), m_run);
    LineCollector lines(context);
    const int style = context.look.drawStyle.style;
    if (style == SoDrawStyleValues::FILLED) {
        collectFaces(context);
        if (const auto known = m_strings.find(&item); known != m_strings.end())
            collectTexts(context, known->second, m_texts);
        if (m_options.isLineDrawing)
            lines.collectOutline();
    } else if (style == SoDrawStyleValues::LINES) {
        lines.collectSegments(getFaceEdges(context.geometry, lines.isDashed()));
    }
    if (style != SoDrawStyleValues::POINTS)
        lines.collectSegments(context.geometry.lines);
    lines.collectPoints();
}

void FacetCollector::collectFaces(FacetContext& context)
{
    const SoGeometry& geometry = context.geometry;
    const SoRenderAppearance& look = context.look;
    const std::size_t units =
        std::max<std::size_t>(1, look.extras ? look.extras->stages.size() : 0);
    TextureBaker::Levels levels(units);
    bool any = false;
    for (std::size_t unit = 0; unit < units; ++unit) {
        if (!canBake(look, geometry, unit))
            continue;
        const SbImage& image =
            unit == 0 ? look.texture.image : look.extras->stages[unit].texture.image;
        auto& known = m_textures[image.getBytes()];
        if (!known)
            known = std::make_unique<TextureLevels>(image);
        levels[unit] = known.get();
        any = true;
    }
    if (!any || m_options.isLineDrawing || geometry.texCoords.size() < geometry.positions.size())
        return FaceCollector(context).collect();
    TextureBaker baker(look, levels, context.lighting.getFogColor());
    context.baker = &baker;
    context.facet.image = static_cast<std::int32_t>(m_images.size());
    FaceCollector(context).collect();
    context.baker = nullptr;
    context.facet.image = -1;
    VectorImage image; // a null one, to which nothing refers, when nothing is seen
    baker.bake(m_options.area, m_options.resolution, image);
    m_images.push_back(std::move(image));
}

} // namespace kalmyr::detail
