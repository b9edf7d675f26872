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

using Channels = std::array<float, 4>;

Channels channelsOf(const Texel& texel)
{
    return {texel.red, texel.green, texel.blue, texel.alpha};
}

Channels byModel(const SoTextureValues& values, const Channels& c, const Channels& t)
{
    Channels out;
    for (std::size_t i = 0; i < 4; ++i) {
        switch (values.model) {
        case SoTextureValues::REPLACE:
            out[i] = t[i];
            break;
        case SoTextureValues::DECAL:
            out[i] = i < 3 ? std::lerp(c[i], t[i], t[3]) : c[i];
            break;
        case SoTextureValues::BLEND:
            out[i] =
                i < 3 ? std::lerp(c[i], values.blendColor[static_cast<int>(i)], t[i]) : c[i] * t[i];
            break;
        default:
            out[i] = c[i] * t[i];
        }
    }
    return out;
}

/// Shares that modes blend by.
struct Shares {
    float diffuse, factor, current;
};

/// As the renderer's shaders: `t` the texture, `o` the other argument, `c` the current colour.
Channels byMode(SoTextureStage::Mode mode, const Channels& t, const Channels& o, const Channels& c,
                const Shares& shares)
{
    using Stage = SoTextureStage;
    const auto each = [&](auto f) {
        Channels out;
        for (std::size_t i = 0; i < 4; ++i)
            out[i] = f(t[i], o[i]);
        return out;
    };
    const auto colors = [&](auto f) {
        Channels out = each(f);
        out[3] = t[3] * o[3];
        return out;
    };
    const auto blend = [&](float share) {
        return each([share](float a, float b) { return std::lerp(b, a, share); });
    };
    switch (mode) {
    case Stage::REPLACE:
    case Stage::SELECTARG1:
        return t;
    case Stage::SELECTARG2:
        return o;
    case Stage::OFF:
        return c;
    case Stage::MODULATE2X:
        return each([](float a, float b) { return a * b * 2; });
    case Stage::MODULATE4X:
        return each([](float a, float b) { return a * b * 4; });
    case Stage::ADD:
        return each([](float a, float b) { return a + b; });
    case Stage::ADDSIGNED:
        return each([](float a, float b) { return a + b - 0.5f; });
    case Stage::ADDSIGNED2X:
        return each([](float a, float b) { return (a + b - 0.5f) * 2; });
    case Stage::SUBTRACT:
        return each([](float a, float b) { return a - b; });
    case Stage::ADDSMOOTH:
        return each([](float a, float b) { return a + (1 - a) * b; });
    case Stage::BLENDDIFFUSEALPHA:
        return blend(shares.diffuse);
    case Stage::BLENDTEXTUREALPHA:
        return blend(t[3]);
    case Stage::BLENDFACTORALPHA:
        return blend(shares.factor);
    case Stage::BLENDCURRENTALPHA:
        return blend(shares.current);
    case Stage::MODULATEALPHA_ADDCOLOR:
        return colors([&](float a, float b) { return a + t[3] * b; });
    case Stage::MODULATEINVALPHA_ADDCOLOR:
        return colors([&](float a, float b) { return a + (1 - t[3]) * b; });
    case Stage::MODULATEINVCOLOR_ADDALPHA:
        return colors([&](float a, float b) { return (1 - a) * b + t[3]; });
    case Stage::DOTPRODUCT3: {
        float sum = 0;
        for (std::size_t i = 0; i < 3; ++i)
            sum += 4 * (t[i] - 0.5f) * (o[i] - 0.5f);
        return {sum, sum, sum, sum};
    }
    default:
        return each([](float a, float b) { return a * b; });
    }
}

std::uint8_t toByte(float value)
{
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0f, 1.0f) * 255));
}

} // namespace

TextureBaker::TextureBaker(const SoRenderAppearance& look, const Levels& levels,
                           const SbColor& fogColor)
    : m_look(look), m_levels(levels), m_fogColor(fogColor)
{
}

/// Returns the current colour as a unit changes it, by its mode or else by its texture's model.
Texel TextureBaker::mix(std::size_t unit, const Texel& current, const Texel& texel,
                        const BakeLight& light) const
{
    const SoTextureStage& stage = m_look.extras->stages[unit];
    const SoTextureValues& values = unit == 0 ? m_look.texture : stage.texture;
    const Channels t = channelsOf(texel), c = channelsOf(current);
    Channels mixed;
    if (stage.mode == SoTextureStage::AS_MODEL) {
        mixed = byModel(values, c, t);
    } else {
        const SbColor& shine = m_look.specular;
        const Channels plain{m_look.diffuse[0], m_look.diffuse[1], m_look.diffuse[2],
                             light.color[3]};
        Channels other = c;
        if (stage.source == SoTextureStage::DIFFUSE)
            other = plain;
        else if (stage.source == SoTextureStage::SPECULAR)
            other = {shine[0], shine[1], shine[2], plain[3]};
        else if (stage.source == SoTextureStage::FACTOR)
            std::copy_n(stage.factor.getValue(), 4, other.begin());
        const Shares shares{plain[3], stage.factor[3], c[3]};
        mixed = byMode(stage.mode, t, other, c, shares);
        if (stage.alphaMode != SoTextureStage::AS_MODEL && stage.alphaMode != stage.mode)
            mixed[3] = byMode(stage.alphaMode, t, other, c, shares)[3];
        for (float& channel : mixed)
            channel = std::clamp(channel, 0.0f, 1.0f);
    }
    if (stage.function == SoTextureStage::COMPLEMENT)
        std::transform(mixed.begin(), mixed.end(), mixed.begin(), [](float v) { return 1 - v; });
    else if (stage.function == SoTextureStage::ALPHAREPLICATE)
        mixed.fill(mixed[3]);
    return {mixed[0], mixed[1], mixed[2], mixed[3]};
}

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

    PixelTriangle(const Triangle& triangle, double resolution, const VectorImage& image)
        : m_triangle(triangle)
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
    /// With the perspective of the scene, through a texture matrix.
    SbVec2f texCoord(const Weights& w, const SbMatrix& m) const
    {
        double s = 0, t = 0, sum = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const double share = w[i] * m_triangle[i].inverseW;
            s += share * m_triangle[i].texCoord[0];
            t += share * m_triangle[i].texCoord[1];
            sum += share;
        }
        const float u = static_cast<float>(s / sum), v = static_cast<float>(t / sum);
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
    std::array<Place, 3> m_places{};
    std::array<double, 3> m_slack{};
    double m_area = 0;
};

Texel TextureBaker::sample(const PixelTriangle& triangle, std::size_t unit, int x, int y) const
{
    const SbMatrix& matrix = unit == 0 ? m_look.textureMatrix : m_look.extras->stages[unit].matrix;
    const SoTextureValues& values =
        unit == 0 ? m_look.texture : m_look.extras->stages[unit].texture;
    const TextureLevels& levels = *m_levels[unit];
    const SbVec2f here = triangle.texCoord(triangle.weightsAt(x, y), matrix);
    const auto texelsTo = [&](double nextX, double nextY) {
        const SbVec2f d = triangle.texCoord(triangle.weightsAt(nextX, nextY), matrix) - here;
        return std::hypot(d[0] * static_cast<float>(levels.getWidth()),
                          d[1] * static_cast<float>(levels.getHeight()));
    };
    return levels.sample(values, here, std::max(texelsTo(x + 1, y), texelsTo(x, y + 1)));
}

Texel TextureBaker::colorAt(const PixelTriangle& triangle, int x, int y) const
{
    const BakeLight light = triangle.light(triangle.weightsAt(x, y));
    Texel pixel{light.color[0], light.color[1], light.color[2], light.color[3]};
    for (std::size_t unit = 0; unit < m_levels.size(); ++unit) {
        if (!m_levels[unit])
            continue;
        const bool isStage = m_look.extras && unit < m_look.extras->stages.size()
                             && (unit > 0 || !m_look.extras->stages[0].isPlain());
        const Texel texel = sample(triangle, unit, x, y);
        pixel = isStage ? mix(unit, pixel, texel, light) : paint(light, texel);
    }
    const SbColor& fog = m_fogColor;
    pixel.red = std::lerp(fog[0], pixel.red, light.clear);
    pixel.green = std::lerp(fog[1], pixel.green, light.clear);
    pixel.blue = std::lerp(fog[2], pixel.blue, light.clear);
    return pixel;
}

bool TextureBaker::isLeftOut(const Texel& pixel) const
{
    constexpr float kDiscarded = 0.004f; // as the renderer does
    if (pixel.alpha < kDiscarded || !m_look.extras)
        return pixel.alpha < kDiscarded;
    const float a = pixel.alpha, b = m_look.extras->alphaValue;
    const bool passes[] = {false, true, a<b, a <= b, a == b, a >= b, a> b, a != b};
    return !passes[m_look.extras->alphaFunction];
}

/// Pixels whose middle lies in the triangle get its colour where nothing nearer was drawn; those
/// close to it where nothing was drawn at all.
void TextureBaker::draw(const PixelTriangle& triangle, int width, int height)
{
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
            if (isInside && isLeftOut(pixel))
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
        const PixelTriangle pixels(triangle, resolution, image);
        if (!pixels.isEmpty())
            draw(pixels, width, height);
    }
    const bool hasAlpha =
        std::any_of(m_pixels.begin(), m_pixels.end(),
                    [](const Texel& t) { return t.alpha > 0 && t.alpha < 0.998f; })
        || m_look.translucentTexture
        || (m_look.extras && m_look.extras->alphaFunction != SoLookExtras::ALWAYS);
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
