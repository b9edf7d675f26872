#include <kalmyr/rendering/SoLineHighlightRenderAction.h>

#include "rendering/Outliner.h"
#include "rendering/RenderTraversal.h"

#include <kalmyr/nodes/SoSelection.h>

SO_DERIVED_ACTION_SOURCE(SoLineHighlightRenderAction, SoGLRenderAction, "LineHighlightRenderAction")

SoLineHighlightRenderAction::SoLineHighlightRenderAction(const SbViewportRegion& region)
    : SoGLRenderAction(region)
{
}

SoLineHighlightRenderAction::~SoLineHighlightRenderAction() = default;

/// The paths begin at the selection node; where that stands and what looks at it is known from the
/// scene's own frame.
SoOutline* SoLineHighlightRenderAction::frameOutline()
{
    using namespace kalmyr::detail;
    std::vector<OutlinedObject> objects;
    const Frame& scene = traversal().frame;
    for (const FrameSelection& selection : scene.selections) {
        const auto* node = static_cast<const SoSelection*>(selection.node);
        for (int i = 0; i < node->getNumSelected(); ++i) {
            objects.emplace_back(node->getPath(i), selection.toWorld, scene.views[selection.view]);
        }
    }
    m_selected.outliner().setObjects(std::move(objects));
    return &m_selected;
}
