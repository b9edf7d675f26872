#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbImage.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kalmyr::detail {

/// A place on the page in millimetres from its lower left corner, with a colour from 0 to 1.
struct VectorVertex {
    float x = 0;
    float y = 0;
    float red = 0;
    float green = 0;
    float blue = 0;
};

/// One thing on the page. What comes later in a drawing lies above what comes before.
struct VectorPrimitive {
    enum Kind : std::uint8_t {
        POLYGON, ///< convex, three corners or more; shaded ones have three
        LINE,    ///< an open polyline of two places or more, in the colour of the first
        POINT,   ///< a disc
        TEXT     ///< invisible text above outlines, to be found and copied
    };
    std::uint32_t first = 0; ///< in VectorDrawing::vertices; of a TEXT: in texts
    std::uint32_t count = 0; ///< of vertices
    float opacity = 1;
    /// Polygons of one group that follow each other are parts of one surface and do not overlap; 0:
    /// nothing is known.
    std::uint32_t group = 0;
    float width = 0;         ///< of a line, or diameter of a point; millimetres
    std::int32_t image = -1; ///< in VectorDrawing::images: it is seen through the polygon
    Kind kind = POLYGON;
    bool shaded = false; ///< the corners differ in colour; else all have the first one's
};

/// A picture that lies somewhere on the page; polygons that refer to it are its windows.
struct VectorImage {
    SbImage pixels; ///< 3 or 4 components, rows from the bottom up
    float x = 0;    ///< lower left corner on the page
    float y = 0;
    float width = 0;
    float height = 0;
};

/// A line of text: its baseline begins at (x, y), and along (dx, dy) it is `length` wide.
struct VectorText {
    std::string text; ///< UTF-8
    float x = 0;
    float y = 0;
    float dx = 1;
    float dy = 0;
    float size = 1; ///< of the font, millimetres
    float length = 0;
};

/// A colour at a share of the drawing's height from its top.
struct VectorBackgroundStop {
    SbColor color;
    float share = 0;
};

/// A page with what is drawn on it: what the writers of the formats get.
///
/// All coordinates are finite. Nothing reaches out of the drawing's rectangle but the width of
/// lines and points, which writers clip to it where they can.
struct VectorDrawing {
    float pageWidth = 0; ///< millimetres
    float pageHeight = 0;
    float x = 0; ///< the rectangle of the drawing on the page
    float y = 0;
    float width = 0;
    float height = 0;
    std::vector<VectorBackgroundStop> background; ///< from top to bottom; empty: bare paper
    std::vector<VectorVertex> vertices;
    std::vector<VectorPrimitive> primitives;
    std::vector<VectorImage> images;
    std::vector<VectorText> texts;
    std::string title; ///< UTF-8

    /// Appends a primitive; its vertices follow by addVertex().
    VectorPrimitive& add(VectorPrimitive::Kind kind)
    {
        VectorPrimitive& one = primitives.emplace_back();
        one.kind = kind;
        one.first = static_cast<std::uint32_t>(vertices.size());
        return one;
    }
    /// To the latest primitive.
    void addVertex(const VectorVertex& vertex)
    {
        vertices.push_back(vertex);
        ++primitives.back().count;
    }
};

} // namespace kalmyr::detail
