#include "ImageCodecs.h"

#include <png.h>

namespace kalmyr::detail {

// The library's simplified interface catches its own errors.
bool readPng(const unsigned char* data, std::size_t size, RawImage& out)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, data, size))
        return out.fail(image.message);
    // Eight bits a sample, palettes expanded.
    image.format &= PNG_FORMAT_FLAG_ALPHA | PNG_FORMAT_FLAG_COLOR;
    const auto components = static_cast<int>(PNG_IMAGE_SAMPLE_CHANNELS(image.format));
    if (!out.allocate(image.width, image.height, components)) {
        png_image_free(&image);
        return false;
    }
    const auto stride =
        -static_cast<png_int_32>(PNG_IMAGE_ROW_STRIDE(image)); // rows from bottom to top
    if (!png_image_finish_read(&image, nullptr, out.bytes, stride, nullptr))
        return out.fail(image.message);
    return true;
}

} // namespace kalmyr::detail
