#include "Primitives.h"

#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMaterialElement.h>

#include <cmath>
#include <numbers>

namespace kalmyr::detail {

namespace {

constexpr int kMinSegments = 8;
constexpr int kMoreSegments = 48;
constexpr float kTwoPi = 2 * std::numbers::pi_v<float>;

/// Direction of a part of the circle from the back (-z) counter-clockwise seen from above.
SbVec3f around(int i, int segments)
{
    // The seam must close exactly.
    const float angle = kTwoPi * static_cast<float>(i % segments) / static_cast<float>(segments);
    return {-std::sin(angle), 0, -std::cos(angle)};
}

float fraction(int i, int count)
{
    return static_cast<float>(i) / static_cast<float>(count);
}

struct Writer {
    SoGeometry& g;

    std::uint32_t vertex(const SbVec3f& position, const SbVec3f& normal, const SbVec2f& texCoord)
    {
        g.positions.push_back(position);
        g.normals.push_back(normal);
        g.texCoords.push_back(texCoord);
        return static_cast<std::uint32_t>(g.positions.size() - 1);
    }
    void triangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, int part)
    {
        g.triangles.insert(g.triangles.end(), {a, b, c});
        g.triangleFaces.push_back(part);
    }
};

struct CubeSide {
    int axis; ///< of the normal
    float sign;
    SbVec3f s, t; ///< directions of the texture on the side
};

constexpr CubeSide kCubeSides[] = {
    {2, 1, {1, 0, 0}, {0, 1, 0}},  {2, -1, {-1, 0, 0}, {0, 1, 0}}, {0, -1, {0, 0, 1}, {0, 1, 0}},
    {0, 1, {0, 0, -1}, {0, 1, 0}}, {1, 1, {1, 0, 0}, {0, 0, -1}},  {1, -1, {1, 0, 0}, {0, 0, 1}},
};

void buildCube(const SbVec3f& size, Writer w)
{
    const SbVec3f half(std::abs(size[0]) / 2, std::abs(size[1]) / 2, std::abs(size[2]) / 2);
    int part = 0;
    for (const CubeSide& side : kCubeSides) {
        SbVec3f normal;
        normal[side.axis] = side.sign;
        std::uint32_t corners[4];
        for (int i = 0; i < 4; ++i) {
            const float s = i == 1 || i == 2 ? 1.0f : 0.0f, t = i >= 2 ? 1.0f : 0.0f;
            const SbVec3f unit = normal + side.s * (2 * s - 1) + side.t * (2 * t - 1);
            corners[i] =
                w.vertex({unit[0] * half[0], unit[1] * half[1], unit[2] * half[2]}, normal, {s, t});
        }
        w.triangle(corners[0], corners[1], corners[2], part);
        w.triangle(corners[0], corners[2], corners[3], part);
        ++part;
    }
}

void buildSphere(float radius, int segments, Writer w)
{
    const int rows = segments / 2;
    for (int r = 0; r <= rows; ++r) {
        const float angle = std::numbers::pi_v<float> * (fraction(r, rows) - 0.5f);
        // The poles exactly, so that the triangles around them meet.
        const float ring = r == 0 || r == rows ? 0.0f : std::cos(angle);
        const float up = r == 0 ? -1.0f : r == rows ? 1.0f : std::sin(angle);
        for (int i = 0; i <= segments; ++i) {
            SbVec3f normal = around(i, segments) * ring;
            normal[1] = up;
            w.vertex(normal * radius, normal, {fraction(i, segments), fraction(r, rows)});
        }
    }
    const auto at = [segments](int r, int i) {
        return static_cast<std::uint32_t>(r * (segments + 1) + i);
    };
    for (int r = 0; r < rows; ++r) {
        for (int i = 0; i < segments; ++i) {
            if (r > 0)
                w.triangle(at(r, i), at(r, i + 1), at(r + 1, i + 1), 0);
            if (r + 1 < rows)
                w.triangle(at(r, i), at(r + 1, i + 1), at(r + 1, i), 0);
        }
    }
}

/// The wall between two circles about the y axis.
void buildWall(float bottomRadius, float topRadius, float height, int segments, int part, Writer w)
{
    SbVec2f slope(height, bottomRadius - topRadius);
    slope.normalize();
    const bool pointed = topRadius == 0;
    for (int i = 0; i <= segments; ++i) {
        const SbVec3f out = around(i, segments);
        const SbVec3f normal(out[0] * slope[0], slope[1], out[2] * slope[0]);
        w.vertex(out * bottomRadius + SbVec3f(0, -height / 2, 0), normal,
                 {fraction(i, segments), 0});
        // At a tip every segment has its own normal, half way between those of its lower corners.
        SbVec3f topNormal = normal;
        if (pointed && i < segments) {
            SbVec3f middle = out + around(i + 1, segments);
            middle.normalize();
            topNormal = SbVec3f(middle[0] * slope[0], slope[1], middle[2] * slope[0]);
        }
        const float s = pointed ? fraction(2 * i + 1, 2 * segments) : fraction(i, segments);
        w.vertex(out * topRadius + SbVec3f(0, height / 2, 0), topNormal, {s, 1});
    }
    const auto base = static_cast<std::uint32_t>(w.g.positions.size())
                      - 2 * (static_cast<std::uint32_t>(segments) + 1);
    for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(segments); ++i) {
        const std::uint32_t a = base + 2 * i;
        if (!pointed)
            w.triangle(a, a + 3, a + 1, part);
        w.triangle(a, a + 2, pointed ? a + 1 : a + 3, part);
    }
}

/// A disc square to the y axis that faces up or down.
void buildCap(float radius, float y, bool up, int segments, int part, Writer w)
{
    const SbVec3f normal(0, up ? 1.0f : -1.0f, 0);
    const auto point = [&](const SbVec3f& out) {
        const SbVec2f texCoord(out[0] / 2 + 0.5f, (up ? -out[2] : out[2]) / 2 + 0.5f);
        return w.vertex(out * radius + SbVec3f(0, y, 0), normal, texCoord);
    };
    const std::uint32_t center = point(SbVec3f());
    for (int i = 0; i < segments; ++i)
        point(around(i, segments));
    const auto count = static_cast<std::uint32_t>(segments);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t a = center + 1 + i, b = center + 1 + (i + 1) % count;
        w.triangle(center, up ? a : b, up ? b : a, part);
    }
}

enum ConeParts { CONE_SIDES = 1, CONE_BOTTOM = 2, CONE_ALL = 3 };
enum CylinderParts { CYLINDER_SIDES = 1, CYLINDER_TOP = 2, CYLINDER_BOTTOM = 4, CYLINDER_ALL = 7 };

void buildCone(float radius, float height, int parts, int segments, Writer w)
{
    if (parts & CONE_SIDES)
        buildWall(radius, 0, height, segments, 0, w);
    if (parts & CONE_BOTTOM)
        buildCap(radius, -height / 2, false, segments, 1, w);
}

void buildCylinder(float radius, float height, int parts, int segments, Writer w)
{
    if (parts & CYLINDER_SIDES)
        buildWall(radius, radius, height, segments, 0, w);
    if (parts & CYLINDER_TOP)
        buildCap(radius, height / 2, true, segments, 1, w);
    if (parts & CYLINDER_BOTTOM)
        buildCap(radius, -height / 2, false, segments, 2, w);
}

} // namespace

void buildPrimitive(const SharedKey& key, SoGeometry& geometry)
{
    SbVec3f size;
    for (int k = 0; k < 3; ++k)
        size[k] = std::bit_cast<float>(key.sizes[static_cast<std::size_t>(k)]);
    const Writer w{geometry};
    bool closed = true;
    switch (key.kind) {
    case SharedKey::CUBE:
        buildCube(size, w);
        break;
    case SharedKey::SPHERE:
        buildSphere(std::abs(size[0]), key.segments, w);
        break;
    case SharedKey::CONE:
        buildCone(std::abs(size[0]), std::abs(size[1]), key.parts, key.segments, w);
        closed = (key.parts & CONE_ALL) == CONE_ALL;
        break;
    case SharedKey::CYLINDER:
        buildCylinder(std::abs(size[0]), std::abs(size[1]), key.parts, key.segments, w);
        closed = (key.parts & CYLINDER_ALL) == CYLINDER_ALL;
        break;
    }
    geometry.solid = closed;
    geometry.twoSided = !closed;
}

int segmentsOf(SoState* state)
{
    const float effort = SoComplexityElement::get(state);
    // Even, so that there are points at both ends of every main axis.
    return kMinSegments + 2 * static_cast<int>(std::lround(effort * kMoreSegments / 2));
}

bool hasPartColors(SoState* state)
{
    const int binding = SoMaterialBindingElement::get(state);
    return binding == SoBinding::PER_PART || binding == SoBinding::PER_PART_INDEXED;
}

void applyPartColors(SoState* state, SoGeometry& geometry)
{
    const SoMaterialValues& material = SoMaterialElement::get(state);
    geometry.colors.resize(geometry.positions.size());
    for (std::size_t i = 0; i < geometry.triangles.size(); ++i) {
        const int part = geometry.triangleFaces[i / 3];
        geometry.colors[geometry.triangles[i]] =
            material.getDiffuse(part).getPackedValue(material.getTransparency(part));
    }
}

std::uint64_t primitiveStateKey(SoState* state, int segments, bool withParts)
{
    const auto key = static_cast<std::uint64_t>(segments);
    if (!withParts || !hasPartColors(state))
        return key;
    return SoElement::mix(key + 1, state->get<SoMaterialElement>().getValueId() + 1);
}

} // namespace kalmyr::detail
