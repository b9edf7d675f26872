#pragma once

#include <kalmyr/base/SbVec.h>

class SoGeometry;

namespace kalmyr::detail {

/// Builds bodies about the y axis, with normals and the texture coordinates of VRML97: from outside
/// pictures run left to right and upwards, and meet at the back.
class BodyBuilder {
public:
    /// Steps around the axis; half as many from pole to pole.
    static constexpr int kSteps = 32;

    /// Appends to `geometry`.
    explicit BodyBuilder(SoGeometry& geometry) : m_geometry(geometry) {}

    /// A ring of the surface.
    struct Ring {
        float radius;
        float y;
        float v; ///< texture coordinate
    };
    /// The wall between two rings, `lower` below. `slope` is the normal's share outwards and
    /// upwards.
    void side(const Ring& lower, const Ring& upper, const SbVec2f& slope);
    /// A flat end.
    void disk(float radius, float y, bool up);
    void sphere(float radius);

private:
    /// Rows of kSteps + 1 vertices each, joined by triangles.
    void rows(unsigned first, int count);
    void vertex(const SbVec3f& position, const SbVec3f& normal, const SbVec2f& texCoord);

    SoGeometry& m_geometry;
};

/// A box about the origin, each face with the whole picture.
void buildBox(SoGeometry& geometry, const SbVec3f& size);

} // namespace kalmyr::detail
