#include <kalmyr/base/SbColor.h>

#include <algorithm>
#include <cmath>

namespace {

std::uint32_t toByte(float v)
{
    // Written so that not-a-number becomes 0.
    return v > 0 ? static_cast<std::uint32_t>(std::lround(std::min(v, 1.f) * 255)) : 0;
}

float fromByte(std::uint32_t rgba, int shift)
{
    return static_cast<float>((rgba >> shift) & 0xff) / 255;
}

SbVec3f hsvToRgb(float h, float s, float v)
{
    const float turn = (h - std::floor(h)) * 6;
    const int sector = static_cast<int>(turn) % 6;
    const float fraction = turn - std::floor(turn);
    const float p = v * (1 - s);
    const float q = v * (1 - s * fraction);
    const float t = v * (1 - s * (1 - fraction));
    const SbVec3f table[6] = {{v, t, p}, {q, v, p}, {p, v, t}, {p, q, v}, {t, p, v}, {v, p, q}};
    return table[sector];
}

void rgbToHsv(const float* rgb, float& h, float& s, float& v)
{
    const float r = rgb[0];
    const float g = rgb[1];
    const float b = rgb[2];
    v = std::max({r, g, b});
    const float range = v - std::min({r, g, b});
    s = v != 0 ? range / v : 0;
    h = 0;
    if (range == 0) {
        return;
    }
    if (v == r) {
        h = (g - b) / range;
    } else if (v == g) {
        h = 2 + (b - r) / range;
    } else {
        h = 4 + (r - g) / range;
    }
    h = h < 0 ? h / 6 + 1 : h / 6;
}

} // namespace

SbColor& SbColor::setHSVValue(float h, float s, float v)
{
    return *this = hsvToRgb(h, s, v);
}

void SbColor::getHSVValue(float& h, float& s, float& v) const
{
    rgbToHsv(getValue(), h, s, v);
}

SbColor& SbColor::setPackedValue(std::uint32_t rgba, float& transparency)
{
    transparency = 1 - fromByte(rgba, 0);
    return *this = SbColor(fromByte(rgba, 24), fromByte(rgba, 16), fromByte(rgba, 8));
}

std::uint32_t SbColor::getPackedValue(float transparency) const
{
    return SbColorRGBA(*this, 1 - transparency).getPackedValue();
}

SbColorRGBA& SbColorRGBA::setHSVValue(float h, float s, float v)
{
    return *this = SbColorRGBA(SbColor(hsvToRgb(h, s, v)), (*this)[3]);
}

void SbColorRGBA::getHSVValue(float& h, float& s, float& v) const
{
    rgbToHsv(getValue(), h, s, v);
}

SbColorRGBA& SbColorRGBA::setPackedValue(std::uint32_t rgba)
{
    return *this = SbColorRGBA(fromByte(rgba, 24), fromByte(rgba, 16), fromByte(rgba, 8),
                               fromByte(rgba, 0));
}

std::uint32_t SbColorRGBA::getPackedValue() const
{
    const float* c = getValue();
    return toByte(c[0]) << 24 | toByte(c[1]) << 16 | toByte(c[2]) << 8 | toByte(c[3]);
}
