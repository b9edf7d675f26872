#include <kalmyr/rendering/SoLineHighlightRenderAction.h>

#include "rendering/FrameBuilder.h"
#include "rendering/GLDevice.h"
#include "rendering/GLRenderer.h"
#include "rendering/RenderTraversal.h"

#include <kalmyr/nodes/SoSelection.h>

SO_DERIVED_ACTION_SOURCE(SoLineHighlightRenderAction, SoGLRenderAction, "LineHighlightRenderAction")

SoLineHighlightRenderAction::SoLineHighlightRenderAction(const SbViewportRegion& region)
    : SoGLRenderAction(region), m_collector(std::make_unique<SoGLRenderAction>(region))
{
    m_collector->setCaching(false);
}

SoLineHighlightRenderAction::~SoLineHighlightRenderAction() = default;

/// The paths begin at the selection node; where that stands and what looks at it is known from the
/// scene's own frame.
void SoLineHighlightRenderAction::drawMore()
{
    using namespace kalmyr::detail;
    const char* error = "";
    GLDevice* device = GLDevice::current(error);
    if (!m_visible || !device) {
        return;
    }
    const GLOutlineStyle style{m_color, m_lineWidth, m_linePattern};
    const GLFrameOptions options{getViewportRegion(), {}, 0, false, false};
    RenderTraversal& walk = m_collector->traversal();
    const Frame& scene = traversal().frame;
    for (const FrameSelection& selection : scene.selections) {
        const auto* node = static_cast<const SoSelection*>(selection.node);
        walk.setStart(selection.toWorld, scene.views[selection.view]);
        for (int i = 0; i < node->getNumSelected(); ++i) {
            m_collector->SoAction::apply(node->getPath(i));
            buildFrame(*walk.getList(), walk.getViews(), walk.frame);
            GLRenderer(*device, walk.frame, options, traversal().statistics).drawOutlines(style);
        }
    }
    walk.clear();
}
