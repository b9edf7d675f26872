#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbVec.h>

#include <cstdint>
#include <span>
#include <type_traits>
#include <vector>

namespace kalmyr {

/// A tree of boxes over triangles that finds those that a ray meets in logarithmic time.
///
/// Keeps no reference to the arrays it was built from; triangles with corners that are not finite
/// are never met.
class KALMYR_API TriangleTree {
public:
    struct Hit {
        float t = 0;                ///< along the ray, in lengths of its direction
        std::uint32_t triangle = 0; ///< its number in the index list
        SbVec3f barycentric;        ///< weights of its three corners
        bool front = true;          ///< met from the side where the corners run counter-clockwise
    };
    /// Receives every triangle met, in no order; false ends the search.
    using HitFunction = bool (*)(void* userData, const Hit& hit);

    /// Three indices a triangle, all below positions.size().
    TriangleTree(std::span<const SbVec3f> positions, std::span<const std::uint32_t> triangles);

    /// The nearest triangle between `tMin` and `tMax`, from either side; false when there is none.
    /// The direction may have any length but zero.
    bool intersect(const SbVec3f& origin, const SbVec3f& direction, float tMin, float tMax,
                   Hit& nearest) const;
    /// All of them.
    void intersectAll(const SbVec3f& origin, const SbVec3f& direction, float tMin, float tMax,
                      HitFunction function, void* userData) const;
    /// The same for anything callable as bool(const Hit &).
    template <class F>
    void intersectAll(const SbVec3f& origin, const SbVec3f& direction, float tMin, float tMax,
                      F&& function) const
    {
        const HitFunction call = [](void* data, const Hit& hit) -> bool {
            return (*static_cast<std::remove_reference_t<F>*>(data))(hit);
        };
        void* data = const_cast<void*>(static_cast<const void*>(&function));
        intersectAll(origin, direction, tMin, tMax, call, data);
    }

    std::size_t getNumTriangles() const { return m_order.size(); }
    /// Memory in use, bytes.
    std::size_t getSize() const;

private:
    struct Node {
        float min[3];
        std::uint32_t first; ///< left child (the right one follows), or first triangle of a leaf
        float max[3];
        std::uint32_t count; ///< triangles of a leaf; 0 for an inner node
    };
    struct Triangle { ///< first corner and the two edges from it
        float v0[3], e1[3], e2[3];
    };
    struct Builder;
    template <class Visit>
    void walk(const SbVec3f& origin, const SbVec3f& direction, float tMin, float& tMax,
              Visit&& visit) const;

    std::vector<Node> m_nodes;
    std::vector<Triangle> m_triangles;  ///< in the order of the leaves
    std::vector<std::uint32_t> m_order; ///< number in the index list of each of them
};

} // namespace kalmyr
