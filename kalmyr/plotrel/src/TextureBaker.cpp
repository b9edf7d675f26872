#include "TextureBaker.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kalmyr::detail {

namespace {

constexpr double kMaxPixels = 16e6;
constexpr int kMargin = 2; ///< pixels around the picture, and by which triangles grow

int wrapped(int i, int size, bool repeat)
{
    if (!repeat)
        return std::clamp(i, 0, size - 1);
    const int rest = i % size;
    return rest < 0 ? rest + size : rest;
}

std::uint8_t toByte(float value)
{
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0f, 1.0f) * 255));
}

} // namespace

const TextureBaker::Texel& TextureBaker::Level::at(int x, int y, bool repeatX, bool repeatY) const
{
    return texels[static_cast<std::size_t>(wrapped(y, height, repeatY)) * width
                  + wrapped(x, width, repeatX)];
}

/// The picture, and halves of it by the mean of four, as the renderer's mipmaps.
void TextureBaker::makeLevels()
{
    const SbImage& image = m_look.texture.image;
    const int components = image.getComponents();
    Level level{image.getWidth(), image.getHeight(), {}};
    level.texels.reserve(static_cast<std::size_t>(level.width) * level.height);
    for (int y = 0; y < level.height; ++y) {
        for (int x = 0; x < level.width; ++x) {
            const unsigned char* p = image.getPixel(x, y);
            const auto part = [p](int i) { return static_cast<float>(p[i]) / 255; };
            const bool isGrey = components < 3;
            const bool hasAlpha = components % 2 == 0;
            level.texels.push_back({part(0), part(isGrey ? 0 : 1), part(isGrey ? 0 : 2),
                                    hasAlpha ? part(components - 1) : 1.0f});
        }
    }
    m_levels.push_back(std::move(level));
    while (m_levels.back().width > 1 || m_levels.back().height > 1) {
        const Level& fine = m_levels.back();
        Level half{std::max(1, fine.width / 2), std::max(1, fine.height / 2), {}};
        for (int y = 0; y < half.height; ++y) {
            for (int x = 0; x < half.width; ++x) {
                Texel sum;
                for (int k = 0; k < 4; ++k) {
                    const Texel& t = fine.at(2 * x + k % 2, 2 * y + k / 2, false, false);
                    sum.red += t.red / 4;
                    sum.green += t.green / 4;
                    sum.blue += t.blue / 4;
                    sum.alpha += t.alpha / 4;
                }
                half.texels.push_back(sum);
            }
        }
        m_levels.push_back(std::move(half));
    }
}

TextureBaker::Texel TextureBaker::sample(const Level& level, float u, float v) const
{
    const bool repeatX = m_look.texture.wrapS == SoTextureValues::REPEAT;
    const bool repeatY = m_look.texture.wrapT == SoTextureValues::REPEAT;
    u = repeatX ? u - std::floor(u) : std::clamp(u, 0.0f, 1.0f);
    v = repeatY ? v - std::floor(v) : std::clamp(v, 0.0f, 1.0f);
    const float x = u * static_cast<float>(level.width) - 0.5f;
    const float y = v * static_cast<float>(level.height) - 0.5f;
    const int left = static_cast<int>(std::floor(x)), bottom = static_cast<int>(std::floor(y));
    const float s = x - static_cast<float>(left), t = y - static_cast<float>(bottom);
    Texel sum;
    for (int k = 0; k < 4; ++k) {
        const Texel& texel = level.at(left + k % 2, bottom + k / 2, repeatX, repeatY);
        const float weight = (k % 2 ? s : 1 - s) * (k / 2 ? t : 1 - t);
        sum.red += texel.red * weight;
        sum.green += texel.green * weight;
        sum.blue += texel.blue * weight;
        sum.alpha += texel.alpha * weight;
    }
    return sum;
}

TextureBaker::Texel TextureBaker::sample(float u, float v, float texelsPerPixel) const
{
    const float level = std::clamp(std::log2(std::max(texelsPerPixel, 1e-6f)), 0.0f,
                                   static_cast<float>(m_levels.size() - 1));
    const auto fine = static_cast<std::size_t>(level);
    const float t = level - static_cast<float>(fine);
    const Texel a = sample(m_levels[fine], u, v);
    if (t == 0 || fine + 1 >= m_levels.size())
        return a;
    const Texel b = sample(m_levels[fine + 1], u, v);
    return {std::lerp(a.red, b.red, t), std::lerp(a.green, b.green, t),
            std::lerp(a.blue, b.blue, t), std::lerp(a.alpha, b.alpha, t)};
}

TextureBaker::Texel TextureBaker::paint(const std::array<float, 4>& c, const Texel& t) const
{
    const SbColor& blend = m_look.texture.blendColor;
    switch (m_look.texture.model) {
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

/// Pixels whose middle lies in the triangle get its colour where nothing nearer was drawn; those
/// close to it where nothing was drawn at all.
void TextureBaker::draw(const Triangle& triangle, double resolution, const VectorImage& image,
                        int width, int height)
{
    struct Place {
        double x, y;
    } p[3];
    for (std::size_t i = 0; i < 3; ++i)
        p[i] = {(triangle[i].x - image.x) * resolution - 0.5,
                (triangle[i].y - image.y) * resolution - 0.5};
    const double area =
        (p[1].x - p[0].x) * (p[2].y - p[0].y) - (p[2].x - p[0].x) * (p[1].y - p[0].y);
    if (std::abs(area) < 1e-12)
        return;
    const auto [lowX, highX] = std::minmax({p[0].x, p[1].x, p[2].x});
    const auto [lowY, highY] = std::minmax({p[0].y, p[1].y, p[2].y});
    double slack[3];
    for (std::size_t i = 0; i < 3; ++i) {
        const Place& a = p[(i + 1) % 3];
        const Place& b = p[(i + 2) % 3];
        slack[i] = kMargin * std::hypot(b.x - a.x, b.y - a.y) / std::abs(area);
    }
    const SbMatrix& m = m_look.textureMatrix;
    const auto weights = [&](double x, double y, double(&w)[3]) {
        for (std::size_t i = 0; i < 3; ++i) {
            const Place& a = p[(i + 1) % 3];
            const Place& b = p[(i + 2) % 3];
            w[i] = ((b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x)) / area;
        }
    };
    const auto texCoord = [&](const double(&w)[3]) {
        double s = 0, t = 0, sum = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const double share = w[i] * triangle[i].inverseW;
            s += share * triangle[i].texCoord[0];
            t += share * triangle[i].texCoord[1];
            sum += share;
        }
        const float u = static_cast<float>(s / sum), v = static_cast<float>(t / sum);
        return SbVec2f(u * m[0][0] + v * m[1][0] + m[3][0], u * m[0][1] + v * m[1][1] + m[3][1]);
    };
    const Level& finest = m_levels.front();
    for (int y = std::max(0, static_cast<int>(lowY) - kMargin);
         y <= std::min(height - 1, static_cast<int>(highY) + kMargin + 1); ++y) {
        for (int x = std::max(0, static_cast<int>(lowX) - kMargin);
             x <= std::min(width - 1, static_cast<int>(highX) + kMargin + 1); ++x) {
            double w[3], right[3], above[3];
            weights(x, y, w);
            if (w[0] < -slack[0] || w[1] < -slack[1] || w[2] < -slack[2])
                continue;
            const bool isInside = w[0] >= -1e-9 && w[1] >= -1e-9 && w[2] >= -1e-9;
            const auto at = static_cast<std::size_t>(y) * width + x;
            const auto depth = static_cast<float>(w[0] * triangle[0].z + w[1] * triangle[1].z
                                                  + w[2] * triangle[2].z);
            constexpr float kNothing = -std::numeric_limits<float>::max();
            if (isInside ? depth < m_depths[at] : m_pixels[at].alpha > 0 || m_depths[at] > kNothing)
                continue;
            weights(x + 1, y, right);
            weights(x, y + 1, above);
            const SbVec2f here = texCoord(w);
            const SbVec2f dx = texCoord(right) - here, dy = texCoord(above) - here;
            const auto size = [&](const SbVec2f& d) {
                return std::hypot(d[0] * static_cast<float>(finest.width),
                                  d[1] * static_cast<float>(finest.height));
            };
            std::array<float, 4> color{};
            float clear = 0;
            for (std::size_t i = 0; i < 3; ++i) {
                const auto share = static_cast<float>(std::clamp(w[i], 0.0, 1.0));
                for (std::size_t c = 0; c < 4; ++c)
                    color[c] += share * triangle[i].color[c];
                clear += share * triangle[i].clear;
            }
            Texel pixel = paint(color, sample(here[0], here[1], std::max(size(dx), size(dy))));
            const SbColor& fog = m_look.environment.fogColor;
            pixel.red = std::lerp(fog[0], pixel.red, std::min(clear, 1.0f));
            pixel.green = std::lerp(fog[1], pixel.green, std::min(clear, 1.0f));
            pixel.blue = std::lerp(fog[2], pixel.blue, std::min(clear, 1.0f));
            if (isInside && pixel.alpha < 0.004f)
                continue; // the renderer discards such pixels
            m_pixels[at] = pixel;
            if (isInside)
                m_depths[at] = depth;
        }
    }
}

bool TextureBaker::bake(const DrawingArea& area, double resolution, VectorImage& image)
{
    if (m_triangles.empty() || m_look.texture.image.isNull())
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
    makeLevels();
    const auto count = static_cast<std::size_t>(width) * height;
    m_pixels.assign(count, {});
    m_depths.assign(count, -std::numeric_limits<float>::max());
    for (const Triangle& triangle : m_triangles)
        draw(triangle, resolution, image, width, height);
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
