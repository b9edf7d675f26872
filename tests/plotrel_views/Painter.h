#pragma once

#include "Picture.h"
#include "VectorDrawing.h"

#include <algorithm>
#include <cmath>

/// Paints the drawing's rectangle as it is written down, primitive by primitive, without smoothing.
class Painter {
public:
    Painter(const kalmyr::detail::VectorDrawing& drawing, int width, int height)
        : m_drawing(drawing), m_scale(width / drawing.width)
    {
        m_picture.width = width;
        m_picture.height = height;
        m_picture.bytes.assign(3 * static_cast<std::size_t>(width) * height, 255);
    }

    Picture paint()
    {
        for (int y = 0; y < m_picture.height; ++y)
            paintBackground(y);
        for (const Primitive& one : m_drawing.primitives)
            paint(one);
        return m_picture;
    }

private:
    using Primitive = kalmyr::detail::VectorPrimitive;
    using Vertex = kalmyr::detail::VectorVertex;
    struct Place {
        double x, y;
    };

    Place toPixel(const Vertex& v) const
    {
        return {(v.x - m_drawing.x) * m_scale, m_picture.height - (v.y - m_drawing.y) * m_scale};
    }

    void put(int x, int y, const float (&color)[3], float opacity)
    {
        if (x < 0 || y < 0 || x >= m_picture.width || y >= m_picture.height)
            return;
        unsigned char* pixel =
            m_picture.bytes.data() + 3 * (static_cast<std::size_t>(y) * m_picture.width + x);
        for (int c = 0; c < 3; ++c)
            pixel[c] = static_cast<unsigned char>(
                std::lround(pixel[c] + (255 * color[c] - pixel[c]) * opacity));
    }

    void paintBackground(int y)
    {
        const auto& stops = m_drawing.background;
        if (stops.empty())
            return;
        const float share = (static_cast<float>(y) + 0.5f) / static_cast<float>(m_picture.height);
        std::size_t i = 0;
        while (i + 1 < stops.size() && stops[i + 1].share < share)
            ++i;
        const auto& from = stops[i];
        const auto& to = stops[std::min(i + 1, stops.size() - 1)];
        const float span = to.share - from.share;
        const float t = span > 0 ? std::clamp((share - from.share) / span, 0.0f, 1.0f) : 0;
        const float color[] = {std::lerp(from.color[0], to.color[0], t),
                               std::lerp(from.color[1], to.color[1], t),
                               std::lerp(from.color[2], to.color[2], t)};
        for (int x = 0; x < m_picture.width; ++x)
            put(x, y, color, 1);
    }

    void paint(const Primitive& one)
    {
        const Vertex* v = m_drawing.vertices.data() + one.first;
        if (one.kind == Primitive::POLYGON) {
            for (std::uint32_t i = 2; i < one.count; ++i)
                paintTriangle(one, v[0], v[i - 1], v[i], one.shaded ? nullptr : v);
        } else if (one.kind == Primitive::LINE) {
            for (std::uint32_t i = 1; i < one.count; ++i)
                paintSegment(one, v[i - 1], v[i], v[0]);
        } else if (one.kind == Primitive::POINT) {
            paintSegment(one, v[0], v[0], v[0]);
        }
    }

    void paintTriangle(const Primitive& one, const Vertex& a, const Vertex& b, const Vertex& c,
                       const Vertex* flat)
    {
        const Place p[] = {toPixel(a), toPixel(b), toPixel(c)};
        const double area =
            (p[1].x - p[0].x) * (p[2].y - p[0].y) - (p[2].x - p[0].x) * (p[1].y - p[0].y);
        if (area == 0)
            return;
        const auto [left, right] = std::minmax({p[0].x, p[1].x, p[2].x});
        const auto [top, bottom] = std::minmax({p[0].y, p[1].y, p[2].y});
        const Vertex* corners[] = {&a, &b, &c};
        for (int y = std::max(0, int(top) - 1);
             y <= std::min(m_picture.height - 1, int(bottom) + 1); ++y) {
            for (int x = std::max(0, int(left) - 1);
                 x <= std::min(m_picture.width - 1, int(right) + 1); ++x) {
                double w[3];
                for (std::size_t i = 0; i < 3; ++i) {
                    const Place& q = p[(i + 1) % 3];
                    const Place& r = p[(i + 2) % 3];
                    w[i] = ((r.x - q.x) * (y + 0.5 - q.y) - (r.y - q.y) * (x + 0.5 - q.x)) / area;
                }
                if (w[0] < 0 || w[1] < 0 || w[2] < 0)
                    continue;
                float color[3] = {}, opacity = one.opacity;
                for (std::size_t i = 0; i < 3; ++i) {
                    const Vertex& from = flat ? *flat : *corners[i];
                    const auto share = static_cast<float>(w[i]);
                    color[0] += share * from.red;
                    color[1] += share * from.green;
                    color[2] += share * from.blue;
                }
                if (one.image >= 0)
                    lookUp(m_drawing.images[static_cast<std::size_t>(one.image)], x, y, color,
                           opacity);
                put(x, y, color, opacity);
            }
        }
    }

    void lookUp(const kalmyr::detail::VectorImage& image, int x, int y, float (&color)[3],
                float& opacity) const
    {
        const double pageX = (x + 0.5) / m_scale + m_drawing.x;
        const double pageY = (m_picture.height - y - 0.5) / m_scale + m_drawing.y;
        const int column =
            static_cast<int>((pageX - image.x) / image.width * image.pixels.getWidth());
        const int row =
            static_cast<int>((pageY - image.y) / image.height * image.pixels.getHeight());
        const unsigned char* pixel =
            image.pixels.getPixel(std::clamp(column, 0, image.pixels.getWidth() - 1),
                                  std::clamp(row, 0, image.pixels.getHeight() - 1));
        for (int c = 0; c < 3; ++c)
            color[c] = static_cast<float>(pixel[c]) / 255;
        if (image.pixels.getComponents() == 4)
            opacity *= static_cast<float>(pixel[3]) / 255;
    }

    void paintSegment(const Primitive& one, const Vertex& from, const Vertex& to,
                      const Vertex& look)
    {
        const Place p = toPixel(from), q = toPixel(to);
        const double half = std::max(0.5, one.width * m_scale / 2);
        const double length = std::hypot(q.x - p.x, q.y - p.y);
        const float color[] = {look.red, look.green, look.blue};
        for (int y = int(std::min(p.y, q.y) - half) - 1; y <= int(std::max(p.y, q.y) + half) + 1;
             ++y) {
            for (int x = int(std::min(p.x, q.x) - half) - 1;
                 x <= int(std::max(p.x, q.x) + half) + 1; ++x) {
                const double dx = x + 0.5 - p.x, dy = y + 0.5 - p.y;
                const double along =
                    length > 0 ? (dx * (q.x - p.x) + dy * (q.y - p.y)) / length : 0;
                const double across = length > 0
                                          ? std::abs(dx * (q.y - p.y) - dy * (q.x - p.x)) / length
                                          : std::hypot(dx, dy);
                if (along >= 0 && along <= length && across <= half)
                    put(x, y, color, one.opacity);
            }
        }
    }

    const kalmyr::detail::VectorDrawing& m_drawing;
    double m_scale;
    Picture m_picture;
};
