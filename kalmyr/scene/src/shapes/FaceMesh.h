#pragma once

#include "AttributeLookup.h"

#include <vector>

namespace kalmyr::detail {

/// The faces of a shape that are usable, as runs of corners, and their triangles.
///
/// A corner is a number into `slots`; corners beyond were made by tessellating faces that cut
/// themselves, and stand in `extra`.
struct FaceMesh {
    struct Face {
        std::uint32_t first;  ///< corner
        std::uint32_t number; ///< PER_FACE
        std::uint32_t run;    ///< runs before its corners
        std::uint32_t part;   ///< PER_PART

        Place at(std::uint32_t slot) const { return {slot, run, number, part}; }
    };
    struct ExtraCorner {
        SbVec3f position;
        std::uint32_t like; ///< corner that lends its attributes
    };

    std::vector<std::uint32_t> slots;
    std::vector<Face> faces; ///< and one more that ends the last
    std::vector<ExtraCorner> extra;
    bool onlyTriangles = true;                ///< face f is the triangle of corners 3f, 3f+1, 3f+2
    std::vector<std::uint32_t> triangles;     ///< corners; empty when onlyTriangles
    std::vector<std::uint32_t> triangleFaces; ///< index into faces; empty when onlyTriangles
    Counts counts;
    Fault fault;

    std::size_t numFaces() const { return faces.size() - 1; }
    std::size_t numTriangles() const { return onlyTriangles ? numFaces() : triangles.size() / 3; }
    std::uint32_t faceOf(std::size_t triangle) const
    {
        return onlyTriangles ? static_cast<std::uint32_t>(triangle) : triangleFaces[triangle];
    }
    std::uint32_t cornerOf(std::size_t i) const
    {
        return onlyTriangles ? static_cast<std::uint32_t>(i) : triangles[i];
    }

    /// Reads faces or strips; leaves out those with a fault or fewer than three corners.
    void read(const FaceInput& input, const AttributeLookup* const* attributes, int numAttributes);
    /// Makes the triangles.
    void triangulate(const FaceInput& input);

private:
    struct Reader;
};

/// Twice the area of a polygon times its normal, whatever its shape.
SbVec3f newellNormal(std::span<const SbVec3f> polygon);

} // namespace kalmyr::detail
