#include "Bodies.h"

#include <kalmyr/shapes/SoGeometry.h>

#include <cmath>
#include <numbers>

namespace kalmyr::detail {

namespace {

/// Direction of the part `u` of the way around, beginning at the back.
SbVec3f around(float u)
{
    const float angle = 2 * std::numbers::pi_v<float> * u;
    return {-std::sin(angle), 0, -std::cos(angle)};
}

float part(int i, int of)
{
    return static_cast<float>(i) / static_cast<float>(of);
}

} // namespace

void BodyBuilder::vertex(const SbVec3f& position, const SbVec3f& normal, const SbVec2f& texCoord)
{
    m_geometry.positions.push_back(position);
    m_geometry.normals.push_back(normal);
    m_geometry.texCoords.push_back(texCoord);
    m_geometry.solid = true;
    m_geometry.twoSided = false;
}

void BodyBuilder::rows(unsigned first, int count)
{
    constexpr unsigned kRow = kSteps + 1;
    for (unsigned j = 0; j + 1 < static_cast<unsigned>(count); ++j) {
        for (unsigned i = 0; i < kSteps; ++i) {
            const unsigned a = first + j * kRow + i;
            for (const unsigned corner : {a, a + 1, a + 1 + kRow, a, a + 1 + kRow, a + kRow})
                m_geometry.triangles.push_back(corner);
        }
    }
}

void BodyBuilder::side(const Ring& lower, const Ring& upper, const SbVec2f& slope)
{
    const auto first = static_cast<unsigned>(m_geometry.positions.size());
    for (const Ring& ring : {lower, upper}) {
        for (int i = 0; i <= kSteps; ++i) {
            const float u = part(i, kSteps);
            SbVec3f normal = around(u) * slope[0] + SbVec3f(0, slope[1], 0);
            normal.normalize();
            vertex(around(u) * ring.radius + SbVec3f(0, ring.y, 0), normal, SbVec2f(u, ring.v));
        }
    }
    rows(first, 2);
}

void BodyBuilder::disk(float radius, float y, bool up)
{
    const auto center = static_cast<unsigned>(m_geometry.positions.size());
    const SbVec3f normal(0, up ? 1.0f : -1.0f, 0);
    vertex(SbVec3f(0, y, 0), normal, SbVec2f(0.5f, 0.5f));
    for (int i = 0; i <= kSteps; ++i) {
        const SbVec3f way = around(part(i, kSteps));
        const float t = up ? -way[2] : way[2];
        vertex(way * radius + SbVec3f(0, y, 0), normal, SbVec2f(0.5f + way[0] / 2, 0.5f + t / 2));
    }
    for (unsigned i = 1; i <= kSteps; ++i) {
        m_geometry.triangles.push_back(center);
        m_geometry.triangles.push_back(center + (up ? i : i + 1));
        m_geometry.triangles.push_back(center + (up ? i + 1 : i));
    }
}

void BodyBuilder::sphere(float radius)
{
    constexpr int kRows = kSteps / 2;
    const auto first = static_cast<unsigned>(m_geometry.positions.size());
    for (int j = 0; j <= kRows; ++j) {
        const float v = part(j, kRows);
        const float angle = std::numbers::pi_v<float> * (v - 0.5f);
        for (int i = 0; i <= kSteps; ++i) {
            const float u = part(i, kSteps);
            const SbVec3f normal = around(u) * std::cos(angle) + SbVec3f(0, std::sin(angle), 0);
            vertex(normal * radius, normal, SbVec2f(u, v));
        }
    }
    rows(first, kRows + 1);
}

void buildBox(SoGeometry& geometry, const SbVec3f& size)
{
    for (int face = 0; face < 6; ++face) {
        const int axis = face / 2;
        const float sign = face % 2 ? -1.0f : 1.0f;
        SbVec3f normal;
        normal[axis] = sign;
        // Right and up as seen from outside: the top and bottom have the front below and above.
        const SbVec3f up(0, axis == 1 ? 0.0f : 1.0f, axis == 1 ? -sign : 0.0f);
        const SbVec3f right = up.cross(normal);
        const auto first = static_cast<unsigned>(geometry.positions.size());
        for (const SbVec2f& at : {SbVec2f(0, 0), SbVec2f(1, 0), SbVec2f(1, 1), SbVec2f(0, 1)}) {
            const SbVec3f corner = normal + right * (2 * at[0] - 1) + up * (2 * at[1] - 1);
            geometry.positions.emplace_back(corner[0] * size[0] / 2, corner[1] * size[1] / 2,
                                            corner[2] * size[2] / 2);
            geometry.normals.push_back(normal);
            geometry.texCoords.push_back(at);
        }
        for (const unsigned corner : {0u, 1u, 2u, 0u, 2u, 3u})
            geometry.triangles.push_back(first + corner);
        for (int i = 0; i < 2; ++i)
            geometry.triangleFaces.push_back(face);
    }
    geometry.solid = true;
    geometry.twoSided = false;
}

} // namespace kalmyr::detail
