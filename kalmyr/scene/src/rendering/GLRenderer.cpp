#include "rendering/GLRenderer.h"

#include "rendering/GLBackground.h"

#include "rendering/GLDashes.h"

#include <kalmyr/actions/SoGLRenderAction.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kalmyr::detail {

namespace {

constexpr std::uint64_t kDepthSteps = 63;

/// Uniform blocks as the shaders declare them.
struct ViewBlock {
    float projection[16];
    float viewport[4];
};
struct SurroundingsBlock {
    float counts[4];
    float planes[kMaxClipPlanes][4];
    EyeLight lights[kMaxLights];
};

std::size_t aligned(std::size_t size, GLint alignment)
{
    const auto step = static_cast<std::size_t>(std::max(alignment, 16));
    return (size + step - 1) / step * step;
}

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

template <class Vector>
void setVector(Vector& out, const SbColor& rgb, float w)
{
    for (int c = 0; c < 3; ++c) {
        out[c] = rgb[c];
    }
    out[3] = w;
}

/// Columns of the matrix that carries normals: cofactors, which need no inverse and keep working
/// for flattening scales. Their common sign is that of the determinant.
void normalMatrix(const Matrix4& matrix, bool mirrored, float* out)
{
    const float* m = matrix.m;
    const float sign = mirrored ? -1.0f : 1.0f;
    for (int row = 0; row < 3; ++row) {
        const float* a = m + 4 * ((row + 1) % 3);
        const float* b = m + 4 * ((row + 2) % 3);
        out[4 * row + 0] = sign * (a[1] * b[2] - a[2] * b[1]);
        out[4 * row + 1] = sign * (a[2] * b[0] - a[0] * b[2]);
        out[4 * row + 2] = sign * (a[0] * b[1] - a[1] * b[0]);
        out[4 * row + 3] = 0;
    }
}

unsigned when(bool condition, ShaderFeature feature)
{
    return condition ? feature : 0u;
}

/// Number of a texture's model in the shaders; of SURFACE with what the image replaces.
float modelNumber(const SoTextureValues& texture)
{
    switch (texture.model) {
    case SoTextureValues::SURFACE:
        return static_cast<float>(4 + (texture.hasColors() ? 1 : 0) + (texture.hasAlpha() ? 2 : 0));
    case SoTextureValues::MODULATE:
        return 0;
    case SoTextureValues::DECAL:
        return 1;
    case SoTextureValues::BLEND:
        return 2;
    default:
        return 3;
    }
}

bool isBlack(const SbColor& color)
{
    return color[0] == 0 && color[1] == 0 && color[2] == 0;
}

bool isOneDirectional(const EyeSurroundings& surroundings)
{
    return surroundings.lights.size() == 1 && surroundings.lights[0].position[3] < 0.5f;
}

std::uint64_t mixBits(std::uint64_t value, int bits)
{
    return value * 0x9E3779B97F4A7C15ull >> (64 - bits);
}

void setViewport(const SbViewportRegion& region, const PixelBox& part)
{
    const SbVec2s& origin = region.getViewportOriginPixels();
    const SbVec2s& size = region.getViewportSizePixels();
    glViewport(origin[0] - part.left, origin[1] - part.bottom, size[0], size[1]);
}

/// Angle of view of a sky when nothing is seen in perspective.
constexpr float kParallelSkyTangent = 0.414f;

/// What the program of the background wants to know; returns how many vectors it takes.
int backgroundValues(const Frame& frame, float (&values)[kMaxBackgroundStops + 2][4])
{
    const SoView& view = frame.views.back().view;
    const bool parallel = view.projection[2][3] == 0;
    const auto& stops = frame.background.stops;
    const int count = std::min(static_cast<int>(stops.size()), kMaxBackgroundStops);
    values[0][0] = static_cast<float>(count);
    for (int axis = 0; axis < 2; ++axis) {
        const float scale = view.projection[axis][axis];
        values[0][1 + axis] = parallel || scale == 0 ? kParallelSkyTangent : 1 / scale;
    }
    SbVec3f up = view.viewing.direction(frame.background.up);
    up.normalize();
    std::copy_n(up.getValue(), 3, values[1]);
    for (int i = 0; i < count; ++i) {
        const BackgroundStop& stop = stops[static_cast<std::size_t>(i)];
        setVector(values[2 + i], stop.color, stop.angle);
    }
    return count + 2;
}

const void* indexOffset(std::size_t firstIndex)
{
    return reinterpret_cast<const void*>(firstIndex * sizeof(std::uint32_t));
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
    setViewport(m_options.region, m_part);
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
    m_viewStride = aligned(sizeof(ViewBlock), m_device.uniformAlignment());
    m_surroundingsStride = aligned(sizeof(SurroundingsBlock), m_device.uniformAlignment());
    if (m_device.surroundingsOf != m_frame.generation) {
        uploadViews();
        uploadSurroundings();
        m_device.surroundingsOf = m_frame.generation;
    }
    m_device.surroundingsTable().bind(kSurroundingsUnit);
}

/// Whoever draws into one frame in several steps has the colours of all of them weighed alike.
void GLRenderer::setBlendFunction()
{
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
}

void GLRenderer::end()
{
    for (int i = 0; i < m_clipPlanes; ++i) {
        glDisable(GL_CLIP_DISTANCE0 + static_cast<GLenum>(i));
    }
    setBlending(Blending::NONE, true);
    m_device.paint().end(true);
    setCulling(GL_NONE);
    setViewport(m_options.region, m_part);
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

void GLRenderer::drawBackground()
{
    if (m_frame.hasBackground && !m_frame.background.stops.empty()) {
        drawBackgroundColors();
    }
    if (m_frame.hasBackground && m_frame.background.pictures) {
        drawBackgroundPictures(m_device, m_frame);
    }
}

void GLRenderer::drawBackgroundColors()
{
    const GLProgram* program = m_device.program(SHADER_BACKGROUND);
    if (!program) {
        return;
    }
    float values[kMaxBackgroundStops + 2][4] = {};
    const int count = backgroundValues(m_frame, values);
    glDisable(GL_DEPTH_TEST);
    glUseProgram(program->program);
    glUniform4fv(program->material, count, values[0]);
    glBindVertexArray(m_device.emptyVertexArray());
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glEnable(GL_DEPTH_TEST);
}

void GLRenderer::uploadViews()
{
    std::vector<unsigned char> bytes(m_viewStride * m_frame.views.size());
    for (std::size_t i = 0; i < m_frame.views.size(); ++i) {
        const SoView& view = m_frame.views[i].view;
        const SbVec2s& size = m_frame.views[i].region.getViewportSizePixels();
        ViewBlock block{};
        std::copy_n(view.projection[0], 16, block.projection);
        block.viewport[0] = size[0];
        block.viewport[1] = size[1];
        block.viewport[2] = view.projection[2][3] == 0 ? 1 : 0;
        block.viewport[3] = view.volume.getNearDist() + view.volume.getDepth();
        std::memcpy(bytes.data() + i * m_viewStride, &block, sizeof block);
    }
    glBindBuffer(GL_UNIFORM_BUFFER, m_device.viewBuffer());
    glBufferData(GL_UNIFORM_BUFFER, static_cast<GLsizeiptr>(bytes.size()), bytes.data(),
                 GL_STREAM_DRAW);
}

void GLRenderer::uploadSurroundings()
{
    std::vector<unsigned char> bytes(m_surroundingsStride * m_frame.surroundings.size());
    std::vector<float> table;
    for (std::size_t i = 0; i < m_frame.surroundings.size(); ++i) {
        const EyeSurroundings& from = m_frame.surroundings[i];
        SurroundingsBlock block{};
        block.counts[0] = static_cast<float>(from.lights.size());
        block.counts[1] = static_cast<float>(from.clipPlanes.size());
        block.counts[2] = static_cast<float>(table.size() / 4);
        if (from.lights.size() > kMaxLights) {
            const auto* const first = reinterpret_cast<const float*>(from.lights.data());
            table.insert(table.end(), first, first + from.lights.size() * sizeof(EyeLight) / 4);
        } else {
            std::copy(from.lights.begin(), from.lights.end(), block.lights);
        }
        block.counts[3] = static_cast<float>(table.size() / 4);
        for (std::size_t p = 0; p < from.clipPlanes.size(); ++p) {
            const float* const plane = from.clipPlanes[p].getValue();
            if (p < kMaxClipPlanes) {
                std::copy_n(plane, 4, block.planes[p]);
            }
            if (from.clipPlanes.size() > kMaxClipPlanes) {
                table.insert(table.end(), plane, plane + 4);
            }
        }
        std::memcpy(bytes.data() + i * m_surroundingsStride, &block, sizeof block);
    }
    if (!table.empty()) {
        m_device.surroundingsTable().fill(table.data(), table.size() * sizeof(float));
    }
    glBindBuffer(GL_UNIFORM_BUFFER, m_device.surroundingsBuffer());
    glBufferData(GL_UNIFORM_BUFFER, static_cast<GLsizeiptr>(bytes.size()), bytes.data(),
                 GL_STREAM_DRAW);
}

void GLRenderer::draw(const LayerFunction& layerDrawn)
{
    begin();
    clear();
    drawBackground();
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

void GLRenderer::drawItem(const FrameItem& item, bool withFaces)
{
    const RenderList::Entry& entry = *item.entry;
    const SoDrawStyleValues::Style style = entry.appearance->drawStyle.style;
    const bool edges = style == SoDrawStyleValues::LINES && withFaces;
    const GLGeometry& buffers =
        edges ? m_device.geometryWithEdges(*entry.geometry) : m_device.geometry(*entry.geometry);
    if (style == SoDrawStyleValues::POINTS) {
        drawPoints(item, buffers, true);
        return;
    }
    if (buffers.numTriangleIndices && withFaces) {
        if (edges) {
            drawSegments(item, buffers, true);
        } else {
            drawFaces(item, buffers);
        }
    }
    if (buffers.numLineIndices) {
        drawSegments(item, buffers, false);
    }
    if (buffers.numPointIndices) {
        drawPoints(item, buffers, false);
    }
}

void GLRenderer::drawFaces(const FrameItem& item, const GLGeometry& buffers)
{
    if (prepare(item, buffers, featuresOf(item))) {
        setFaces(item);
        submit(buffers, GL_TRIANGLES, buffers.numTriangleIndices, buffers.firstIndex);
    }
}

void GLRenderer::drawSegments(const FrameItem& item, const GLGeometry& buffers, bool edges)
{
    const SoDrawStyleValues& style = item.entry->appearance->drawStyle;
    if (style.linePattern != 0xffff && m_purpose == Purpose::SCENE) {
        drawDashes(item, buffers, edges);
        return;
    }
    const bool wide = m_purpose == Purpose::EDGES || style.lineWidth > 1;
    if (!prepare(item, buffers, featuresOf(item) | when(wide, SHADER_WIDE_LINES))) {
        return;
    }
    setCulling(GL_NONE);
    if (!edges) {
        submit(buffers, GL_LINES, buffers.numLineIndices, buffers.firstLineIndex());
        return;
    }
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.edges);
    submit(buffers, GL_LINES, buffers.numEdgeIndices, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.indices);
}

/// The pattern goes on from segment to segment. Edges come in another order than without one.
void GLRenderer::drawDashes(const FrameItem& item, const GLGeometry& buffers, bool edges)
{
    if (!prepare(item, buffers, featuresOf(item) | SHADER_WIDE_LINES | SHADER_DASHES)) {
        return;
    }
    GLDashes& dashes = m_device.dashes();
    const SoGeometry& geometry = *item.entry->geometry;
    const auto& lines =
        edges ? dashes.edgesOf(geometry, m_device.getFrameNumber()) : geometry.lines;
    const RenderView& view = m_frame.views[item.view];
    const Matrix4 toClip =
        Matrix4::product(SbMatrix(item.toEye.m), Matrix4::from(view.view.projection));
    const SbVec2s& size = view.region.getViewportSizePixels();
    const std::vector<float> starts =
        dashStarts(geometry.positions, lines, toClip, size[0], size[1]);
    setCulling(GL_NONE);
    if (edges) {
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_device.streamIndices(lines));
    }
    const std::size_t base = edges ? 0 : buffers.firstLineIndex();
    for (std::size_t first = 0; first < starts.size(); first += dashes.getMaxSegments()) {
        const std::size_t count = std::min(starts.size() - first, dashes.getMaxSegments());
        dashes.bind(&starts[first], count);
        submit(buffers, GL_LINES, static_cast<GLsizei>(2 * count), base + 2 * first);
    }
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers.indices);
}

/// Sharp edges wherever they are, smooth ones where the surface turns away from the eye.
void GLRenderer::drawPoints(const FrameItem& item, const GLGeometry& buffers, bool allVertices)
{
    if (!prepare(item, buffers, featuresOf(item))) {
        return;
    }
    glPointSize(std::max(1.0f, item.entry->appearance->drawStyle.pointSize));
    if (allVertices) {
        numberPrimitives(GL_POINTS, buffers.numVertices);
        m_device.paint().offsetFor(GL_POINTS);
        ++m_statistics.drawCalls;
        glDrawArrays(GL_POINTS, buffers.firstVertex, buffers.numVertices);
    } else {
        submit(buffers, GL_POINTS, buffers.numPointIndices, buffers.firstPointIndex());
    }
}

void GLRenderer::submit(const GLGeometry& buffers, GLenum mode, GLsizei count,
                        std::size_t firstIndex)
{
    numberPrimitives(mode, count);
    m_device.paint().offsetFor(mode);
    ++m_statistics.drawCalls;
    glDrawElementsBaseVertex(mode, count, GL_UNSIGNED_INT, indexOffset(firstIndex),
                             buffers.firstVertex);
}

SoFogValues GLRenderer::fogOn(const SoRenderAppearance& look) const
{
    return m_frame.fog.type != SoEnvironmentValues::NONE ? m_frame.fog
                                                         : SoFogValues::from(look.environment);
}

unsigned GLRenderer::featuresOf(const FrameItem& item) const
{
    const SoGeometry& geometry = *item.entry->geometry;
    const SoRenderAppearance& look = *item.entry->appearance;
    const EyeSurroundings& surroundings = m_frame.surroundings[item.surroundings];
    unsigned features = when(!surroundings.clipPlanes.empty(), SHADER_CLIP)
                        | when(surroundings.clipPlanes.size() > kMaxClipPlanes, SHADER_PLANE_TABLE);
    const std::size_t count = geometry.positions.size();
    features |= when(count > 0 && geometry.pixelOffsets.size() >= count, SHADER_PIXEL_OFFSETS);
    if (m_purpose == Purpose::MASK) {
        const bool hasHoles = look.translucentTexture && geometry.texCoords.size() >= count;
        return features | SHADER_MASK | when(hasHoles, SHADER_TEXTURE);
    }
    if (m_purpose == Purpose::EDGES) {
        return features;
    }
    if (look.lit && geometry.normals.size() >= count) {
        features |= SHADER_LIT | when(!isBlack(look.specular), SHADER_SPECULAR)
                    | when(!isOneDirectional(surroundings), SHADER_MANY_LIGHTS)
                    | when(surroundings.lights.size() > kMaxLights, SHADER_LIGHT_TABLE)
                    | when(geometry.twoSided && !geometry.solid, SHADER_TWO_SIDED);
    }
    // Programs of the scene's own may look up textures of theirs.
    const bool hasImage = !look.texture.image.isNull() || (look.extras && look.extras->program);
    const bool textured = hasImage && geometry.texCoords.size() >= count;
    features |= when(textured, SHADER_TEXTURE)
                | when(geometry.colors.size() >= count, SHADER_COLORS)
                | when(fogOn(look).type != SoEnvironmentValues::NONE, SHADER_FOG);
    return features;
}

const GLProgram* GLRenderer::useProgram(const SoRenderAppearance& look, unsigned& features)
{
    features |= m_peelingFeatures;
    if (features & SHADER_TEXTURE) {
        const GLuint texture = m_device.texture(look.texture);
        if (!texture) {
            features &= ~static_cast<unsigned>(SHADER_TEXTURE);
        } else if (texture != m_texture) {
            glBindTexture(GL_TEXTURE_2D, texture);
            m_texture = texture;
        }
    }
    const GLProgram* program = m_device.program(features);
    if (program && program != m_program) {
        glUseProgram(program->program);
        m_program = program;
        m_material = nullptr;
    }
    return program;
}

void GLRenderer::bindVertexArray(GLuint vertexArray)
{
    if (m_vertexArray != vertexArray) {
        glBindVertexArray(vertexArray);
        m_vertexArray = vertexArray;
    }
}

/// Null when the item is drawn as plain looks are.
const GLProgram* GLRenderer::usePaint(const FrameItem& item, unsigned features)
{
    const SoRenderAppearance& look = *item.entry->appearance;
    if (m_purpose != Purpose::SCENE || !look.extras) {
        return nullptr;
    }
    features |= m_peelingFeatures;
    const GLProgram* program = m_device.paint().find(look, *item.entry->geometry, features);
    if (!program) {
        return nullptr;
    }
    const bool showsImage = (features & SHADER_TEXTURE) && look.extras->program;
    const GLuint texture = showsImage ? m_device.texture(look.texture) : 0;
    if (texture != m_texture) {
        glBindTexture(GL_TEXTURE_2D, texture);
        m_texture = texture;
    }
    if (program != m_program) {
        m_program = program;
        m_material = nullptr;
    }
    glUseProgram(program->program); // a new one may have been made meanwhile
    m_device.paint().bind(*program, look, *item.entry->geometry,
                          m_frame.views[item.view].view.viewing, m_device.textures());
    return program;
}

bool GLRenderer::prepare(const FrameItem& item, const GLGeometry& buffers, unsigned features)
{
    if (m_blending == Blending::SCREEN_DOOR) {
        features |= SHADER_SCREEN_DOOR;
    }
    const SoRenderAppearance& look = *item.entry->appearance;
    if (!usePaint(item, features) && !useProgram(look, features)) {
        return false;
    }
    if (m_purpose == Purpose::SCENE) {
        m_device.paint().applySettings(look.extras.get(), m_writesDepth);
        if (m_blending == Blending::LAYER && look.extras) {
            glDepthFunc(GL_LEQUAL); // layers are found by a test of their own
            glDepthMask(GL_TRUE);
        }
    }
    bindVertexArray(buffers.vertexArray);
    if (m_view != item.view) {
        bindView(item.view);
    }
    bindSurroundings(item, features);
    setMatrices(item, features & SHADER_LIT);
    setMaterial(look, features);
    return true;
}

void GLRenderer::bindView(int view)
{
    glBindBufferRange(GL_UNIFORM_BUFFER, GLDevice::kViewBinding, m_device.viewBuffer(),
                      static_cast<GLintptr>(static_cast<std::size_t>(view) * m_viewStride),
                      sizeof(ViewBlock));
    setViewport(m_frame.views[static_cast<std::size_t>(view)].region, m_part);
    m_view = view;
}

void GLRenderer::bindSurroundings(const FrameItem& item, unsigned features)
{
    if (m_surroundings == item.surroundings) {
        return;
    }
    const auto planes = static_cast<int>(m_frame.surroundings[item.surroundings].clipPlanes.size());
    for (; m_clipPlanes < std::min(planes, kMaxClipPlanes); ++m_clipPlanes) {
        glEnable(GL_CLIP_DISTANCE0 + static_cast<GLenum>(m_clipPlanes));
    }
    for (; m_clipPlanes > planes; --m_clipPlanes) {
        glDisable(GL_CLIP_DISTANCE0 + static_cast<GLenum>(m_clipPlanes - 1));
    }
    if (features & (SHADER_LIT | SHADER_CLIP)) {
        glBindBufferRange(GL_UNIFORM_BUFFER, GLDevice::kSurroundingsBinding,
                          m_device.surroundingsBuffer(),
                          static_cast<GLintptr>(item.surroundings * m_surroundingsStride),
                          sizeof(SurroundingsBlock));
        m_surroundings = item.surroundings;
    }
}

void GLRenderer::setMatrices(const FrameItem& item, bool lit)
{
    float values[7 * 4];
    std::copy_n(item.toEye.m, 16, values);
    if (lit) {
        normalMatrix(item.toEye, item.mirrored, values + 16);
    }
    glUniform4fv(m_program->toEye, lit ? 7 : 4, values);
}

GLRenderer::MaterialValues GLRenderer::materialValues(const SoRenderAppearance& look,
                                                      unsigned features) const
{
    MaterialValues values{};
    const bool blends = m_blending != Blending::NONE;
    setVector(values[SLOT_DIFFUSE], look.diffuse, blends ? 1 - look.transparency : 1);
    setVector(values[SLOT_AMBIENT], look.ambient, look.shininess * 128);
    const float pattern = m_purpose == Purpose::MASK ? 0xffff : look.drawStyle.linePattern;
    setVector(values[SLOT_SPECULAR], look.specular, pattern);
    const SoEnvironmentValues& around = look.environment;
    SbColor glow;
    for (int c = 0; c < 3; ++c) {
        glow[c] =
            look.emissive[c] + around.ambientIntensity * around.ambientColor[c] * look.ambient[c];
    }
    setVector(values[SLOT_EMISSIVE], glow, look.drawStyle.lineWidth);
    if (features & SHADER_TEXTURE) {
        const SbMatrix& m = look.textureMatrix;
        setVector(values[SLOT_TEXTURE_U], SbColor(m[0][0], m[1][0], m[3][0]), 0);
        setVector(values[SLOT_TEXTURE_V], SbColor(m[0][1], m[1][1], m[3][1]), 0);
        setVector(values[SLOT_BLEND_COLOR], look.texture.blendColor, modelNumber(look.texture));
    }
    if (features & SHADER_FOG) {
        const SoFogValues fog = fogOn(look);
        setVector(values[SLOT_FOG], fog.color, static_cast<float>(fog.type));
        values[SLOT_FOG_RANGE][0] = fog.visibility;
    }
    return values;
}

void GLRenderer::setMaterial(const SoRenderAppearance& look, unsigned features)
{
    if (m_material == &look && m_materialFeatures == features) {
        return;
    }
    m_material = &look;
    m_materialFeatures = features;
    const MaterialValues values = materialValues(look, features);
    const GLsizei count = features & SHADER_FOG       ? NUM_MATERIAL_SLOTS
                          : features & SHADER_TEXTURE ? SLOT_BLEND_COLOR + 1
                                                      : SLOT_EMISSIVE + 1;
    glUniform4fv(m_program->material, count, values[0].data());
}

void GLRenderer::setFaces(const FrameItem& item)
{
    if (item.mirrored != m_mirrored) {
        glFrontFace(item.mirrored ? GL_CW : GL_CCW);
        m_mirrored = item.mirrored;
    }
    setCulling(item.entry->geometry->solid ? GL_BACK : GL_NONE);
}

void GLRenderer::setCulling(GLenum face)
{
    if (face == m_culled) {
        return;
    }
    if (face == GL_NONE) {
        glDisable(GL_CULL_FACE);
    } else {
        glEnable(GL_CULL_FACE);
        glCullFace(face);
    }
    m_culled = face;
}

void GLRenderer::setBlending(Blending blending, bool writeDepth)
{
    if (m_blending == blending) {
        return;
    }
    m_blending = blending;
    m_writesDepth = writeDepth;
    m_device.paint().applySettings(nullptr, writeDepth);
    m_material = nullptr; // its opacity depends on it
    if (blending == Blending::BLEND) {
        glEnable(GL_BLEND);
    } else {
        glDisable(GL_BLEND);
    }
    glDepthMask(writeDepth ? GL_TRUE : GL_FALSE);
}

} // namespace kalmyr::detail
