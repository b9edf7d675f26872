#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/elements/SoMaterialElement.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

class SoGeometry;
class SoNode;

namespace kalmyr {

/// Values of one attribute (normals, colours, texture coordinates) and how they go to a shape's
/// parts, faces or vertices.
///
/// Bindings are those of SoBinding: OVERALL the first value; PER_PART one value a strip, line
/// segment or face; PER_FACE one value a face or line; PER_VERTEX one value a corner in order. The
/// indexed forms look the number up in `indices`, PER_VERTEX_INDEXED at the corner's place in the
/// coordinate indices, and take the coordinate index itself, less `firstCoord`, when there are no
/// indices.
template <class T>
struct Attribute {
    std::span<const T> values;
    std::size_t count = 0; ///< of values, where they are not at hand but only their numbers matter
    std::span<const std::int32_t> indices;
    int binding = SoBinding::OVERALL;
    std::int32_t firstCoord = 0;
    const char* indexField = "coordIndex"; ///< name for messages
    bool isGiven() const { return !values.empty(); }
    std::size_t getCount() const { return values.empty() ? count : values.size(); }
};

/// Values beside those: of a texture unit, at the indices of `texCoords`, or of a shader program's
/// input, at the indices of positions.
struct MoreValues {
    int unit = -1;    ///< -1: an input of shader programs
    std::string name; ///< of the input
    int components = 2;
    std::span<const float> values;
};

/// The input from which all kinds of vertex shapes are built. The arrays are the caller's.
struct VertexInput {
    const SoNode* node = nullptr; ///< named in warnings
    std::span<const SbVec3f> positions;
    /// Faces, strips or lines as indices of positions, each ended by -1 (the last one may lack it).
    std::span<const std::int32_t> coordIndex;
    const char* coordField = "coordIndex"; ///< name for messages
    Attribute<SbVec3f> normals;            ///< of any length
    Attribute<std::uint32_t> colors;       ///< 0xRRGGBBAA; not given: the geometry has none
    Attribute<SbVec2f> texCoords;
    std::vector<MoreValues> more;
    std::vector<SbVec2f> keptTexCoords; ///< for `texCoords` that stand nowhere else
};

struct FaceInput : VertexInput {
    bool strips = false;     ///< coordIndex holds triangle strips
    bool quadStrips = false; ///< coordIndex holds strips of quadrilaterals: two corners a step
    /// Every so many indices are a face of their own (3 or 4), and PER_PART counts faces; a -1 may
    /// stand between two faces. Corners too few for a face are left out. 0: -1 ends each face.
    std::uint32_t faceSize = 0;
    bool convex = true;     ///< every face is convex; otherwise it is tested and tessellated
    bool clockwise = false; ///< corners run clockwise seen from outside
    bool solid = false;     ///< closed: back faces may be left out
    float creaseAngle =
        0; ///< radians; edges at smaller angles are smooth, when normals are not given
    bool makeNormals = true;    ///< generate normals when none are given
    bool makeTexCoords = false; ///< generate texture coordinates when none are given
};

/// Turns polygons into indexed triangles with normals, colours and texture coordinates.
///
/// Time and memory grow linearly with the input (concave faces aside). A face with an index out of
/// range is left out, and one debug warning names node, field, index and valid range. Faces of
/// fewer than three corners are left out silently.
class KALMYR_API FaceBuilder {
public:
    explicit FaceBuilder(const FaceInput& input) : m_input(input) {}
    /// Appends nothing to `geometry` but replaces its triangles and vertices.
    void build(SoGeometry& geometry) const;

private:
    const FaceInput& m_input; // Not owned.
};

/// Turns polylines into indexed segments. PER_FACE bindings count lines, PER_PART segments.
/// Texture coordinates are taken along; normals when given.
class KALMYR_API LineBuilder {
public:
    explicit LineBuilder(const VertexInput& input) : m_input(input) {}
    void build(SoGeometry& geometry) const;

private:
    const VertexInput& m_input; // Not owned.
};

/// Turns single positions into points; without coordIndex all positions in order.
class KALMYR_API PointBuilder {
public:
    explicit PointBuilder(const VertexInput& input) : m_input(input) {}
    void build(SoGeometry& geometry) const;

private:
    const VertexInput& m_input; // Not owned.
};

} // namespace kalmyr
