#include <kalmyr/actions/SoGLRenderAction.h>

#include "rendering/Anaglyph.h"
#include "rendering/FrameBuilder.h"
#include "rendering/GLDevice.h"
#include "rendering/GLRenderer.h"
#include "rendering/Outliner.h"
#include "rendering/RenderTraversal.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/base/SoError.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/core/SoPlaces.h>
#include <kalmyr/rendering/SoOutline.h>
#include <kalmyr/rendering/SoRenderingInit.h>

#include <algorithm>
#include <utility>

namespace {

double now()
{
    return SbTime::monotonic().getValue();
}

kalmyr::detail::PixelBox partOf(const SbVec2i32& origin, const SbVec2i32& size)
{
    return {origin[0], origin[1], origin[0] + size[0], origin[1] + size[1]};
}

} // namespace

SO_ACTION_SOURCE(SoGLRenderAction, SoAction, "GLRenderAction")

/// The entries for nodes stand with the rest of the rendering area's registrations.
void SoGLRenderAction::initMethods() {}

SoGLRenderAction::SoGLRenderAction(const SbViewportRegion& region)
    : m_region(region), m_traversal(std::make_unique<kalmyr::detail::RenderTraversal>(*this))
{
    kalmyr::initRendering();
}

SoGLRenderAction::~SoGLRenderAction()
{
    for (SoOutline* outline : m_outlines) {
        std::erase(outline->m_actions, this);
    }
}

bool SoGLRenderAction::addOutline(SoOutline& outline)
{
    if (std::find(m_outlines.begin(), m_outlines.end(), &outline) != m_outlines.end()) {
        return false;
    }
    m_outlines.push_back(&outline);
    outline.m_actions.push_back(this);
    return true;
}

bool SoGLRenderAction::removeOutline(SoOutline& outline)
{
    std::erase(outline.m_actions, this);
    return std::erase(m_outlines, &outline) > 0;
}

SoNode* SoGLRenderAction::findRootOf(SoNode* node) const
{
    // The node may have died meanwhile: what stands above the given one is alive.
    return m_latestRoot ? kalmyr::findAbove(node, m_latestRoot) : nullptr;
}

void SoGLRenderAction::setClearing(bool color, bool depth)
{
    m_clearColor = color;
    m_clearDepth = depth;
}

void SoGLRenderAction::setCaching(bool on)
{
    m_traversal->setCaching(on);
}

bool SoGLRenderAction::isCaching() const
{
    return m_traversal->isCaching();
}

void SoGLRenderAction::clearCaches()
{
    m_traversal->clear();
}

void SoGLRenderAction::setViewDependent()
{
    m_traversal->setViewDependent();
}

void SoGLRenderAction::releaseContext()
{
    kalmyr::detail::GLDevice::releaseCurrent();
}

const kalmyr::detail::RenderStatistics& SoGLRenderAction::getStatistics() const
{
    return m_traversal->statistics;
}

void SoGLRenderAction::beginTraversal(SoNode* root)
{
    SoAction::beginTraversal(root);
    m_latestRoot = root;
    m_traversal->begin(root);
    m_traversal->statistics.traverseSeconds = -now();
}

void SoGLRenderAction::endTraversal(SoNode* root)
{
    m_traversal->end(root);
    m_traversal->statistics.traverseSeconds += now();
    m_traversed = true;
    SoAction::endTraversal(root);
}

bool SoGLRenderAction::canDraw()
{
    kalmyr::initRendering();
    const char* error = "";
    m_traversed = false;
    m_drawn = kalmyr::detail::GLDevice::current(error) != nullptr;
    if (!m_drawn && !m_reported) {
        SoError::post("rendering: %s", error);
    }
    m_reported = !m_drawn;
    return m_drawn;
}

void SoGLRenderAction::apply(SoNode* root)
{
    if (canDraw()) {
        SoAction::apply(root);
        draw(root);
    }
}

void SoGLRenderAction::apply(SoPath* path)
{
    const SoRef<SoPath> held(path); // a path made for the call dies with it
    if (canDraw()) {
        SoAction::apply(path);
        draw(path ? path->getHead() : nullptr);
    }
}

void SoGLRenderAction::draw(SoNode* root)
{
    using namespace kalmyr::detail;
    const char* error = "";
    // A callback in the scene may have changed what is current.
    GLDevice* device = m_traversed ? GLDevice::current(error) : nullptr;
    m_drawn = device != nullptr;
    if (!device) {
        return;
    }
    RenderStatistics& statistics = m_traversal->statistics;
    const double start = now();
    const Frame& frame = m_traversal->frame;
    m_traversal->updateFrame();
    const double built = now();
    device->beginFrame();
    if (m_stereo.isOn) {
        drawBothEyes(*device, root);
    } else {
        drawFrame(*device, root);
    }
    device->endFrame();
    statistics.flattenSeconds = built - start;
    statistics.submitSeconds = now() - built;
    statistics.items = frame.items.size();
    statistics.culled = frame.culled;
    statistics.geometries = device->getNumGeometries();
    statistics.geometryBytes = device->getNumGeometryBytes();
    statistics.textures = device->getNumTextures();
}

void SoGLRenderAction::drawBothEyes(kalmyr::detail::GLDevice& device, SoNode* root)
{
    using namespace kalmyr::detail;
    const auto drawFrom = [&](float offset) {
        buildFrame(*m_traversal->getList(),
                   seenFromAside(m_traversal->getViews(), offset, m_stereo.convergence),
                   m_traversal->frame);
        drawFrame(device, root);
    };
    const bool clearsColor = std::exchange(m_clearColor, true);
    const bool clearsDepth = std::exchange(m_clearDepth, true);
    GLFrameOptions options;
    options.region = m_region;
    options.part = partOf(m_partOrigin, m_partSize);
    Anaglyph pictures(device, inTarget(boxOf(m_region), options));
    drawFrom(-m_stereo.separation / 2);
    pictures.keepLeft();
    drawFrom(m_stereo.separation / 2);
    pictures.mergeLeft();
    setClearing(clearsColor, clearsDepth);
}

void SoGLRenderAction::drawFrame(kalmyr::detail::GLDevice& device, SoNode* root)
{
    using namespace kalmyr::detail;
    RenderStatistics& statistics = m_traversal->statistics;
    const Frame& frame = m_traversal->frame;
    const GLFrameOptions options{m_region,     m_backgroundColor, m_transparencyType,
                                 m_clearColor, m_clearDepth,      partOf(m_partOrigin, m_partSize)};
    bool isStale = false;
    std::vector<Outliner*> outliners;
    const auto prepare = [&](SoOutline& outline) {
        if (outline.outliner().prepare(device, *this, root, frame, options)) {
            isStale = isStale || outline.outliner().isStale();
            outliners.push_back(&outline.outliner());
        }
    };
    if (SoOutline* own = frameOutline()) {
        prepare(*own);
    }
    for (SoOutline* outline : std::vector(m_outlines)) { // callbacks may change it
        prepare(*outline);
    }
    GLRenderer::LayerFunction layerDrawn;
    if (isStale) {
        layerDrawn = [&](int layer) {
            for (Outliner* outliner : outliners) {
                if (outliner->isStale()) {
                    outliner->layerDrawn(layer);
                }
            }
        };
    }
    GLRenderer(device, frame, options, statistics).draw(layerDrawn);
    for (Outliner* outliner : outliners) {
        outliner->finish(statistics);
    }
}
