#pragma once

#include "VectorDrawing.h"

#include <array>
#include <string>
#include <vector>

namespace flat {

using kalmyr::detail::VectorDrawing;
using kalmyr::detail::VectorPrimitive;
using kalmyr::detail::VectorVertex;

/// Millimetres from the lower left corner of the page.
struct Place {
    double x = 0;
    double y = 0;
};
using Color = std::array<double, 3>; ///< 0 to 1
using Contour = std::vector<Place>;

struct Box {
    double minX = -1e9, minY = -1e9, maxX = 1e9, maxY = 1e9;
};

/// A filled or stroked shape read from a file.
struct Mark {
    std::vector<Contour> contours; ///< closed ones to be filled, or open ones to be stroked
    bool filled = true;
    bool evenOdd = true; ///< else by winding
    double width = 0;    ///< of a stroke
    Color color{};
};
struct Page {
    double width = 0;
    double height = 0;
    Box clip;
    std::vector<Mark> marks;
};

/// A page in pixels, painted by the middle of each pixel.
class Canvas {
public:
    Canvas(double pageWidth, double pageHeight, double pixelsPerMillimetre);

    void fill(const std::vector<Contour>& contours, bool evenOdd, const Color& color);
    /// Flat caps, round joins.
    void stroke(const Contour& line, double width, const Color& color, double opacity = 1);
    void disc(const Place& middle, double diameter, const Color& color, double opacity = 1);
    void setClip(const Box& clip) { m_clip = clip; }

    int width() const { return m_width; }
    int height() const { return m_height; }
    Color& at(int column, int row)
    {
        return m_pixels[static_cast<std::size_t>(row * m_width + column)];
    }
    const Color& at(int column, int row) const
    {
        return m_pixels[static_cast<std::size_t>(row * m_width + column)];
    }
    /// Colour at a place of the page.
    Color colorAt(double x, double y) const;

    /// Calls paint(place, pixel) for all pixels whose middles lie in the box.
    template <class Paint>
    void forPixels(const Box& box, const Paint& paint);

    void save(const std::string& fileName) const; ///< As a portable pixmap, to be looked at.
    /// A picture file that another program has made.
    static Canvas load(const std::string& fileName);
    /// From a column and a row (from the top) on; must lie within.
    Canvas part(int column, int row, int width, int height) const;

private:
    int m_width;
    int m_height;
    double m_scale;
    Box m_clip;
    std::vector<Color> m_pixels; // The upper row first.
};

Canvas paintPage(const Page& page, double pixelsPerMillimetre);
/// The drawing as it is meant: shading, images and transparency pixel by pixel.
Canvas paintDrawing(const VectorDrawing& drawing, double pixelsPerMillimetre);

struct Difference {
    double mean = 0;  ///< of 255
    double share = 0; ///< of pixels that are off by more than 16 of 255 in a component
    int most = 0;     ///< of 255
};
/// Pixels beside an edge in `a` or `b` (a neighbour differs by more than 40 of 255), up to `border`
/// pixels away, are left out.
Difference compare(const Canvas& a, const Canvas& b, int border = 0);

} // namespace flat
