#include "TextureLevels.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

int wrapped(int i, int size, bool repeat)
{
    if (!repeat)
        return std::clamp(i, 0, size - 1);
    const int rest = i % size;
    return rest < 0 ? rest + size : rest;
}

} // namespace

const Texel& TextureLevels::Level::at(int x, int y, bool repeatX, bool repeatY) const
{
    return texels[static_cast<std::size_t>(wrapped(y, height, repeatY)) * width
                  + wrapped(x, width, repeatX)];
}

/// Means of four.
TextureLevels::Level TextureLevels::Level::half() const
{
    Level half{std::max(1, width / 2), std::max(1, height / 2), {}};
    for (int y = 0; y < half.height; ++y) {
        for (int x = 0; x < half.width; ++x) {
            Texel sum;
            for (int k = 0; k < 4; ++k) {
                const Texel& t = at(2 * x + k % 2, 2 * y + k / 2, false, false);
                sum.red += t.red / 4;
                sum.green += t.green / 4;
                sum.blue += t.blue / 4;
                sum.alpha += t.alpha / 4;
            }
            half.texels.push_back(sum);
        }
    }
    return half;
}

TextureLevels::TextureLevels(const SbImage& image)
{
    const int components = image.getComponents();
    const bool isGrey = components < 3;
    const bool hasAlpha = components % 2 == 0;
    Level level{image.getWidth(), image.getHeight(), {}};
    level.texels.reserve(static_cast<std::size_t>(level.width) * level.height);
    for (int y = 0; y < level.height; ++y) {
        for (int x = 0; x < level.width; ++x) {
            const unsigned char* p = image.getPixel(x, y);
            const auto part = [p](int i) { return static_cast<float>(p[i]) / 255; };
            level.texels.push_back({part(0), part(isGrey ? 0 : 1), part(isGrey ? 0 : 2),
                                    hasAlpha ? part(components - 1) : 1.0f});
        }
    }
    m_levels.push_back(std::move(level));
    while (m_levels.back().width > 1 || m_levels.back().height > 1)
        m_levels.push_back(m_levels.back().half());
}

Texel TextureLevels::sample(const Level& level, const SoTextureValues& values, const SbVec2f& place)
{
    const bool repeatX = values.wrapS == SoTextureValues::REPEAT;
    const bool repeatY = values.wrapT == SoTextureValues::REPEAT;
    const auto within = [](float at, bool repeat) {
        return repeat ? at - std::floor(at) : std::clamp(at, 0.0f, 1.0f);
    };
    const float x = within(place[0], repeatX) * static_cast<float>(level.width) - 0.5f;
    const float y = within(place[1], repeatY) * static_cast<float>(level.height) - 0.5f;
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

Texel TextureLevels::sample(const SoTextureValues& values, const SbVec2f& place,
                            float texelsPerPixel) const
{
    const float level = std::clamp(std::log2(std::max(texelsPerPixel, 1e-6f)), 0.0f,
                                   static_cast<float>(m_levels.size() - 1));
    const auto fine = static_cast<std::size_t>(level);
    const float t = level - static_cast<float>(fine);
    const Texel a = sample(m_levels[fine], values, place);
    if (t == 0 || fine + 1 >= m_levels.size())
        return a;
    const Texel b = sample(m_levels[fine + 1], values, place);
    return {std::lerp(a.red, b.red, t), std::lerp(a.green, b.green, t),
            std::lerp(a.blue, b.blue, t), std::lerp(a.alpha, b.alpha, t)};
}

} // namespace kalmyr::detail
