#include "U3DPicture.h"

#include <kalmyr/base/SbImage.h>

#include <cstdint>
#include <string_view>

#include <zlib.h>

namespace kalmyr::detail {

namespace {

constexpr unsigned char kSubFilter = 1; ///< bytes as differences from the pixel on the left

void appendBig(std::string& out, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        out += static_cast<char>(value >> shift);
}

void appendChunk(std::string& out, std::string_view type, std::string_view data)
{
    appendBig(out, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = out.size();
    out += type;
    out += data;
    const auto* covered = reinterpret_cast<const Bytef*>(out.data() + start);
    appendBig(out, static_cast<std::uint32_t>(crc32_z(0, covered, out.size() - start)));
}

/// Rows from top to bottom, each behind the number of its filter.
std::string filteredRows(const SbImage& image)
{
    const auto components = static_cast<std::size_t>(image.getComponents());
    const std::size_t row = static_cast<std::size_t>(image.getWidth()) * components;
    std::string bytes;
    bytes.reserve((row + 1) * static_cast<std::size_t>(image.getHeight()));
    for (int y = image.getHeight() - 1; y >= 0; --y) {
        const unsigned char* from = image.getPixel(0, y);
        bytes += static_cast<char>(kSubFilter);
        for (std::size_t i = 0; i < row; ++i)
            bytes += static_cast<char>(from[i] - (i < components ? 0 : from[i - components]));
    }
    return bytes;
}

} // namespace

std::string makePng(const SbImage& image)
{
    constexpr char kColorTypes[] = {0, 4, 2, 6}; // by number of components, from 1
    const std::string rows = filteredRows(image);
    uLongf size = compressBound(static_cast<uLong>(rows.size()));
    std::string packed(size, '\0');
    if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
                  reinterpret_cast<const Bytef*>(rows.data()), static_cast<uLong>(rows.size()),
                  Z_DEFAULT_COMPRESSION)
        != Z_OK)
        return {};
    packed.resize(size);

    std::string head;
    appendBig(head, static_cast<std::uint32_t>(image.getWidth()));
    appendBig(head, static_cast<std::uint32_t>(image.getHeight()));
    head += '\x08'; // bits a component
    head += kColorTypes[image.getComponents() - 1];
    head.append(3, '\0'); // deflate, filters by row, not interlaced
    std::string png = "\x89PNG\r\n\x1a\n";
    appendChunk(png, "IHDR", head);
    appendChunk(png, "IDAT", packed);
    appendChunk(png, "IEND", "");
    return png;
}

} // namespace kalmyr::detail
