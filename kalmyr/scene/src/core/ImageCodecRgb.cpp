#include "ImageCodecs.h"

#include <cstdint>
#include <span>

namespace kalmyr::detail {

namespace {

constexpr std::size_t kHeaderSize = 512;

/// Big-endian numbers; beyond the end they read as 0.
struct Bytes {
    std::span<const unsigned char> all;
    std::uint32_t u8(std::size_t at) const { return at < all.size() ? all[at] : 0; }
    std::uint32_t u16(std::size_t at) const { return u8(at) << 8 | u8(at + 1); }
    std::uint32_t u32(std::size_t at) const { return u16(at) << 16 | u16(at + 2); }
};

struct Channel {
    unsigned char* to; ///< first pixel's component of a row
    int step;
    int width;
};

/// One row of one channel: a count, its top bit telling copies from runs, and samples.
bool readRuns(const Bytes& file, std::size_t at, std::size_t sampleSize, const Channel& row)
{
    const auto sample = [&] {
        const std::uint32_t value = file.u8(at); // of two bytes the upper one
        at += sampleSize;
        return static_cast<unsigned char>(value);
    };
    int x = 0;
    while (at < file.all.size()) {
        const std::uint32_t head = sampleSize == 2 ? file.u16(at) : file.u8(at);
        at += sampleSize;
        const auto count = static_cast<int>(head & 0x7f);
        if (count == 0)
            break;
        if (x + count > row.width)
            return false;
        const bool copies = (head & 0x80) != 0;
        unsigned char value = copies ? 0 : sample();
        for (int i = 0; i < count; ++i, ++x)
            row.to[x * row.step] = copies ? sample() : value;
    }
    return x == row.width;
}

} // namespace

bool readRgb(const unsigned char* data, std::size_t size, RawImage& out)
{
    const Bytes file{{data, size}};
    const bool compressed = file.u8(2) == 1;
    const std::size_t sampleSize = file.u8(3);
    const std::uint32_t dimensions = file.u16(4);
    const std::uint32_t width = file.u16(6);
    const std::uint32_t height = dimensions > 1 ? file.u16(8) : 1;
    const std::uint32_t channels = dimensions > 2 ? file.u16(10) : 1;
    if (sampleSize < 1 || sampleSize > 2 || dimensions < 1 || dimensions > 3)
        return out.fail("unknown kind of pixels");
    if (channels < 1 || channels > 4)
        return out.fail("unknown number of channels");
    if (!out.allocate(width, height, static_cast<int>(channels)))
        return false;
    const std::size_t plane = static_cast<std::size_t>(width) * height;
    if (!compressed && kHeaderSize + plane * channels * sampleSize > size)
        return out.fail("the file ends before the last pixel");
    for (std::uint32_t c = 0; c < channels; ++c) {
        for (std::uint32_t y = 0; y < height; ++y) {
            const Channel row{out.bytes + static_cast<std::size_t>(y) * width * channels + c,
                              static_cast<int>(channels), static_cast<int>(width)};
            if (compressed) {
                const std::size_t at =
                    file.u32(kHeaderSize + 4 * (static_cast<std::size_t>(c) * height + y));
                if (at < kHeaderSize || !readRuns(file, at, sampleSize, row))
                    return out.fail("a row of the picture is damaged");
                continue;
            }
            const std::size_t at =
                kHeaderSize + (c * plane + static_cast<std::size_t>(y) * width) * sampleSize;
            for (std::size_t x = 0; x < width; ++x)
                row.to[x * channels] = data[at + x * sampleSize];
        }
    }
    return true;
}

} // namespace kalmyr::detail
