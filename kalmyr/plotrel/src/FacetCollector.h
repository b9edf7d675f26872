#pragma once

#include "FacetContext.h"
#include "FacetRelation.h"
#include "VectorDrawing.h"

#include <kalmyr/rendering/SoSceneView.h>

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace kalmyr::detail {

/// Turns what a camera sees into facets on the page: transforms, lights, culls, cuts to the view
/// and to the clipping planes, divides where colours bend, and projects. Nodes are looked at in the
/// constructor only.
class FacetCollector {
public:
    FacetCollector(const SoSceneView& view, const CollectOptions& options);
    FacetCollector(const FacetCollector&) = delete;
    FacetCollector& operator=(const FacetCollector&) = delete;

    /// Called with a share from 0 to 1; false ends the collecting.
    bool collect(const std::function<bool(float)>& progress);

    std::vector<FacetLayer>& getLayers() { return m_layers; }
    std::vector<VectorImage>& getImages() { return m_images; }
    /// The lines of text that are in view.
    std::vector<VectorText>& getTexts() { return m_texts; }
    const DepthTolerance& getTolerance() const { return m_depthTolerance; }
    /// Faces, lines and points that were left out for coordinates that are not finite.
    std::size_t getNumBroken() const { return m_run.numBroken; }

private:
    void collectItem(const SoSceneView::Item& item);
    void collectFaces(FacetContext& context);
    FacetLayer& layer(int index);
    void scaleNearness();

    const SoSceneView& m_view;
    CollectOptions m_options;
    CollectRun m_run{m_options};
    std::vector<FacetLayer> m_layers;
    std::vector<VectorImage> m_images;
    std::unordered_map<const SoSceneView::Item*, std::vector<std::string>> m_strings; ///< of texts
    /// By the pixels, which the items hold.
    std::unordered_map<const unsigned char*, std::unique_ptr<TextureLevels>> m_textures;
    std::vector<VectorText> m_texts;
    DepthTolerance m_depthTolerance;
    bool m_isParallel = false;
};

} // namespace kalmyr::detail
