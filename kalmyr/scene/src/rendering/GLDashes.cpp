#include "rendering/GLDashes.h"

#include "rendering/FaceEdges.h"
#include "rendering/Shaders.h"

#include <cmath>

namespace kalmyr::detail {

namespace {

constexpr double kPatternPixels = 16;

struct ClipPoint {
    double x, y, z, w;

    ClipPoint to(const ClipPoint& b, double t) const
    {
        return {x + t * (b.x - x), y + t * (b.y - y), z + t * (b.z - z), w + t * (b.w - w)};
    }
    double nearness() const { return z + w; }
};

ClipPoint clipPoint(const SbVec3f& p, const Matrix4& matrix)
{
    const float* m = matrix.m;
    const auto row = [&](int c) {
        return double(p[0]) * m[c] + double(p[1]) * m[4 + c] + double(p[2]) * m[8 + c] + m[12 + c];
    };
    return {row(0), row(1), row(2), row(3)};
}

} // namespace

std::vector<float> dashStarts(const std::vector<SbVec3f>& positions,
                              const std::vector<std::uint32_t>& lines, const Matrix4& toClip,
                              float viewportWidth, float viewportHeight)
{
    std::vector<float> starts(lines.size() / 2);
    double at = 0;
    const SbVec3f* end = nullptr;
    ClipPoint endPoint{};
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const SbVec3f& from = positions[lines[2 * i]];
        const SbVec3f& to = positions[lines[2 * i + 1]];
        const bool goesOn = end && *end == from;
        ClipPoint a = goesOn ? endPoint : clipPoint(from, toClip);
        ClipPoint b = clipPoint(to, toClip);
        endPoint = b;
        end = &to;
        at = goesOn ? at : 0;
        starts[i] = static_cast<float>(at);
        // As the geometry stage clips it.
        const double da = a.nearness(), db = b.nearness();
        if (da < 0 && db < 0)
            continue;
        if (da < 0)
            a = a.to(b, da / (da - db));
        else if (db < 0)
            b = a.to(b, da / (da - db));
        const double length = std::hypot((b.x / b.w - a.x / a.w) * 0.5 * viewportWidth,
                                         (b.y / b.w - a.y / a.w) * 0.5 * viewportHeight);
        if (std::isfinite(length))
            at = std::fmod(at + length, kPatternPixels);
    }
    return starts;
}

GLDashes::GLDashes()
{
    GLint texels = 0;
    glGetIntegerv(GL_MAX_TEXTURE_BUFFER_SIZE, &texels);
    m_maxSegments = static_cast<std::size_t>(texels);
    glGenBuffers(1, &m_buffer);
    glGenTextures(1, &m_texture);
}

void GLDashes::free()
{
    glDeleteTextures(1, &m_texture);
    glDeleteBuffers(1, &m_buffer);
    m_texture = 0;
    m_buffer = 0;
}

const std::vector<std::uint32_t>& GLDashes::edgesOf(const SoGeometry& geometry, std::uint64_t frame)
{
    const auto [found, isNew] = m_edges.try_emplace(geometry.getId());
    if (isNew)
        found->second.indices = chainedEdges(geometry);
    found->second.frame = frame;
    return found->second.indices;
}

void GLDashes::freeOld(std::uint64_t oldestFrame)
{
    std::erase_if(m_edges,
                  [oldestFrame](const auto& entry) { return entry.second.frame < oldestFrame; });
}

void GLDashes::bind(const float* starts, std::size_t count)
{
    glBindBuffer(GL_TEXTURE_BUFFER, m_buffer);
    glBufferData(GL_TEXTURE_BUFFER, static_cast<GLsizeiptr>(count * sizeof(float)), starts,
                 GL_STREAM_DRAW);
    glActiveTexture(GL_TEXTURE0 + kDashUnit);
    glBindTexture(GL_TEXTURE_BUFFER, m_texture);
    glTexBuffer(GL_TEXTURE_BUFFER, GL_R32F, m_buffer);
    glActiveTexture(GL_TEXTURE0);
    glBindBuffer(GL_TEXTURE_BUFFER, 0);
}

} // namespace kalmyr::detail
