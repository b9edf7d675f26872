#pragma once

#include "PageContent.h"

#include <kalmyr/base/Export.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kalmyr::detail {

/// A stream of triangles with colours at their corners, as PDF and PostScript have it: free-form
/// triangle mesh, shading type 4, 8 bits for flags and components.
///
/// Coordinates are whole multiples of 1/256 mm whatever the mesh: an error of at most 2
/// micrometres, and corners that fall together in two meshes stay together. They take 16 bits where
/// the mesh is smaller than 256 mm, else 24. A triangle that shares a side with the one before it
/// adds one corner only.
class PLOTREL_API PageMesh {
public:
    /// Corners beyond one stream are better put into another.
    static constexpr std::size_t kMostCorners = 3 * 65536;

    /// Adds a triangle in the colours of its corners; ignores one without an area.
    void addTriangle(const VectorVertex& a, const VectorVertex& b, const VectorVertex& c);
    /// Adds a polygon as triangles in the colour of the first corner.
    void addPolygon(const VectorVertex* corners, std::size_t count);
    bool isFull() const { return m_corners.size() >= kMostCorners; }

    struct Packed {
        std::string bytes;
        int coordinateBits = 16;
        std::array<double, 4> range{};  ///< of x and y, for /Decode
        std::array<double, 4> bounds{}; ///< left, low, right, high of the triangles
    };
    /// The stream; empty bytes when no triangle had an area. The mesh is empty afterwards.
    Packed take();

private:
    struct Corner {
        std::int32_t x = 0; ///< in steps of 1/256 mm
        std::int32_t y = 0;
        PageColor color;
        std::uint8_t flag = 0;
        bool isAt(const Corner& o) const { return x == o.x && y == o.y && color == o.color; }
    };
    static Corner corner(const VectorVertex& vertex, PageColor color);
    void add(const std::array<Corner, 3>& triangle);
    void put(Corner corner, std::uint8_t flag);
    void putWaiting();
    bool continues(const std::array<Corner, 3>& triangle, int first, int second, std::uint8_t flag);

    std::vector<Corner> m_corners;
    std::array<Corner, 3> m_last;
    bool m_hasLast = false;
    bool m_waiting = false; ///< m_last begins a strip, and its corners may still be turned
};

/// Entries of a shading dictionary but those of the stream's place and coding.
std::string meshDictionary(const PageMesh::Packed& mesh);

} // namespace kalmyr::detail
