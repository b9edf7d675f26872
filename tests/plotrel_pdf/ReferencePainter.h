#pragma once

#include "VectorDrawing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <string>
#include <vector>

namespace support {

/// A picture of a page, rows from the top down.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::array<int, 3>> pixels;
    std::vector<unsigned> marks; ///< of each pixel, what is painted there; from the reference only

    const std::array<int, 3>& at(int x, int y) const { return pixels[y * width + x]; }

    /// A binary PPM; a null picture when it is none.
    static Picture read(const std::string& path)
    {
        std::ifstream in(path, std::ios::binary);
        std::string magic, word;
        std::array<int, 3> numbers{};
        in >> magic;
        for (int& number : numbers) {
            while ((in >> word) && word[0] == '#')
                std::getline(in, word);
            number = std::atoi(word.c_str());
        }
        in.get();
        Picture picture;
        if (magic != "P6" || numbers[2] != 255)
            return picture;
        picture.width = numbers[0];
        picture.height = numbers[1];
        picture.pixels.resize(static_cast<std::size_t>(picture.width) * picture.height);
        for (auto& pixel : picture.pixels)
            for (int& part : pixel)
                part = in.get();
        return picture;
    }
};

/// Paints a drawing place by place: for the middle of each pixel it asks every primitive in turn.
class ReferencePainter {
public:
    ReferencePainter(const kalmyr::detail::VectorDrawing& drawing, double pixelsPerMillimetre)
        : m_drawing(drawing), m_scale(pixelsPerMillimetre)
    {
    }

    Picture paint() const
    {
        Picture picture;
        picture.width = static_cast<int>(std::lround(m_drawing.pageWidth * m_scale));
        picture.height = static_cast<int>(std::lround(m_drawing.pageHeight * m_scale));
        for (int row = 0; row < picture.height; ++row)
            for (int column = 0; column < picture.width; ++column) {
                m_mark = 0;
                m_color = {1, 1, 1};
                sample((column + 0.5) / m_scale, m_drawing.pageHeight - (row + 0.5) / m_scale);
                std::array<int, 3> pixel;
                for (int i = 0; i < 3; ++i)
                    pixel[i] = static_cast<int>(std::lround(m_color[i] * 255));
                picture.pixels.push_back(pixel);
                picture.marks.push_back(m_mark);
            }
        return picture;
    }

private:
    using Color = std::array<double, 3>;
    using Vertex = kalmyr::detail::VectorVertex;
    using Primitive = kalmyr::detail::VectorPrimitive;

    void mix(const Color& color, double opacity, int mark) const
    {
        for (int i = 0; i < 3; ++i)
            m_color[i] += (color[i] - m_color[i]) * opacity;
        m_mark = m_mark * 31 + static_cast<unsigned>(mark);
    }

    void sample(double x, double y) const
    {
        const auto& d = m_drawing;
        if (x < d.x || y < d.y || x > d.x + d.width || y > d.y + d.height)
            return;
        m_mark = 1;
        paintBackground((d.y + d.height - y) / d.height);
        for (std::size_t i = 0; i < d.primitives.size(); ++i) {
            const Primitive& one = d.primitives[i];
            Color color;
            double opacity = one.opacity;
            m_pixel = 0;
            if (covers(one, x, y, color, opacity))
                mix(color, opacity, m_pixel > 0 ? m_pixel : int(i) + 2);
        }
    }

    void paintBackground(double share) const
    {
        const auto& stops = m_drawing.background;
        for (std::size_t i = 0; i < stops.size(); ++i) {
            const auto& from = stops[i];
            const auto& to = stops[std::min(i + 1, stops.size() - 1)];
            if (share < from.share && i > 0)
                break;
            const double span = to.share - from.share;
            const double part = span > 0 ? std::clamp((share - from.share) / span, 0.0, 1.0) : 0;
            for (int k = 0; k < 3; ++k)
                m_color[k] = from.color[k] + (to.color[k] - from.color[k]) * part;
        }
    }

    static double side(const Vertex& a, const Vertex& b, double x, double y)
    {
        return (double(b.x) - a.x) * (y - a.y) - (double(b.y) - a.y) * (x - a.x);
    }

    bool covers(const Primitive& one, double x, double y, Color& color, double& opacity) const
    {
        if (one.kind == Primitive::TEXT)
            return false;
        const Vertex* v = &m_drawing.vertices[one.first];
        color = {v->red, v->green, v->blue};
        if (one.kind == Primitive::POINT)
            return std::hypot(x - v->x, y - v->y) <= one.width / 2;
        if (one.kind == Primitive::LINE)
            return coversLine(one, x, y);
        for (const double turn : {1.0, -1.0}) {
            bool inside = true;
            for (std::uint32_t i = 0; i < one.count; ++i)
                inside = inside && turn * side(v[i], v[(i + 1) % one.count], x, y) >= 0;
            if (inside) {
                if (one.image >= 0)
                    return samplePicture(m_drawing.images[one.image], x, y, color, opacity);
                if (one.shaded)
                    shade(v, x, y, color);
                return true;
            }
        }
        return false;
    }

    static void shade(const Vertex* v, double x, double y, Color& color)
    {
        const double area = side(v[0], v[1], v[2].x, v[2].y);
        const double a = side(v[1], v[2], x, y) / area, b = side(v[2], v[0], x, y) / area;
        const double c = 1 - a - b;
        color = {a * v[0].red + b * v[1].red + c * v[2].red,
                 a * v[0].green + b * v[1].green + c * v[2].green,
                 a * v[0].blue + b * v[1].blue + c * v[2].blue};
    }

    bool coversLine(const Primitive& one, double x, double y) const
    {
        const Vertex* v = &m_drawing.vertices[one.first];
        const double half = one.width / 2;
        for (std::uint32_t i = 0; i + 1 < one.count; ++i) {
            const double dx = v[i + 1].x - v[i].x, dy = v[i + 1].y - v[i].y;
            const double length = std::hypot(dx, dy);
            const double along = ((x - v[i].x) * dx + (y - v[i].y) * dy) / length;
            if (along >= 0 && along <= length
                && std::abs(side(v[i], v[i + 1], x, y)) / length <= half)
                return true;
            if (i > 0 && std::hypot(x - v[i].x, y - v[i].y) <= half)
                return true;
        }
        return false;
    }

    bool samplePicture(const kalmyr::detail::VectorImage& image, double x, double y, Color& color,
                       double& opacity) const
    {
        const int columns = image.pixels.getWidth(), rows = image.pixels.getHeight();
        const int column = static_cast<int>(std::floor((x - image.x) / image.width * columns));
        const int row = static_cast<int>(std::floor((y - image.y) / image.height * rows));
        if (column < 0 || row < 0 || column >= columns || row >= rows)
            return false;
        const unsigned char* pixel = image.pixels.getPixel(column, row);
        m_pixel = 7919 * (1 + column + columns * row);
        color = {pixel[0] / 255.0, pixel[1] / 255.0, pixel[2] / 255.0};
        if (image.pixels.getComponents() == 4)
            opacity *= pixel[3] / 255.0;
        return true;
    }

    const kalmyr::detail::VectorDrawing& m_drawing;
    double m_scale;
    mutable Color m_color{};
    mutable unsigned m_mark = 0;
    mutable int m_pixel = 0; ///< of an image; its windows have no edges of their own
};

/// Holds a picture against the reference, three pixels and more away from the edges in it.
inline void expectSamePicture(const Picture& picture, const Picture& reference, int tolerance)
{
    ASSERT_EQ(picture.width, reference.width);
    ASSERT_EQ(picture.height, reference.height);
    constexpr int kAround = 3;
    int compared = 0, wrong = 0;
    double sum = 0;
    std::string first;
    for (int y = kAround; y < picture.height - kAround; ++y)
        for (int x = kAround; x < picture.width - kAround; ++x) {
            bool plain = true;
            for (int v = -kAround; v <= kAround && plain; ++v)
                for (int u = -kAround; u <= kAround && plain; ++u)
                    plain = reference.marks[(y + v) * reference.width + x + u]
                            == reference.marks[y * reference.width + x];
            if (!plain)
                continue;
            ++compared;
            int most = 0;
            for (int i = 0; i < 3; ++i)
                most = std::max(most, std::abs(picture.at(x, y)[i] - reference.at(x, y)[i]));
            sum += most;
            if (most > tolerance && wrong++ == 0)
                first = std::to_string(x) + " " + std::to_string(y) + ": "
                        + ::testing::PrintToString(picture.at(x, y)) + " instead of "
                        + ::testing::PrintToString(reference.at(x, y));
        }
    EXPECT_GT(compared, picture.width * picture.height / 3);
    EXPECT_EQ(wrong, 0) << "of " << compared << ", the first one at " << first;
    EXPECT_LE(sum / compared, tolerance / 4.0 + 0.5);
}

} // namespace support
