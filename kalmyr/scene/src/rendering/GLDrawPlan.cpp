#include "rendering/GLDrawPlan.h"

#include "rendering/Shaders.h"

#include <kalmyr/base/SoPreferences.h>

#include <algorithm>
#include <cstddef>

namespace kalmyr::detail {

namespace {

/// Room in the table for looks that change.
constexpr std::size_t kMinSpareLooks = 64;

} // namespace

GLCapabilities GLCapabilities::ofCurrent()
{
    GLCapabilities can;
    glGetIntegerv(GL_MAX_TEXTURE_BUFFER_SIZE, &can.maxBufferTexels);
    if (!SoPreferences::getBool("KMR_GL_BASELINE", false)) {
        can.baseInstance =
            epoxy_gl_version() >= 42 || epoxy_has_gl_extension("GL_ARB_base_instance");
        can.indirect =
            can.baseInstance
            && (epoxy_gl_version() >= 43 || epoxy_has_gl_extension("GL_ARB_multi_draw_indirect"));
    }
    return can;
}

std::size_t GLTable::fill(const void* data, std::size_t bytes)
{
    if (!buffer) {
        glGenBuffers(1, &buffer);
        glGenTextures(1, &texture);
    }
    glBindBuffer(GL_TEXTURE_BUFFER, buffer);
    glBufferData(GL_TEXTURE_BUFFER, static_cast<GLsizeiptr>(bytes), data, GL_DYNAMIC_DRAW);
    glBindBuffer(GL_TEXTURE_BUFFER, 0);
    glBindTexture(GL_TEXTURE_BUFFER, texture);
    glTexBuffer(GL_TEXTURE_BUFFER, GL_RGBA32F, buffer);
    glBindTexture(GL_TEXTURE_BUFFER, 0);
    return bytes;
}

void GLTable::bind(int unit) const
{
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    glBindTexture(GL_TEXTURE_BUFFER, texture);
    glActiveTexture(GL_TEXTURE0);
}

void GLTable::free()
{
    glDeleteTextures(1, &texture);
    glDeleteBuffers(1, &buffer);
    *this = {};
}

void GLDrawPlan::clear()
{
    generation = 0;
    layers.clear();
    batches.clear();
    commands.clear();
    slots.clear();
    m_ownLooks.clear();
}

void GLDrawPlan::upload(const std::vector<GLInstance>& instances, std::vector<float> looks)
{
    constexpr std::size_t kFloatsPerLook = std::size_t{4} * NUM_MATERIAL_SLOTS;
    m_numBytes = 0;
    m_ownLooks.clear();
    if (instances.empty()) {
        return;
    }
    const std::size_t numLooks = looks.size() / kFloatsPerLook;
    m_numLooks = static_cast<std::uint32_t>(numLooks);
    m_maxLooks =
        m_numLooks
        + static_cast<std::uint32_t>(std::min(instances.size(), kMinSpareLooks + numLooks / 4));
    looks.resize(m_maxLooks * kFloatsPerLook);
    m_numBytes += m_instances.fill(instances.data(), instances.size() * sizeof(GLInstance));
    m_numBytes += m_looks.fill(looks.data(), looks.size() * sizeof(float));
    if (!m_commands) {
        glGenBuffers(1, &m_commands);
    }
    const std::size_t bytes = commands.size() * sizeof(GLDrawCommand);
    glBindBuffer(GL_COPY_WRITE_BUFFER, m_commands);
    glBufferData(GL_COPY_WRITE_BUFFER, static_cast<GLsizeiptr>(bytes), commands.data(),
                 GL_DYNAMIC_DRAW);
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
    m_numBytes += bytes;
}

std::optional<std::uint32_t> GLDrawPlan::ownLook(std::uint32_t slot)
{
    const auto known = m_ownLooks.find(slot);
    if (known != m_ownLooks.end()) {
        return known->second;
    }
    if (m_numLooks == m_maxLooks) {
        return std::nullopt;
    }
    return m_ownLooks[slot] = m_numLooks++;
}

void GLDrawPlan::setLook(std::uint32_t place, const float* values)
{
    constexpr std::size_t kBytes = 4 * sizeof(float) * NUM_MATERIAL_SLOTS;
    glBindBuffer(GL_COPY_WRITE_BUFFER, m_looks.buffer);
    glBufferSubData(GL_COPY_WRITE_BUFFER, static_cast<GLintptr>(place * kBytes), kBytes, values);
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
}

void GLDrawPlan::setInstance(std::uint32_t slot, const GLInstance& instance, bool withLook)
{
    static_assert(offsetof(GLInstance, look) == sizeof instance.columns);
    const std::size_t bytes = sizeof instance.columns + (withLook ? sizeof instance.look : 0);
    glBindBuffer(GL_COPY_WRITE_BUFFER, m_instances.buffer);
    glBufferSubData(GL_COPY_WRITE_BUFFER, static_cast<GLintptr>(slot * sizeof(GLInstance)),
                    static_cast<GLsizeiptr>(bytes), &instance);
    glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
}

void GLDrawPlan::bind() const
{
    m_instances.bind(kInstanceUnit);
    m_looks.bind(kMaterialUnit);
}

void GLDrawPlan::draw(const GLBatch& batch, const GLCapabilities& can, GLint firstSlot) const
{
    if (can.indirect) {
        glBindBuffer(GL_DRAW_INDIRECT_BUFFER, m_commands);
        glMultiDrawElementsIndirect(
            batch.key.mode, GL_UNSIGNED_INT,
            reinterpret_cast<const void*>(batch.firstCommand * sizeof(GLDrawCommand)),
            static_cast<GLsizei>(batch.numCommands), 0);
        glBindBuffer(GL_DRAW_INDIRECT_BUFFER, 0);
        return;
    }
    for (std::uint32_t i = 0; i < batch.numCommands; ++i) {
        const GLDrawCommand& command = commands[batch.firstCommand + i];
        const auto count = static_cast<GLsizei>(command.numIndices);
        const auto instances = static_cast<GLsizei>(command.numInstances);
        const void* const first = reinterpret_cast<const void*>(
            static_cast<std::uintptr_t>(command.firstIndex * sizeof(std::uint32_t)));
        if (can.baseInstance) {
            glDrawElementsInstancedBaseVertexBaseInstance(batch.key.mode, count, GL_UNSIGNED_INT,
                                                          first, instances, command.firstVertex,
                                                          command.firstSlot);
        } else {
            glUniform1i(firstSlot, static_cast<GLint>(command.firstSlot));
            glDrawElementsInstancedBaseVertex(batch.key.mode, count, GL_UNSIGNED_INT, first,
                                              instances, command.firstVertex);
        }
    }
}

void GLDrawPlan::free()
{
    m_instances.free();
    m_looks.free();
    glDeleteBuffers(1, &m_commands);
    m_commands = 0;
    clear();
}

} // namespace kalmyr::detail
