#include "rendering/RasterWriters.h"

#include <kalmyr/base/SoError.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

namespace kalmyr::detail {

namespace {

using Bytes = std::vector<unsigned char>;

bool fail(const char* format)
{
    SoError::post("the picture could not be written as %s", format);
    return false;
}

bool isWritable(std::FILE* file, const SbImage& image)
{
    return file && !image.isNull() && image.getComponents() >= 3;
}

bool put(std::FILE* file, const void* bytes, std::size_t count)
{
    return std::fwrite(bytes, 1, count, file) == count;
}

// ---- the codecs leave by longjmp: no object with a destructor may stand in these functions

bool encodePng(std::FILE* file, const unsigned char* bytes, int width, int height, int components)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info || setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                 components == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    const std::size_t stride =
        static_cast<std::size_t>(width) * static_cast<std::size_t>(components);
    for (int y = height - 1; y >= 0; --y) {
        png_write_row(png, const_cast<png_bytep>(bytes + static_cast<std::size_t>(y) * stride));
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return true;
}

struct JpegErrors {
    jpeg_error_mgr manager;
    std::jmp_buf exit;
};

void leaveJpeg(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<JpegErrors*>(info->err)->exit, 1);
}

void ignoreJpegMessage(j_common_ptr) {}

/// `rgb` has three components.
bool encodeJpeg(std::FILE* file, const unsigned char* rgb, int width, int height, int quality)
{
    jpeg_compress_struct info{};
    JpegErrors errors{};
    info.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = leaveJpeg;
    errors.manager.output_message = ignoreJpegMessage;
    if (setjmp(errors.exit)) {
        jpeg_destroy_compress(&info);
        return false;
    }
    jpeg_create_compress(&info);
    jpeg_stdio_dest(&info, file);
    info.image_width = static_cast<JDIMENSION>(width);
    info.image_height = static_cast<JDIMENSION>(height);
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    jpeg_start_compress(&info, TRUE);
    for (int y = height - 1; y >= 0; --y) {
        const std::size_t at = static_cast<std::size_t>(y) * static_cast<std::size_t>(width) * 3;
        auto* row = const_cast<JSAMPROW>(rgb + at);
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    return true;
}

// ---- in memory

/// The three colour components only.
Bytes withoutAlpha(const SbImage& image)
{
    const std::size_t pixels =
        static_cast<std::size_t>(image.getWidth()) * static_cast<std::size_t>(image.getHeight());
    const auto components = static_cast<std::size_t>(image.getComponents());
    const unsigned char* from = image.getBytes();
    Bytes rgb(pixels * 3);
    for (std::size_t i = 0; i < pixels; ++i) {
        std::copy_n(from + i * components, 3, &rgb[i * 3]);
    }
    return rgb;
}

void appendLittle(Bytes& out, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i) {
        out.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
}

void appendBig(Bytes& out, std::uint32_t value, int bytes)
{
    for (int i = bytes - 1; i >= 0; --i) {
        out.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
}

// ---- TIFF into an open stdio file

struct TiffStream {
    std::FILE* file;
    long start;
};

tmsize_t readTiff(thandle_t handle, void* data, tmsize_t size)
{
    return static_cast<tmsize_t>(std::fread(data, 1, static_cast<std::size_t>(size),
                                            static_cast<TiffStream*>(handle)->file));
}

tmsize_t writeTiffBytes(thandle_t handle, void* data, tmsize_t size)
{
    return static_cast<tmsize_t>(std::fwrite(data, 1, static_cast<std::size_t>(size),
                                             static_cast<TiffStream*>(handle)->file));
}

toff_t seekTiff(thandle_t handle, toff_t offset, int whence)
{
    auto* stream = static_cast<TiffStream*>(handle);
    const long base = whence == SEEK_SET ? stream->start : 0;
    if (std::fseek(stream->file, base + static_cast<long>(offset), whence) != 0) {
        return static_cast<toff_t>(-1);
    }
    return static_cast<toff_t>(std::ftell(stream->file) - stream->start);
}

int closeTiff(thandle_t)
{
    return 0;
}

toff_t sizeTiff(thandle_t handle)
{
    auto* stream = static_cast<TiffStream*>(handle);
    const long at = std::ftell(stream->file);
    std::fseek(stream->file, 0, SEEK_END);
    const long end = std::ftell(stream->file);
    std::fseek(stream->file, at, SEEK_SET);
    return static_cast<toff_t>(end - stream->start);
}

bool encodeTiff(TIFF* tiff, const SbImage& image, bool compressed)
{
    const auto width = static_cast<std::uint32_t>(image.getWidth());
    const auto height = static_cast<std::uint32_t>(image.getHeight());
    const int components = image.getComponents();
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, components);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, compressed ? COMPRESSION_PACKBITS : COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
    if (components == 4) {
        const std::uint16_t extra[] = {EXTRASAMPLE_UNASSALPHA};
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, extra);
    }
    Bytes row(static_cast<std::size_t>(width) * static_cast<std::size_t>(components));
    for (std::uint32_t y = 0; y < height; ++y) {
        std::copy_n(image.getPixel(0, static_cast<int>(height - 1 - y)), row.size(), row.data());
        if (TIFFWriteScanline(tiff, row.data(), y, 0) < 0) {
            return false;
        }
    }
    return true;
}

} // namespace

bool writePNG(std::FILE* file, const SbImage& image)
{
    return (isWritable(file, image)
            && encodePng(file, image.getBytes(), image.getWidth(), image.getHeight(),
                         image.getComponents()))
           || fail("PNG");
}

bool writeJPEG(std::FILE* file, const SbImage& image, float quality)
{
    if (!isWritable(file, image)) {
        return fail("JPEG");
    }
    const Bytes rgb = withoutAlpha(image);
    const int percent = static_cast<int>(std::lround(std::clamp(quality, 0.0f, 1.0f) * 100));
    return encodeJpeg(file, rgb.data(), image.getWidth(), image.getHeight(), std::max(percent, 1))
           || fail("JPEG");
}

bool writeBMP(std::FILE* file, const SbImage& image)
{
    if (!isWritable(file, image)) {
        return fail("BMP");
    }
    constexpr std::uint32_t kHeader = 14 + 40;
    const auto width = static_cast<std::uint32_t>(image.getWidth());
    const auto height = static_cast<std::uint32_t>(image.getHeight());
    const std::uint32_t stride = (width * 3 + 3) / 4 * 4;
    Bytes out{'B', 'M'};
    out.reserve(kHeader + std::size_t(stride) * height);
    for (const std::uint32_t value : {kHeader + stride * height, 0u, kHeader, 40u, width, height}) {
        appendLittle(out, value, 4);
    }
    appendLittle(out, 1, 2);
    appendLittle(out, 24, 2);
    for (const std::uint32_t value : {0u, stride * height, 2835u, 2835u, 0u, 0u}) {
        appendLittle(out, value, 4);
    }
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const unsigned char* p = image.getPixel(static_cast<int>(x), static_cast<int>(y));
            out.insert(out.end(), {p[2], p[1], p[0]});
        }
        out.resize(out.size() + (stride - width * 3));
    }
    return put(file, out.data(), out.size()) || fail("BMP");
}

bool writeTIFF(std::FILE* file, const SbImage& image, bool compressed)
{
    if (!isWritable(file, image)) {
        return fail("TIFF");
    }
    TiffStream stream{file, std::ftell(file)};
    TIFF* tiff = TIFFClientOpen("picture", "w", &stream, readTiff, writeTiffBytes, seekTiff,
                                closeTiff, sizeTiff, nullptr, nullptr);
    const bool written = tiff && encodeTiff(tiff, image, compressed) && TIFFFlush(tiff);
    if (tiff) {
        TIFFClose(tiff);
    }
    return (written && std::fseek(file, 0, SEEK_END) == 0) || fail("TIFF");
}

bool writeRGB(std::FILE* file, const SbImage& image)
{
    if (!isWritable(file, image)) {
        return fail("RGB");
    }
    constexpr std::size_t kHeader = 512;
    constexpr std::uint32_t kMagic = 474;
    Bytes out;
    appendBig(out, kMagic, 2);
    appendBig(out, 0x0001, 2); // stored as it is, one byte a component
    appendBig(out, 3, 2);
    appendBig(out, static_cast<std::uint32_t>(image.getWidth()), 2);
    appendBig(out, static_cast<std::uint32_t>(image.getHeight()), 2);
    appendBig(out, static_cast<std::uint32_t>(image.getComponents()), 2);
    appendBig(out, 0, 4);
    appendBig(out, 255, 4);
    out.resize(kHeader);
    for (int c = 0; c < image.getComponents(); ++c) {
        for (int y = 0; y < image.getHeight(); ++y) {
            for (int x = 0; x < image.getWidth(); ++x) {
                out.push_back(image.getPixel(x, y)[c]);
            }
        }
    }
    return put(file, out.data(), out.size()) || fail("RGB");
}

bool writePostScript(std::FILE* file, const SbImage& image)
{
    if (!isWritable(file, image)) {
        return fail("PostScript");
    }
    constexpr int kPageWidth = 612; // points, with a margin of half an inch
    constexpr int kPageHeight = 792;
    constexpr int kMargin = 36;
    const int width = image.getWidth();
    const int height = image.getHeight();
    const double scale = std::min(double(kPageWidth - 2 * kMargin) / width,
                                  double(kPageHeight - 2 * kMargin) / height);
    const int drawnWidth = std::max(1, static_cast<int>(width * scale));
    const int drawnHeight = std::max(1, static_cast<int>(height * scale));
    const int left = (kPageWidth - drawnWidth) / 2;
    const int bottom = (kPageHeight - drawnHeight) / 2;
    const auto n = [](int value) { return std::to_string(value) + " "; };
    std::string text = "%!PS-Adobe-3.0\n%%BoundingBox: " + n(left) + n(bottom)
                       + n(left + drawnWidth) + std::to_string(bottom + drawnHeight)
                       + "\n%%Creator: Kalmyr\n%%Pages: 1\n%%EndComments\n%%Page: 1 1\ngsave\n"
                       + n(left) + n(bottom) + "translate\n" + n(drawnWidth) + n(drawnHeight)
                       + "scale\n/row " + n(3 * width) + "string def\n" + n(width) + n(height)
                       + "8 [" + n(width) + "0 0 " + n(height)
                       + "0 0]\n{ currentfile row readhexstring pop } false 3 colorimage\n";
    const Bytes rgb = withoutAlpha(image);
    constexpr const char* kDigits = "0123456789abcdef";
    constexpr std::size_t kBytesPerLine = 36;
    for (std::size_t i = 0; i < rgb.size(); ++i) {
        text += kDigits[rgb[i] >> 4];
        text += kDigits[rgb[i] & 15];
        if (i % kBytesPerLine == kBytesPerLine - 1 || i + 1 == rgb.size()) {
            text += '\n';
        }
    }
    text += "grestore\nshowpage\n%%EOF\n";
    return put(file, text.data(), text.size()) || fail("PostScript");
}

} // namespace kalmyr::detail
