#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/base/SoRefCounter.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class SbViewportRegion;
struct SoView;

namespace kalmyr {
class TriangleTree;
namespace detail {
class PrimitiveIndex;
}
} // namespace kalmyr

/// The form of a shape as triangles, line segments and points: the one that rendering,
/// picking, bounding boxes, counting and export share.
///
/// Immutable once built, in object space, reference counted. Vertices are unique combinations of
/// position, normal, texture coordinate and colour, indexed by the three primitive lists.
///
/// A shape with a size in pixels (a picture, markers, text that faces the screen) has an offset on
/// the screen for each vertex: the vertex stands that many pixels right of and above the place
/// where its position is seen, at the position's depth. The place is taken to the lower left corner
/// of its pixel, so that whole offsets give whole pixels, and equal positions stay together. Clip
/// planes and fog take the position. Such geometry has no normals: it is drawn unlit.
class KALMYR_API SoGeometry final : public SoRefCounter {
public:
    SoGeometry();

    std::vector<SbVec3f> positions;
    std::vector<SbVec3f> normals;         ///< per vertex, unit length; empty: unlit
    std::vector<SbVec2f> texCoords;       ///< per vertex; empty: none
    std::vector<std::uint32_t> colors;    ///< per vertex diffuse 0xRRGGBBAA; empty: the material's
    std::vector<SbVec2f> pixelOffsets;    ///< per vertex, right and up; empty: none
    std::vector<std::uint32_t> triangles; ///< three indices each, counter-clockwise outside
    std::vector<std::uint32_t> lines;     ///< two indices each
    std::vector<std::uint32_t> points;
    std::vector<std::int32_t> triangleFaces; ///< face of each triangle; empty: the triangle's index
    /// Number of each segment and point among those of the shape; empty: none is left out.
    std::vector<std::int32_t> lineNumbers, pointNumbers;
    /// Holds the values per vertex that few shapes have.
    struct Extras {
        /// Texture coordinates s, t, r, q of a unit; where they are the first unit's, `texCoords`
        /// has the same without r.
        struct TexCoordSet {
            int unit = 0;
            std::vector<SbVec4f> values;
        };
        /// An input of shader programs.
        struct Attribute {
            std::string name;
            int components = 1;
            std::vector<float> values;
        };
        std::vector<TexCoordSet> texCoordSets;
        std::vector<Attribute> attributes;
    };
    std::unique_ptr<Extras> extras; ///< null for most
    /// Laid over texCoords in place of the state's texture, and its alpha on the colour; null:
    /// none.
    SbImage coverage;
    bool solid = false;   ///< back faces may be culled
    bool twoSided = true; ///< back faces are lit with the reversed normal

    std::size_t getNumTriangles() const { return triangles.size() / 3; }
    std::size_t getNumLines() const { return lines.size() / 2; }
    bool isEmpty() const { return triangles.empty() && lines.empty() && points.empty(); }

    /// Unique in the process; buffers on the graphics card are kept under it.
    std::uint64_t getId() const { return m_id; }
    const SbBox3f& getBox() const; ///< of all positions used; computed on first use

    bool isSizedInPixels() const { return !pixelOffsets.empty(); }
    /// How many pixels anything is drawn away from its position at most; 0 without offsets.
    float getPixelReach() const;
    /// The same without offsets: each vertex stands in object space where a view shows it. Without
    /// vertices that the view cannot show: their positions are not in front of the eye. Null when
    /// there is no view, or no way back from it (a flattening matrix).
    SoRef<SoGeometry> inView(const SbMatrix& toWorld, const SoView& view,
                             const SbViewportRegion& region) const;

    /// Search tree over the triangles, built on first use.
    const kalmyr::TriangleTree& getTriangleTree() const;

    /// Returns the index of faces, segments and points in the shape; null before the first use.
    const kalmyr::detail::PrimitiveIndex* getPrimitiveIndex() const;
    /// Keeps it and returns it; of two threads the first one's counts.
    const kalmyr::detail::PrimitiveIndex*
    setPrimitiveIndex(std::unique_ptr<kalmyr::detail::PrimitiveIndex> index) const;

    /// Called when a geometry that others share by its parameters dies; null for the others.
    using DeathFunction = void (*)(const SoGeometry* geometry);
    void setDeathFunction(DeathFunction function) { m_onDeath = function; }

    /// Told the id of every geometry that dies, for those who keep things by id; null for nobody.
    using DeathObserver = void (*)(std::uint64_t id);
    static void setDeathObserver(DeathObserver observer);

private:
    ~SoGeometry() override;

    std::uint64_t m_id;
    mutable bool m_boxKnown = false;
    mutable SbBox3f m_box;
    mutable float m_pixelReach = -1; ///< below 0: not known yet
    mutable std::unique_ptr<kalmyr::TriangleTree> m_tree;
    mutable std::unique_ptr<kalmyr::detail::PrimitiveIndex> m_primitives;
    DeathFunction m_onDeath = nullptr;
};
