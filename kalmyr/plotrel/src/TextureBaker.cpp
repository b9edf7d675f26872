#include "TextureBaker.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace kalmyr::detail {

namespace {

constexpr double kMaxPixels = 16e6;
constexpr float kNoDepth = -std::numeric_limits<float>::max();
constexpr int kMargin = 2; ///< pixels around the picture, and by which triangles grow

std::uint8_t toByte(float value)
{
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0f, 1.0f) * 255));
}

} // namespace

Texel TextureBaker::paint(const BakeLight& light, const Texel& t) const
{
    const SbColor& blend = m_look.texture.blendColor;
    const std::array<float, 4>& c = light.color;
    switch (m_look.texture.model) {
    case SoTextureValues::SURFACE:
        return {std::min(c[0] * t.red + light.other[0], 1.0f),
                std::min(c[1] * t.green + light.other[1], 1.0f),
                std::min(c[2] * t.blue + light.other[2], 1.0f),
                m_look.texture.hasAlpha() ? t.alpha : c[3]};
    case SoTextureValues::DECAL:
        return {std::lerp(c[0], t.red, t.alpha), std::lerp(c[1], t.green, t.alpha),
                std::lerp(c[2], t.blue, t.alpha), c[3]};
    case SoTextureValues::BLEND:
        return {std::lerp(c[0], blend[0], t.red), std::lerp(c[1], blend[1], t.green),
                std::lerp(c[2], blend[2], t.blue), c[3] * t.alpha};
    case SoTextureValues::REPLACE:
        return t;
    default:
        return {c[0] * t.red, c[1] * t.green, c[2] * t.blue, c[3] * t.alpha};
    }
}

/// One triangle among the pixels of the picture.
class TextureBaker::PixelTriangle {
    struct Place {
        double x, y;
    };

public:
    using Weights = std::array<double, 3>;

    PixelTriangle(const Triangle& triangle, double resolution, const VectorImage& image,
                  const SbMatrix& textureMatrix)
        : m_triangle(triangle), m_textureMatrix(textureMatrix)
    {
        for (std::size_t i = 0; i < 3; ++i)
            m_places[i] = {(triangle[i].x - image.x) * resolution - 0.5,
                           (triangle[i].y - image.y) * resolution - 0.5};
        const auto& p = m_places;
        m_area = (p[1].x - p[0].x) * (p[2].y - p[0].y) - (p[2].x - p[0].x) * (p[1].y - p[0].y);
        for (std::size_t i = 0; i < 3; ++i) {
            const Place &a = p[(i + 1) % 3], &b = p[(i + 2) % 3];
            m_slack[i] = kMargin * std::hypot(b.x - a.x, b.y - a.y) / std::abs(m_area);
        }
    }

    bool isEmpty() const { return std::abs(m_area) < 1e-12; }
    /// First and last pixel, with the margin, in one direction of a picture of that size.
    std::pair<int, int> range(double Place::*along, int size) const
    {
        const auto [low, high] =
            std::minmax({m_places[0].*along, m_places[1].*along, m_places[2].*along});
        return {std::max(0, static_cast<int>(low) - kMargin),
                std::min(size - 1, static_cast<int>(high) + kMargin + 1)};
    }
    std::pair<int, int> columns(int width) const { return range(&Place::x, width); }
    std::pair<int, int> rows(int height) const { return range(&Place::y, height); }

    Weights weightsAt(double x, double y) const
    {
        Weights weights;
        for (std::size_t i = 0; i < 3; ++i) {
            const Place &a = m_places[(i + 1) % 3], &b = m_places[(i + 2) % 3];
            weights[i] = ((b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x)) / m_area;
        }
        return weights;
    }
    bool isNear(const Weights& w) const
    {
        return w[0] >= -m_slack[0] && w[1] >= -m_slack[1] && w[2] >= -m_slack[2];
    }
    static bool isInside(const Weights& w)
    {
        constexpr double kBorder = -1e-9;
        return w[0] >= kBorder && w[1] >= kBorder && w[2] >= kBorder;
    }
    float depth(const Weights& w) const
    {
        return static_cast<float>(w[0] * m_triangle[0].z + w[1] * m_triangle[1].z
                                  + w[2] * m_triangle[2].z);
    }
    /// With the perspective of the scene, through the texture matrix.
    SbVec2f texCoord(const Weights& w) const
    {
        double s = 0, t = 0, sum = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const double share = w[i] * m_triangle[i].inverseW;
            s += share * m_triangle[i].texCoord[0];
            t += share * m_triangle[i].texCoord[1];
            sum += share;
        }
        const float u = static_cast<float>(s / sum), v = static_cast<float>(t / sum);
        const SbMatrix& m = m_textureMatrix;
        return SbVec2f(u * m[0][0] + v * m[1][0] + m[3][0], u * m[0][1] + v * m[1][1] + m[3][1]);
    }
    BakeLight light(const Weights& w) const
    {
        BakeLight sum;
        for (std::size_t i = 0; i < 3; ++i) {
            const auto share = static_cast<float>(std::clamp(w[i], 0.0, 1.0));
            const BakeLight& light = m_triangle[i].light;
            for (std::size_t c = 0; c < 4; ++c)
                sum.color[c] += share * light.color[c];
            sum.other += light.other * share;
            sum.clear += share * light.clear;
        }
        sum.clear = std::min(sum.clear, 1.0f);
        return sum;
    }

private:
    const Triangle& m_triangle;
    const SbMatrix& m_textureMatrix;
    std::array<Place, 3> m_places{};
    std::array<double, 3> m_slack{};
    double m_area = 0;
};

Texel TextureBaker::colorAt(const PixelTriangle& triangle, int x, int y) const
{
    const auto weights = triangle.weightsAt(x, y);
    const SbVec2f here = triangle.texCoord(weights);
    const auto texelsTo = [&](double nextX, double nextY) {
        const SbVec2f d = triangle.texCoord(triangle.weightsAt(nextX, nextY)) - here;
        return std::hypot(d[0] * static_cast<float>(m_levels.getWidth()),
                          d[1] * static_cast<float>(m_levels.getHeight()));
    };
    const BakeLight light = triangle.light(weights);
    Texel pixel = paint(light, m_levels.sample(m_look.texture, here,
                                               std::max(texelsTo(x + 1, y), texelsTo(x, y + 1))));
    const SbColor& fog = m_fogColor;
    pixel.red = std::lerp(fog[0], pixel.red, light.clear);
    pixel.green = std::lerp(fog[1], pixel.green, light.clear);
    pixel.blue = std::lerp(fog[2], pixel.blue, light.clear);
    return pixel;
}

/// Pixels whose middle lies in the triangle get its colour where nothing nearer was drawn; those
/// close to it where nothing was drawn at all.
void TextureBaker::draw(const PixelTriangle& triangle, int width, int height)
{
    constexpr float kDiscarded = 0.004f; // as the renderer does
    const auto [left, right] = triangle.columns(width);
    const auto [bottom, top] = triangle.rows(height);
    for (int y = bottom; y <= top; ++y) {
        for (int x = left; x <= right; ++x) {
            const auto weights = triangle.weightsAt(x, y);
            if (!triangle.isNear(weights))
                continue;
            const auto at = static_cast<std::size_t>(y) * width + x;
            const bool isInside = PixelTriangle::isInside(weights);
            const float depth = triangle.depth(weights);
            const bool isTaken = m_pixels[at].alpha > 0 || m_depths[at] > kNoDepth;
            if (isInside ? depth < m_depths[at] : isTaken)
                continue;
            const Texel pixel = colorAt(triangle, x, y);
            if (isInside && pixel.alpha < kDiscarded)
                continue;
            m_pixels[at] = pixel;
            if (isInside)
                m_depths[at] = depth;
        }
    }
}

bool TextureBaker::bake(const DrawingArea& area, double resolution, VectorImage& image)
{
    if (m_triangles.empty())
        return false;
    double minX = area.x + area.width, minY = area.y + area.height, maxX = area.x, maxY = area.y;
    for (const Triangle& triangle : m_triangles) {
        for (const BakeCorner& corner : triangle) {
            minX = std::min(minX, corner.x);
            minY = std::min(minY, corner.y);
            maxX = std::max(maxX, corner.x);
            maxY = std::max(maxY, corner.y);
        }
    }
    if (!(maxX > minX) || !(maxY > minY))
        return false;
    resolution = std::min(resolution, std::sqrt(kMaxPixels / ((maxX - minX) * (maxY - minY))));
    const int width = static_cast<int>((maxX - minX) * resolution) + 1 + 2 * kMargin;
    const int height = static_cast<int>((maxY - minY) * resolution) + 1 + 2 * kMargin;
    image.x = static_cast<float>(minX - kMargin / resolution);
    image.y = static_cast<float>(minY - kMargin / resolution);
    image.width = static_cast<float>(width / resolution);
    image.height = static_cast<float>(height / resolution);
    const auto count = static_cast<std::size_t>(width) * height;
    m_pixels.assign(count, {});
    m_depths.assign(count, kNoDepth);
    for (const Triangle& triangle : m_triangles) {
        const PixelTriangle pixels(triangle, resolution, image, m_look.textureMatrix);
        if (!pixels.isEmpty())
            draw(pixels, width, height);
    }
    const bool hasAlpha =
        std::any_of(m_pixels.begin(), m_pixels.end(),
                    [](const Texel& t) { return t.alpha > 0 && t.alpha < 0.998f; })
        || m_look.translucentTexture;
    image.pixels.setValue(SbVec2i32(width, height), hasAlpha ? 4 : 3);
    unsigned char* out = image.pixels.edit();
    for (const Texel& t : m_pixels) {
        *out++ = toByte(t.red);
        *out++ = toByte(t.green);
        *out++ = toByte(t.blue);
        if (hasAlpha)
            *out++ = toByte(t.alpha);
    }
    return true;
}

} // namespace kalmyr::detail
