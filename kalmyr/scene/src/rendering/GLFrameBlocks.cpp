#include "rendering/GLFrameBlocks.h"

#include "rendering/FrameBuilder.h"
#include "rendering/Shaders.h"

#include <algorithm>
#include <cstring>

namespace kalmyr::detail {

namespace {

/// As the shaders declare them.
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

void upload(GLuint buffer, const std::vector<unsigned char>& bytes)
{
    glBindBuffer(GL_UNIFORM_BUFFER, buffer);
    glBufferData(GL_UNIFORM_BUFFER, static_cast<GLsizeiptr>(bytes.size()), bytes.data(),
                 GL_STREAM_DRAW);
}

void bindRange(GLUniformBinding binding, GLuint buffer, std::size_t first, std::size_t size)
{
    glBindBufferRange(GL_UNIFORM_BUFFER, binding, buffer, static_cast<GLintptr>(first),
                      static_cast<GLsizeiptr>(size));
}

} // namespace

void GLFrameBlocks::create()
{
    glGenBuffers(1, &m_views);
    glGenBuffers(1, &m_surroundings);
    GLint alignment = 256;
    glGetIntegerv(GL_UNIFORM_BUFFER_OFFSET_ALIGNMENT, &alignment);
    m_viewStride = aligned(sizeof(ViewBlock), alignment);
    m_surroundingsStride = aligned(sizeof(SurroundingsBlock), alignment);
}

void GLFrameBlocks::free()
{
    glDeleteBuffers(1, &m_views);
    glDeleteBuffers(1, &m_surroundings);
    m_table.free();
}

void GLFrameBlocks::fill(const Frame& frame)
{
    if (m_generation != frame.generation) {
        fillViews(frame);
        fillSurroundings(frame);
        m_generation = frame.generation;
    }
}

void GLFrameBlocks::bindView(std::size_t view) const
{
    bindRange(VIEW_BINDING, m_views, view * m_viewStride, sizeof(ViewBlock));
}

void GLFrameBlocks::bindSurroundings(std::size_t number) const
{
    bindRange(SURROUNDINGS_BINDING, m_surroundings, number * m_surroundingsStride,
              sizeof(SurroundingsBlock));
}

void GLFrameBlocks::bindTable() const
{
    m_table.bind(kSurroundingsUnit);
}

void GLFrameBlocks::fillViews(const Frame& frame)
{
    std::vector<unsigned char> bytes(m_viewStride * frame.views.size());
    for (std::size_t i = 0; i < frame.views.size(); ++i) {
        const SoView& view = frame.views[i].view;
        const SbVec2s& size = frame.views[i].region.getViewportSizePixels();
        ViewBlock block{};
        std::copy_n(view.projection[0], 16, block.projection);
        block.viewport[0] = size[0];
        block.viewport[1] = size[1];
        block.viewport[2] = view.projection[2][3] == 0 ? 1 : 0;
        block.viewport[3] = view.volume.getNearDist() + view.volume.getDepth();
        std::memcpy(bytes.data() + i * m_viewStride, &block, sizeof block);
    }
    upload(m_views, bytes);
}

void GLFrameBlocks::fillSurroundings(const Frame& frame)
{
    std::vector<unsigned char> bytes(m_surroundingsStride * frame.surroundings.size());
    std::vector<float> table;
    for (std::size_t i = 0; i < frame.surroundings.size(); ++i) {
        const EyeSurroundings& from = frame.surroundings[i];
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
        m_table.fill(table.data(), table.size() * sizeof(float));
    }
    upload(m_surroundings, bytes);
}

} // namespace kalmyr::detail
