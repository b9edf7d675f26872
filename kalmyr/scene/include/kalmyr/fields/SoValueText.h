#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SbPlane.h>
#include <kalmyr/base/SbRotation.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/core/SoTokenizer.h>

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <string>

class SbImage;

/// \file
/// Values as scene text. writeText() of a value and readText() of the result give the same bits
/// (except for the payload of not-a-number). readText() returns false after an error, which the
/// tokenizer then knows.

namespace kalmyr {

inline bool readText(SoTokenizer& in, bool& value)
{
    return in.readBool(value);
}
inline bool readText(SoTokenizer& in, float& value)
{
    return in.readFloat(value);
}
inline bool readText(SoTokenizer& in, double& value)
{
    return in.readDouble(value);
}
inline bool readText(SoTokenizer& in, std::int32_t& value)
{
    return in.readInt(value);
}
inline bool readText(SoTokenizer& in, std::uint32_t& value)
{
    return in.readUInt(value);
}
inline bool readText(SoTokenizer& in, std::int16_t& value)
{
    return in.readShort(value);
}
inline bool readText(SoTokenizer& in, std::uint16_t& value)
{
    return in.readUShort(value);
}
/// Bytes are numbers in the range of their type.
KALMYR_API bool readText(SoTokenizer& in, std::int8_t& value);
KALMYR_API bool readText(SoTokenizer& in, std::uint8_t& value);

/// TRUE or FALSE.
KALMYR_API void writeText(std::string& out, bool value);
/// Shortest text that reads back the same.
KALMYR_API void writeText(std::string& out, float value);
KALMYR_API void writeText(std::string& out, double value);
KALMYR_API void writeText(std::string& out, std::int32_t value);
KALMYR_API void writeText(std::string& out, std::uint32_t value);

/// Seconds.
KALMYR_API bool readText(SoTokenizer& in, SbTime& value);
KALMYR_API void writeText(std::string& out, SbTime value);
/// Axis x y z and angle in radians, with as many digits as the quaternion needs (one component
/// may be off by 3e-16 next to a half or a whole turn). Numbers of up to nine digits are floats.
/// The axis may have any length; a zero axis reads as no rotation.
KALMYR_API bool readText(SoTokenizer& in, SbRotation& value);
KALMYR_API void writeText(std::string& out, const SbRotation& value);
/// Sixteen numbers, row by row.
KALMYR_API bool readText(SoTokenizer& in, SbMatrix& value);
KALMYR_API void writeText(std::string& out, const SbMatrix& value);
/// Normal x y z and distance from the origin. A normal of zero length is an error.
KALMYR_API bool readText(SoTokenizer& in, SbPlane& value);
KALMYR_API void writeText(std::string& out, const SbPlane& value);
/// Quoted; \ and " are escaped by a \.
KALMYR_API bool readText(SoTokenizer& in, SbString& value);
KALMYR_API void writeText(std::string& out, const SbString& value);
/// A bare word where it can be read back as one, else quoted.
KALMYR_API bool readText(SoTokenizer& in, SbName& value);
KALMYR_API void writeText(std::string& out, const SbName& value);
/// "width height components" and one number a pixel, 0xRRGGBBAA with as many bytes as
/// components, bottom row first. A volume: "VOLUME width height depth components" and the pixels,
/// slice by slice.
KALMYR_API bool readText(SoTokenizer& in, SbImage& value);
KALMYR_API void writeText(std::string& out, const SbImage& value);

/// `text` in double quotes with escapes.
KALMYR_API void writeQuoted(std::string& out, std::string_view text);

/// Components of vectors and colours, separated by blanks.
template <class T, int N>
bool readText(SoTokenizer& in, SbVec<T, N>& value)
{
    for (int i = 0; i < N; ++i) {
        if (!readText(in, value[i])) {
            return false;
        }
    }
    return true;
}
template <class T, int N>
void writeText(std::string& out, const SbVec<T, N>& value)
{
    for (int i = 0; i < N; ++i) {
        if (i > 0) {
            out += ' ';
        }
        writeText(out, value[i]);
    }
}

/// Minimum and maximum corner.
template <class T, int N>
bool readText(SoTokenizer& in, SbBox<T, N>& value)
{
    SbVec<T, N> min, max;
    if (!readText(in, min) || !readText(in, max)) {
        return false;
    }
    value.setBounds(min, max);
    return true;
}
template <class T, int N>
void writeText(std::string& out, const SbBox<T, N>& value)
{
    writeText(out, value.getMin());
    out += ' ';
    writeText(out, value.getMax());
}

/// The number type and count of a value type, for types that are a plain array of numbers.
template <class T>
struct NumberLayout {
    using Number = void;
    static constexpr int kCount = 1;
};
template <class T>
requires(
    std::same_as<
        T,
        float> || std::same_as<T, double> || std::same_as<T, std::int32_t> || std::same_as<T, std::uint32_t> || std::same_as<T, std::int16_t> || std::same_as<T, std::uint16_t>) struct
    NumberLayout<T> {
    using Number = T;
    static constexpr int kCount = 1;
};
template <class T, int N>
requires(!std::same_as<typename NumberLayout<T>::Number, void>) struct NumberLayout<SbVec<T, N>> {
    using Number = T;
    static constexpr int kCount = N;
};
template <>
struct NumberLayout<SbColor> : NumberLayout<SbVec3f> {
};
template <>
struct NumberLayout<SbColorRGBA> : NumberLayout<SbVec4f> {
};
template <>
struct NumberLayout<SbMatrix> {
    using Number = float;
    static constexpr int kCount = 16;
};
template <>
struct NumberLayout<SbTime> {
    using Number = double;
    static constexpr int kCount = 1;
};

/// Lists are read in pieces of this many values; memory is asked for no faster than text comes.
inline constexpr int kListPiece = 4096;
/// Longer lists are refused.
inline constexpr int kMaxListLength = 1 << 30;

/// Reads values up to and including the closing bracket. `extend(n)` adds n values whose content
/// does not matter and returns the address of the first; extend(-n) takes the last n away.
template <class Extend>
bool readTextList(SoTokenizer& in, Extend&& extend)
{
    using T = std::remove_pointer_t<decltype(extend(0))>;
    using Number = typename NumberLayout<T>::Number;
    constexpr int kCount = NumberLayout<T>::kCount;
    std::size_t begin = in.getOffset();
    for (int total = 0;;) {
        if (total > kMaxListLength) {
            return in.fail("expected a shorter list");
        }
        if constexpr (std::same_as<Number, void>) {
            if (in.accept(']')) {
                return true;
            }
            if (!readText(in, *extend(1))) {
                return false;
            }
            ++total;
            in.reportProgress();
        } else {
            static_assert(sizeof(T) == kCount * sizeof(Number));
            // A number and its separator take two bytes at least.
            const int piece = static_cast<int>(
                std::min<std::size_t>(kListPiece, in.getRemaining() / (2 * kCount) + 1));
            auto* to = reinterpret_cast<Number*>(extend(piece));
            const int wanted = piece * kCount;
            const int got = static_cast<int>(in.readNumbers(to, static_cast<std::size_t>(wanted)));
            total += piece;
            in.reportProgress();
            in.discardFrom(begin);
            if (got == wanted) {
                continue;
            }
            extend(got / kCount - piece);
            if (got % kCount == 0 && in.accept(']')) {
                return true;
            }
            return in.fail(got % kCount != 0 ? "expected a number" : "expected a number or ']'");
        }
    }
}

} // namespace kalmyr
