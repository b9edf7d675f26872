#include "rendering/GLRenderer.h"

#include "rendering/GLBackground.h"

#include <kalmyr/actions/SoGLRenderAction.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

constexpr std::uint64_t kDepthSteps = 63;

/// Types without an enumerator are drawn like their neighbours that differ least.
int nearestType(int type)
{
    switch (type) {
    case 1:
        return SoGLRenderAction::BLEND;
    case 2:
        return SoGLRenderAction::DELAYED_BLEND;
    case 5:
        return SoGLRenderAction::SORTED_OBJECT_BLEND;
    case 9:
        return SoGLRenderAction::SORTED_TRIANGLES_BLEND;
    case 11:
        return SoGLRenderAction::SORTED_OBJECT_TRIANGLES_BLEND;
    default:
        return std::clamp<int>(type, SoGLRenderAction::SCREEN_DOOR,
                               SoGLRenderAction::NO_TRANSPARENCY);
    }
}

std::uint64_t mixBits(std::uint64_t value, int bits)
{
    return value * 0x9E3779B97F4A7C15ull >> (64 - bits);
}

} // namespace

PixelBox inTarget(const PixelBox& box, const GLFrameOptions& options)
{
    const PixelBox& part = options.part;
    const PixelBox moved{box.left - part.left, box.bottom - part.bottom, box.right - part.left,
                         box.top - part.bottom};
    return part.isEmpty() ? box : moved.intersection({0, 0, part.width(), part.height()});
}

GLRenderer::GLRenderer(GLDevice& device, const Frame& frame, const GLFrameOptions& options,
                       RenderStatistics& statistics)
    : m_device(device),
      m_frame(frame),
      m_options(options),
      m_statistics(statistics),
      m_type(nearestType(options.transparencyType)),
      m_part(options.part)
{
}

void GLRenderer::begin()
{
    setViewport(m_options.region);
    glDisable(GL_STENCIL_TEST);
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);
    glDisable(GL_PROGRAM_POINT_SIZE);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glFrontFace(GL_CCW);
    glDepthMask(GL_TRUE);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_DEPTH_TEST);
    glActiveTexture(GL_TEXTURE0);
    setBlendFunction();
    m_device.frameBlocks().fill(m_frame);
    m_device.frameBlocks().bindTable();
}

/// Whoever draws into one frame in several steps has the colours of all of them weighed alike.
void GLRenderer::setBlendFunction()
{
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
}

void GLRenderer::setViewport(const SbViewportRegion& region) const
{
    const SbVec2s& origin = region.getViewportOriginPixels();
    const SbVec2s& size = region.getViewportSizePixels();
    glViewport(origin[0] - m_part.left, origin[1] - m_part.bottom, size[0], size[1]);
}

void GLRenderer::end()
{
    for (int i = 0; i < m_clipPlanes; ++i) {
        glDisable(GL_CLIP_DISTANCE0 + static_cast<GLenum>(i));
    }
    setBlending(Blending::NONE, true);
    m_device.paint().end(true);
    setCulling(GL_NONE);
    setViewport(m_options.region);
    glDisable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glFrontFace(GL_CCW);
    glLineWidth(1);
    glPointSize(1);
    glBindVertexArray(0);
    glUseProgram(0);
    glBindTexture(GL_TEXTURE_2D, 0);
    for (const int unit : {kInstanceUnit, kMaterialUnit, kSurroundingsUnit}) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        glBindTexture(GL_TEXTURE_BUFFER, 0);
    }
    glActiveTexture(GL_TEXTURE0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_UNIFORM_BUFFER, 0);
    m_program = nullptr;
    m_material = nullptr;
    m_vertexArray = 0;
    m_texture = 0;
    m_mirrored = false;
    m_view = -1;
    m_surroundings = -1;
    m_clipPlanes = 0;
}

void GLRenderer::clear()
{
    const GLbitfield bits =
        (m_options.clearColor ? static_cast<GLbitfield>(GL_COLOR_BUFFER_BIT) : 0)
        | (m_options.clearDepth ? static_cast<GLbitfield>(GL_DEPTH_BUFFER_BIT) : 0);
    if (!bits) {
        return;
    }
    const SbVec2s& origin = m_options.region.getViewportOriginPixels();
    const SbVec2s& size = m_options.region.getViewportSizePixels();
    const GLboolean scissored = glIsEnabled(GL_SCISSOR_TEST);
    GLint box[4];
    glGetIntegerv(GL_SCISSOR_BOX, box);
    glEnable(GL_SCISSOR_TEST);
    glScissor(origin[0] - m_part.left, origin[1] - m_part.bottom, size[0], size[1]);
    const SbColorRGBA& c = m_options.background;
    glClearColor(c[0], c[1], c[2], c[3]);
    glClear(bits);
    glScissor(box[0], box[1], box[2], box[3]);
    if (!scissored) {
        glDisable(GL_SCISSOR_TEST);
    }
}

void GLRenderer::draw(const LayerFunction& layerDrawn)
{
    begin();
    clear();
    drawBackground(m_device, m_frame);
    GLDrawPlan& plan = m_device.plan(m_frame.id);
    if (plan.generation != m_frame.generation || plan.transparencyType != m_type
        || !patchPlan(plan)) {
        makePlan(plan);
    }
    m_statistics.planBytes = plan.getNumBytes();
    for (int layer = 0; layer < m_frame.numLayers; ++layer) {
        if (layer > 0) {
            setBlending(Blending::NONE, true);
            glClear(GL_DEPTH_BUFFER_BIT);
        }
        plan.bind();
        drawLayer(plan, plan.layers[static_cast<std::size_t>(layer)]);
        if (layerDrawn) {
            end();
            layerDrawn(layer);
            begin();
        }
    }
    end();
}

void GLRenderer::splitLayer(int layer, std::vector<std::uint32_t>& opaque,
                            GLDrawPlan::Layer& planned) const
{
    std::vector<std::uint32_t>& transparent = planned.transparent;
    const bool together =
        m_type == SoGLRenderAction::SCREEN_DOOR || m_type == SoGLRenderAction::NO_TRANSPARENCY;
    for (std::uint32_t i = 0; i < m_frame.items.size(); ++i) {
        const FrameItem& item = m_frame.items[i];
        if (item.layer != layer) {
            continue;
        }
        if (item.entry->appearance->hiding) {
            planned.hiding.push_back(i);
        } else {
            (item.entry->transparent && !together ? transparent : opaque).push_back(i);
        }
    }
    if (m_type == SoGLRenderAction::BLEND && !transparent.empty()) {
        // All in the order of traversal, one by one.
        transparent.insert(transparent.end(), opaque.begin(), opaque.end());
        std::sort(transparent.begin(), transparent.end());
        opaque.clear();
    }
}

void GLRenderer::drawLayer(const GLDrawPlan& plan, const GLDrawPlan::Layer& layer)
{
    if (!layer.hiding.empty()) {
        drawHiding(layer.hiding);
    }
    if (m_type != SoGLRenderAction::SORTED_PIXELS_BLEND || m_frame.views.size() == 1) {
        drawBatches(plan, layer, kAllViews);
        drawOpaque(layer.singles);
        drawTransparent(layer.transparent);
        return;
    }
    for (int view = 0; view < static_cast<int>(m_frame.views.size()); ++view) {
        const auto ofView = [this, view](std::vector<std::uint32_t> items) {
            std::erase_if(items, [&](std::uint32_t i) { return m_frame.items[i].view != view; });
            return items;
        };
        drawBatches(plan, layer, view);
        drawOpaque(ofView(layer.singles));
        drawTransparent(ofView(layer.transparent));
        plan.bind();
    }
}

void GLRenderer::drawBatches(const GLDrawPlan& plan, const GLDrawPlan::Layer& layer, int view)
{
    for (std::uint32_t i = 0; i < layer.numBatches; ++i) {
        const GLBatch& batch = plan.batches[layer.firstBatch + i];
        if (view == kAllViews || batch.key.view == view) {
            drawBatch(plan, batch);
        }
    }
}

/// What lies between two transparent items may be drawn in any order, the items themselves not.
void GLRenderer::drawInOrder(const std::vector<std::uint32_t>& items)
{
    std::vector<std::uint32_t> run;
    for (const std::uint32_t i : items) {
        if (!m_frame.items[i].entry->transparent) {
            run.push_back(i);
            continue;
        }
        drawOpaque(inDrawingOrder(run));
        run.clear();
        setBlending(Blending::BLEND, true);
        drawItem(m_frame.items[i]);
        setBlending(Blending::NONE, true);
    }
    drawOpaque(inDrawingOrder(run));
}

/// By view and program, then roughly from front to back, which saves covered pixels. Within a step
/// the order of traversal stays: equal looks are neighbours in it, and so are buffers in memory.
std::uint64_t GLRenderer::orderKey(const FrameItem& item) const
{
    const float range = m_frame.nearDepth - m_frame.farDepth;
    const float step = range > 0 ? (m_frame.nearDepth - item.depth) / range : 0;
    const auto depth = static_cast<std::uint64_t>(step * static_cast<float>(kDepthSteps));
    const SoRenderAppearance& look = *item.entry->appearance;
    const auto image = reinterpret_cast<std::uintptr_t>(look.texture.image.getBytes());
    return std::uint64_t(item.view & 0xf) << 60 | mixBits(featuresOf(item), 12) << 48
           | std::uint64_t(item.surroundings & 0xff) << 40 | mixBits(image, 10) << 30
           | std::min(depth, kDepthSteps) << 1 | std::uint64_t(item.mirrored);
}

std::vector<std::uint32_t> GLRenderer::inDrawingOrder(const std::vector<std::uint32_t>& items) const
{
    std::vector<Order> order;
    order.reserve(items.size());
    for (const std::uint32_t i : items) {
        order.push_back({orderKey(m_frame.items[i]), i});
    }
    std::sort(order.begin(), order.end(), [](const Order& a, const Order& b) {
        return a.key != b.key ? a.key < b.key : a.item < b.item;
    });
    std::vector<std::uint32_t> sorted(order.size());
    std::transform(order.begin(), order.end(), sorted.begin(),
                   [](const Order& o) { return o.item; });
    return sorted;
}

void GLRenderer::drawOpaque(const std::vector<std::uint32_t>& items)
{
    for (const std::uint32_t i : items) {
        const FrameItem& item = m_frame.items[i];
        const bool holes = item.entry->transparent && m_type == SoGLRenderAction::SCREEN_DOOR;
        setBlending(holes ? Blending::SCREEN_DOOR : Blending::NONE, true);
        drawItem(item);
    }
    setBlending(Blending::NONE, true);
}

} // namespace kalmyr::detail
