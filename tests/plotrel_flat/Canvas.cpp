#include "Canvas.h"

#include <kalmyr/core/SoImageFile.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <set>
#include <stdexcept>

namespace flat {

namespace {

Color colorOf(const VectorVertex& place)
{
    return {place.red, place.green, place.blue};
}

void blend(Color& below, const Color& above, double opacity)
{
    for (std::size_t i = 0; i < 3; ++i)
        below[i] += (above[i] - below[i]) * opacity;
}

double cross(const Place& a, const Place& b, const Place& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

Place placeOf(const VectorVertex& vertex)
{
    return {vertex.x, vertex.y};
}

Box boxAround(const std::vector<Contour>& contours, double margin = 0)
{
    Box box{1e9, 1e9, -1e9, -1e9};
    for (const Contour& contour : contours)
        for (const Place& place : contour) {
            box.minX = std::min(box.minX, place.x - margin);
            box.minY = std::min(box.minY, place.y - margin);
            box.maxX = std::max(box.maxX, place.x + margin);
            box.maxY = std::max(box.maxY, place.y + margin);
        }
    return box;
}

void paintTriangle(Canvas& canvas, const std::array<VectorVertex, 3>& corners, double opacity)
{
    const std::array<Place, 3> places{placeOf(corners[0]), placeOf(corners[1]),
                                      placeOf(corners[2])};
    const double area = cross(places[0], places[1], places[2]);
    if (area == 0)
        return;
    canvas.forPixels(boxAround({Contour(places.begin(), places.end())}),
                     [&](const Place& place, Color& pixel) {
                         const double b = cross(places[0], place, places[2]) / area;
                         const double c = cross(places[0], places[1], place) / area;
                         // Pixels on a common edge belong to one of its sides only.
                         const auto isIn = [](double share) { return share >= 0; };
                         if (!isIn(b) || !isIn(c) || 1 - b - c <= 0)
                             return;
                         Color color{};
                         blend(color, colorOf(corners[0]), 1);
                         for (std::size_t i = 0; i < 3; ++i)
                             color[i] += (colorOf(corners[1])[i] - colorOf(corners[0])[i]) * b
                                         + (colorOf(corners[2])[i] - colorOf(corners[0])[i]) * c;
                         blend(pixel, color, opacity);
                     });
}

void paintWindow(Canvas& canvas, const VectorDrawing& drawing, const VectorPrimitive& one,
                 const Contour& outline)
{
    const auto& image = drawing.images[static_cast<std::size_t>(one.image)];
    const double turn = cross(outline[0], outline[1], outline[2]) < 0 ? -1 : 1;
    canvas.forPixels(boxAround({outline}), [&](const Place& place, Color& pixel) {
        for (std::size_t i = 0; i < outline.size(); ++i)
            if (turn * cross(outline[i], outline[(i + 1) % outline.size()], place) < 0)
                return;
        const int width = image.pixels.getWidth();
        const int height = image.pixels.getHeight();
        const auto column = static_cast<int>((place.x - image.x) / image.width * width);
        const auto row = static_cast<int>((place.y - image.y) / image.height * height);
        const unsigned char* bytes =
            image.pixels.getPixel(std::clamp(column, 0, width - 1), std::clamp(row, 0, height - 1));
        const double alpha = image.pixels.getComponents() == 4 ? bytes[3] / 255.0 : 1;
        blend(pixel, {bytes[0] / 255.0, bytes[1] / 255.0, bytes[2] / 255.0}, one.opacity * alpha);
    });
}

void paintPolygon(Canvas& canvas, const VectorDrawing& drawing, const VectorPrimitive& one)
{
    const VectorVertex* corners = drawing.vertices.data() + one.first;
    Contour outline;
    for (std::uint32_t i = 0; i < one.count; ++i)
        outline.push_back(placeOf(corners[i]));
    if (one.image >= 0) {
        paintWindow(canvas, drawing, one, outline);
        return;
    }
    for (std::uint32_t i = 2; i < one.count; ++i) {
        std::array<VectorVertex, 3> triangle{corners[0], corners[i - 1], corners[i]};
        if (!one.shaded)
            for (VectorVertex& corner : triangle) {
                corner.red = corners[0].red;
                corner.green = corners[0].green;
                corner.blue = corners[0].blue;
            }
        paintTriangle(canvas, triangle, one.opacity);
    }
}

void paintBackground(Canvas& canvas, const VectorDrawing& drawing)
{
    const auto& stops = drawing.background;
    if (stops.empty())
        return;
    const Box box{drawing.x, drawing.y, drawing.x + drawing.width, drawing.y + drawing.height};
    canvas.forPixels(box, [&](const Place& place, Color& pixel) {
        const double share = (box.maxY - place.y) / drawing.height;
        std::size_t next = 0;
        while (next < stops.size() && stops[next].share <= share)
            ++next;
        const auto& after = stops[std::min(next, stops.size() - 1)];
        const auto& before = stops[next > 0 ? next - 1 : 0];
        const double part =
            after.share > before.share ? (share - before.share) / (after.share - before.share) : 0;
        for (int i = 0; i < 3; ++i)
            pixel[static_cast<std::size_t>(i)] =
                before.color[i] + (after.color[i] - before.color[i]) * std::clamp(part, 0.0, 1.0);
    });
}

} // namespace

Canvas::Canvas(double pageWidth, double pageHeight, double pixelsPerMillimetre)
    : m_width(static_cast<int>(std::lround(pageWidth * pixelsPerMillimetre))),
      m_height(static_cast<int>(std::lround(pageHeight * pixelsPerMillimetre))),
      m_scale(pixelsPerMillimetre),
      m_pixels(static_cast<std::size_t>(m_width * m_height), Color{1, 1, 1})
{
}

template <class Paint>
void Canvas::forPixels(const Box& box, const Paint& paint)
{
    const auto index = [&](double millimetres, int limit) {
        return std::clamp(static_cast<int>(std::floor(millimetres * m_scale)), 0, limit);
    };
    const int left = index(std::max(box.minX, m_clip.minX), m_width);
    const int right = index(std::min(box.maxX, m_clip.maxX), m_width - 1);
    const int low = index(std::max(box.minY, m_clip.minY), m_height);
    const int high = index(std::min(box.maxY, m_clip.maxY), m_height - 1);
    for (int y = low; y <= high; ++y)
        for (int x = left; x <= right; ++x) {
            const Place place{(x + 0.5) / m_scale, (y + 0.5) / m_scale};
            if (place.x >= std::max(box.minX, m_clip.minX)
                && place.x <= std::min(box.maxX, m_clip.maxX)
                && place.y >= std::max(box.minY, m_clip.minY)
                && place.y <= std::min(box.maxY, m_clip.maxY))
                paint(place, at(x, m_height - 1 - y));
        }
}

void Canvas::fill(const std::vector<Contour>& contours, bool evenOdd, const Color& color)
{
    struct Crossing {
        double x;
        int turn;
    };
    const Box box = boxAround(contours);
    const int low = std::max(0, static_cast<int>(std::floor(box.minY * m_scale)));
    const int high = std::min(m_height - 1, static_cast<int>(std::floor(box.maxY * m_scale)));
    std::vector<Crossing> crossings;
    for (int row = low; row <= high; ++row) {
        const double y = (row + 0.5) / m_scale;
        crossings.clear();
        for (const Contour& contour : contours)
            for (std::size_t i = 0; i < contour.size(); ++i) {
                const Place& a = contour[i];
                const Place& b = contour[(i + 1) % contour.size()];
                if ((a.y <= y) != (b.y <= y))
                    crossings.push_back(
                        {a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y), a.y < b.y ? 1 : -1});
            }
        std::sort(crossings.begin(), crossings.end(),
                  [](const Crossing& a, const Crossing& b) { return a.x < b.x; });
        int winding = 0;
        for (std::size_t i = 0; i + 1 < crossings.size(); ++i) {
            winding += evenOdd ? 1 : crossings[i].turn;
            if (evenOdd ? winding % 2 != 0 : winding != 0)
                forPixels({crossings[i].x, (row + 0.25) / m_scale, crossings[i + 1].x,
                           (row + 0.75) / m_scale},
                          [&](const Place&, Color& pixel) { pixel = color; });
        }
    }
}

void Canvas::stroke(const Contour& line, double width, const Color& color, double opacity)
{
    // Each pixel once, however many segments reach it.
    std::set<const Color*> reached;
    const auto paint = [&](Color& pixel) {
        if (reached.insert(&pixel).second)
            blend(pixel, color, opacity);
    };
    for (std::size_t i = 0; i + 1 < line.size(); ++i) {
        const double dx = line[i + 1].x - line[i].x;
        const double dy = line[i + 1].y - line[i].y;
        forPixels(boxAround({{line[i], line[i + 1]}}, width / 2), [&](const Place& at,
                                                                      Color& pixel) {
            const double share = ((at.x - line[i].x) * dx + (at.y - line[i].y) * dy)
                                 / std::max(dx * dx + dy * dy, 1e-12);
            const bool joint = i > 0 && std::hypot(at.x - line[i].x, at.y - line[i].y) <= width / 2;
            const bool beside =
                share >= 0 && share <= 1
                && std::hypot(at.x - line[i].x - share * dx, at.y - line[i].y - share * dy)
                       <= width / 2;
            if (beside || joint)
                paint(pixel);
        });
    }
}

void Canvas::disc(const Place& middle, double diameter, const Color& color, double opacity)
{
    forPixels(boxAround({{middle}}, diameter), [&](const Place& place, Color& pixel) {
        if (std::hypot(place.x - middle.x, place.y - middle.y) <= diameter / 2)
            blend(pixel, color, opacity);
    });
}

Color Canvas::colorAt(double x, double y) const
{
    return at(std::clamp(static_cast<int>(x * m_scale), 0, m_width - 1),
              m_height - 1 - std::clamp(static_cast<int>(y * m_scale), 0, m_height - 1));
}

void Canvas::save(const std::string& fileName) const
{
    std::ofstream out(fileName, std::ios::binary);
    out << "P6\n" << m_width << ' ' << m_height << "\n255\n";
    for (const Color& pixel : m_pixels)
        for (const double value : pixel)
            out.put(static_cast<char>(std::lround(std::clamp(value, 0.0, 1.0) * 255)));
}

Canvas Canvas::load(const std::string& fileName)
{
    SbImage image;
    SbString reason;
    if (!SoImageFile::read(fileName.c_str(), image, &reason))
        throw std::runtime_error(fileName + ": " + reason.getString());
    Canvas canvas(image.getWidth(), image.getHeight(), 1);
    const int components = image.getComponents();
    for (int y = 0; y < canvas.m_height; ++y)
        for (int x = 0; x < canvas.m_width; ++x)
            for (int i = 0; i < 3; ++i) {
                const unsigned char* pixel = image.getPixel(x, canvas.m_height - 1 - y);
                canvas.at(x, y)[static_cast<std::size_t>(i)] =
                    pixel[components < 3 ? 0 : i] / 255.0;
            }
    return canvas;
}

Canvas Canvas::part(int column, int row, int width, int height) const
{
    Canvas result(width, height, 1);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            result.at(x, y) = at(column + x, row + y);
    return result;
}

Canvas paintPage(const Page& page, double pixelsPerMillimetre)
{
    Canvas canvas(page.width, page.height, pixelsPerMillimetre);
    canvas.setClip(page.clip);
    for (const Mark& mark : page.marks) {
        if (mark.filled)
            canvas.fill(mark.contours, mark.evenOdd, mark.color);
        else
            for (const Contour& line : mark.contours)
                canvas.stroke(line, mark.width, mark.color);
    }
    return canvas;
}

Canvas paintDrawing(const VectorDrawing& drawing, double pixelsPerMillimetre)
{
    Canvas canvas(drawing.pageWidth, drawing.pageHeight, pixelsPerMillimetre);
    canvas.setClip({drawing.x, drawing.y, drawing.x + drawing.width, drawing.y + drawing.height});
    paintBackground(canvas, drawing);
    for (const VectorPrimitive& one : drawing.primitives) {
        if (one.kind == VectorPrimitive::TEXT)
            continue;
        const VectorVertex* places = drawing.vertices.data() + one.first;
        Contour line;
        for (std::uint32_t i = 0; i < one.count; ++i)
            line.push_back(placeOf(places[i]));
        if (one.kind == VectorPrimitive::POLYGON)
            paintPolygon(canvas, drawing, one);
        else if (one.kind == VectorPrimitive::LINE)
            canvas.stroke(line, one.width, colorOf(places[0]), one.opacity);
        else
            canvas.disc(line[0], one.width, colorOf(places[0]), one.opacity);
    }
    return canvas;
}

Difference compare(const Canvas& a, const Canvas& b, int border)
{
    if (a.width() != b.width() || a.height() != b.height())
        throw std::runtime_error("pictures of different sizes");
    const auto off = [](const Color& one, const Color& other) {
        double most = 0;
        for (std::size_t i = 0; i < 3; ++i)
            most = std::max(most, std::abs(one[i] - other[i]) * 255);
        return most;
    };
    const auto isBesideEdge = [&](int x, int y) {
        for (int dy = -border; dy <= border; ++dy)
            for (int dx = -border; dx <= border; ++dx) {
                const int column = std::clamp(x + dx, 0, a.width() - 1);
                const int row = std::clamp(y + dy, 0, a.height() - 1);
                if (off(a.at(x, y), a.at(column, row)) > 40
                    || off(b.at(x, y), b.at(column, row)) > 40)
                    return true;
            }
        return false;
    };
    Difference result;
    double sum = 0;
    double count = 0;
    double bad = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            if (border > 0 && isBesideEdge(x, y))
                continue;
            const double by = off(a.at(x, y), b.at(x, y));
            ++count;
            bad += by > 16 ? 1 : 0;
            result.most = std::max(result.most, static_cast<int>(std::lround(by)));
            for (std::size_t i = 0; i < 3; ++i)
                sum += std::abs(a.at(x, y)[i] - b.at(x, y)[i]) * 255 / 3;
        }
    result.mean = sum / std::max(count, 1.0);
    result.share = bad / std::max(count, 1.0);
    return result;
}

} // namespace flat
