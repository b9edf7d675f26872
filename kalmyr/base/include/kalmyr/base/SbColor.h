#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>

#include <cstdint>

/// Red, green and blue, 0 to 1. Values outside are kept and clamped only when packed.
class SbColor : public SbVec3f {
public:
    /// Black.
    constexpr SbColor() = default;
    constexpr SbColor(float r, float g, float b) : SbVec3f(r, g, b) {}
    constexpr SbColor(const SbVec3f& rgb) : SbVec3f(rgb) {}
    explicit constexpr SbColor(const float* rgb) : SbVec3f(rgb) {}

    /// Hue 0 to 1 round the circle (other values wrap), saturation and value 0 to 1.
    KALMYRBASE_API SbColor& setHSVValue(float h, float s, float v);
    /// Grey has hue 0.
    KALMYRBASE_API void getHSVValue(float& h, float& s, float& v) const;
    /// From 0xRRGGBBAA; `transparency` becomes 1 - AA / 255.
    KALMYRBASE_API SbColor& setPackedValue(std::uint32_t rgba, float& transparency);
    /// As 0xRRGGBBAA, rounded.
    KALMYRBASE_API std::uint32_t getPackedValue(float transparency = 0) const;
};

/// Red, green, blue and alpha (1 is opaque).
class SbColorRGBA : public SbVec4f {
public:
    /// Opaque black.
    constexpr SbColorRGBA() : SbVec4f(0.f, 0.f, 0.f, 1.f) {}
    constexpr SbColorRGBA(float r, float g, float b, float a = 1) : SbVec4f(r, g, b, a) {}
    constexpr SbColorRGBA(const SbVec4f& rgba) : SbVec4f(rgba) {}
    constexpr SbColorRGBA(const SbColor& rgb, float alpha = 1) : SbVec4f(rgb, alpha) {}
    explicit constexpr SbColorRGBA(const float* rgba) : SbVec4f(rgba) {}

    SbColor getRGB() const { return {(*this)[0], (*this)[1], (*this)[2]}; }
    /// The alpha value stays as it is.
    KALMYRBASE_API SbColorRGBA& setHSVValue(float h, float s, float v);
    KALMYRBASE_API void getHSVValue(float& h, float& s, float& v) const;
    /// 0xRRGGBBAA.
    KALMYRBASE_API SbColorRGBA& setPackedValue(std::uint32_t rgba);
    KALMYRBASE_API std::uint32_t getPackedValue() const;
};
