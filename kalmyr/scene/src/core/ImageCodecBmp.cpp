#include "ImageCodecs.h"

#include <bit>
#include <cstdint>
#include <span>

namespace kalmyr::detail {

namespace {

enum Compression { PLAIN = 0, RUNS_8 = 1, RUNS_4 = 2, MASKS = 3, MASKS_ALPHA = 6 };

/// Little-endian numbers; beyond the end they read as 0.
struct Bytes {
    std::span<const unsigned char> all;
    std::uint32_t u8(std::size_t at) const { return at < all.size() ? all[at] : 0; }
    std::uint32_t u16(std::size_t at) const { return u8(at) | u8(at + 1) << 8; }
    std::uint32_t u32(std::size_t at) const { return u16(at) | u16(at + 2) << 16; }
};

struct Header {
    Bytes file;
    std::size_t pixels = 0;
    std::size_t palette = 0;
    std::size_t paletteStep = 4;
    std::uint32_t paletteSize = 0;
    int bits = 0;
    std::uint32_t compression = PLAIN;
    bool topDown = false;
    std::uint32_t masks[4] = {};
};

constexpr std::size_t kFileHeader = 14;
constexpr std::uint32_t kOldHeader = 12;

bool readHeader(Header& h, long long& width, long long& height)
{
    const std::uint32_t size = h.file.u32(kFileHeader);
    h.pixels = h.file.u32(10);
    if (size == kOldHeader) {
        width = h.file.u16(18);
        height = h.file.u16(20);
        h.bits = static_cast<int>(h.file.u16(24));
        h.paletteStep = 3;
    } else {
        width = static_cast<std::int32_t>(h.file.u32(18));
        height = static_cast<std::int32_t>(h.file.u32(22));
        h.bits = static_cast<int>(h.file.u16(28));
        h.compression = h.file.u32(30);
        h.paletteSize = h.file.u32(46);
    }
    h.topDown = height < 0;
    if (h.topDown)
        height = -height;
    h.palette = kFileHeader + size;
    if (h.paletteSize == 0 && h.bits <= 8)
        h.paletteSize = 1u << h.bits;
    if (h.bits == 16) {
        h.masks[0] = 0x7c00, h.masks[1] = 0x3e0, h.masks[2] = 0x1f;
    } else {
        h.masks[0] = 0xff0000, h.masks[1] = 0xff00, h.masks[2] = 0xff;
    }
    if (h.compression == MASKS || h.compression == MASKS_ALPHA) {
        for (std::size_t k = 0; k < 4; ++k)
            h.masks[k] = h.file.u32(54 + 4 * k);
        // Only later headers have room for the fourth mask.
        if (size < 56 && h.compression != MASKS_ALPHA)
            h.masks[3] = 0;
    }
    return size == kOldHeader || size >= 40;
}

unsigned char masked(std::uint32_t pixel, std::uint32_t mask)
{
    if (!mask)
        return 255;
    const std::uint32_t most = mask >> std::countr_zero(mask);
    const std::uint64_t value = (pixel & mask) >> std::countr_zero(mask);
    return static_cast<unsigned char>(value * 255 / most);
}

void putColor(const Header& h, std::uint32_t number, unsigned char* to)
{
    const std::size_t at = h.palette + (number < h.paletteSize ? number : 0) * h.paletteStep;
    for (std::size_t k = 0; k < 3; ++k)
        to[k] = static_cast<unsigned char>(h.file.u8(at + 2 - k));
}

unsigned char* rowAt(const Header& h, const RawImage& out, int y)
{
    const int fromTop = h.topDown ? y : out.height - 1 - y;
    return out.rowFromTop(fromTop);
}

void readPlain(const Header& h, RawImage& out)
{
    const std::size_t stride =
        (static_cast<std::size_t>(out.width) * static_cast<std::size_t>(h.bits) + 31) / 32 * 4;
    for (int y = 0; y < out.height; ++y) {
        const std::size_t row = h.pixels + stride * static_cast<std::size_t>(y);
        unsigned char* to = rowAt(h, out, y);
        for (std::size_t x = 0; x < static_cast<std::size_t>(out.width);
             ++x, to += out.components) {
            if (h.bits <= 8) {
                const std::size_t bit = x * static_cast<std::size_t>(h.bits);
                const std::uint32_t shift = 8 - static_cast<std::uint32_t>(h.bits) - bit % 8;
                putColor(h, h.file.u8(row + bit / 8) >> shift & ((1u << h.bits) - 1), to);
                continue;
            }
            const std::uint32_t pixel =
                h.bits == 16   ? h.file.u16(row + x * 2)
                : h.bits == 24 ? h.file.u16(row + x * 3) | h.file.u8(row + x * 3 + 2) << 16
                               : h.file.u32(row + x * 4);
            for (int k = 0; k < out.components; ++k)
                to[k] = masked(pixel, h.masks[k]);
        }
    }
}

/// False when the file ends before the picture does.
bool readRuns(const Header& h, RawImage& out)
{
    std::size_t at = h.pixels;
    int x = 0, y = 0;
    const auto put = [&](std::uint32_t number) {
        if (x < out.width && y < out.height)
            putColor(h, number, rowAt(h, out, y) + static_cast<std::size_t>(x) * 3);
        ++x;
    };
    const bool four = h.compression == RUNS_4;
    while (at < h.file.all.size() && y < out.height) {
        const std::uint32_t count = h.file.u8(at), value = h.file.u8(at + 1);
        at += 2;
        if (count > 0) {
            for (std::uint32_t i = 0; i < count; ++i)
                put(four ? (i % 2 ? value & 15 : value >> 4) : value);
        } else if (value == 0) {
            x = 0;
            ++y;
        } else if (value == 1) {
            return true;
        } else if (value == 2) {
            x += static_cast<int>(h.file.u8(at));
            y += static_cast<int>(h.file.u8(at + 1));
            at += 2;
        } else {
            for (std::uint32_t i = 0; i < value; ++i) {
                const std::uint32_t byte = h.file.u8(at + (four ? i / 2 : i));
                put(four ? (i % 2 ? byte & 15 : byte >> 4) : byte);
            }
            const std::size_t used = four ? (value + 1) / 2 : value;
            at += used + used % 2;
        }
    }
    return y >= out.height;
}

} // namespace

bool readBmp(const unsigned char* data, std::size_t size, RawImage& out)
{
    Header h;
    h.file.all = {data, size};
    long long width = 0, height = 0;
    if (!readHeader(h, width, height))
        return out.fail("unknown header size");
    const bool runs = h.compression == RUNS_8 || h.compression == RUNS_4;
    const bool bitsKnown =
        h.bits == 1 || h.bits == 4 || h.bits == 8 || h.bits == 16 || h.bits == 24 || h.bits == 32;
    if (!bitsKnown || (h.compression > MASKS && h.compression != MASKS_ALPHA)
        || (runs && h.bits > 8))
        return out.fail("unknown kind of pixels");
    if (!out.allocate(width, height, h.masks[3] ? 4 : 3))
        return false;
    if (!runs
        && h.pixels
                   + static_cast<std::size_t>(width) * static_cast<std::size_t>(height)
                         * static_cast<std::size_t>(h.bits) / 8
               > size)
        return out.fail("the file ends before the last pixel");
    if (runs)
        return readRuns(h, out) || out.fail("the file ends before the last pixel");
    readPlain(h, out);
    return true;
}

} // namespace kalmyr::detail
