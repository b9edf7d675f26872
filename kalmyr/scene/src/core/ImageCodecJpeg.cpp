#include "ImageCodecs.h"

#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>

namespace kalmyr::detail {

namespace {

struct Errors {
    jpeg_error_mgr base;
    std::jmp_buf leave;
    char text[JMSG_LENGTH_MAX];
};

[[noreturn]] void leave(j_common_ptr info)
{
    auto* errors = reinterpret_cast<Errors*>(info->err);
    info->err->format_message(info, errors->text);
    std::longjmp(errors->leave, 1);
}

/// Four inks, written inverted by every known program, to RGB in place of the first three.
void inksToRgb(const unsigned char* from, unsigned char* to, int width)
{
    for (int x = 0; x < width; ++x, from += 4, to += 3) {
        for (int k = 0; k < 3; ++k)
            to[k] = static_cast<unsigned char>(from[k] * from[3] / 255);
    }
}

} // namespace

// One frame without C++ objects: the library leaves errors by longjmp.
bool readJpeg(const unsigned char* data, std::size_t size, RawImage& out)
{
    jpeg_decompress_struct info;
    Errors errors;
    unsigned char* volatile inkRow = nullptr;
    info.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = leave;
    errors.base.output_message = [](j_common_ptr) {};
    if (setjmp(errors.leave)) {
        jpeg_destroy_decompress(&info);
        std::free(inkRow);
        return out.fail(errors.text);
    }
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, data, static_cast<unsigned long>(size));
    jpeg_read_header(&info, TRUE);
    const bool inks = info.num_components == 4;
    info.out_color_space = info.num_components == 1 ? JCS_GRAYSCALE : inks ? JCS_CMYK : JCS_RGB;
    if (!out.allocate(info.image_width, info.image_height, info.num_components == 1 ? 1 : 3)) {
        jpeg_destroy_decompress(&info);
        return false;
    }
    jpeg_start_decompress(&info);
    if (inks)
        inkRow = static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(out.width) * 4));
    while (info.output_scanline < info.output_height) {
        unsigned char* target = out.rowFromTop(static_cast<int>(info.output_scanline));
        JSAMPROW row = inkRow ? inkRow : target;
        jpeg_read_scanlines(&info, &row, 1);
        if (inkRow)
            inksToRgb(inkRow, target, out.width);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    std::free(inkRow);
    return true;
}

} // namespace kalmyr::detail
