#include "rendering/RasterWriters.h"

#include <kalmyr/base/SoError.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

namespace kalmyr::detail {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr const char* kNames[] = {"PNG", "JPEG", "BMP", "TIFF", "RGB", "PostScript"};

bool putBytes(std::FILE* file, const void* bytes, std::size_t count)
{
    return std::fwrite(bytes, 1, count, file) == count;
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

/// What the writers have in common.
class Writer : public RasterWriter {
public:
    explicit Writer(std::FILE* file) : m_file(file) {}

    bool begin(int width, int height, int components) override
    {
        m_width = static_cast<std::size_t>(width);
        m_height = static_cast<std::size_t>(height);
        m_components = static_cast<std::size_t>(components);
        return open();
    }

protected:
    virtual bool open() = 0;
    /// The three colour components of a row only.
    const unsigned char* withoutOpacity(const unsigned char* row)
    {
        if (m_components == 3) {
            return row;
        }
        m_rgb.resize(3 * m_width);
        for (std::size_t i = 0; i < m_width; ++i) {
            std::copy_n(row + i * m_components, 3, &m_rgb[3 * i]);
        }
        return m_rgb.data();
    }

    std::FILE* m_file; // Not owned.
    std::size_t m_width = 0;
    std::size_t m_height = 0;
    std::size_t m_components = 0;
    Bytes m_rgb;
};

// ---- PNG and JPEG: the codecs leave by longjmp, so no object with a destructor may stand in the
// functions that call them

/// In silence: the caller tells why.
void leavePng(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

class PngWriter final : public Writer {
public:
    using Writer::Writer;
    ~PngWriter() override { png_destroy_write_struct(&m_png, &m_info); }
    bool keepsOpacity() const override { return true; }

    bool put(const unsigned char* row) override
    {
        if (setjmp(png_jmpbuf(m_png))) {
            return false;
        }
        png_write_row(m_png, const_cast<png_bytep>(row));
        return true;
    }

    bool end() override
    {
        if (setjmp(png_jmpbuf(m_png))) {
            return false;
        }
        png_write_end(m_png, m_info);
        return true;
    }

private:
    bool open() override
    {
        m_png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, leavePng, nullptr);
        m_info = m_png ? png_create_info_struct(m_png) : nullptr;
        if (!m_info || setjmp(png_jmpbuf(m_png))) {
            return false;
        }
        png_init_io(m_png, m_file);
        png_set_IHDR(m_png, m_info, static_cast<png_uint_32>(m_width),
                     static_cast<png_uint_32>(m_height), 8,
                     m_components == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_write_info(m_png, m_info);
        return true;
    }

    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
};

struct JpegErrors {
    jpeg_error_mgr manager;
    std::jmp_buf exit;
};

void leaveJpeg(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<JpegErrors*>(info->err)->exit, 1);
}

void ignoreJpegMessage(j_common_ptr) {}

class JpegWriter final : public Writer {
public:
    JpegWriter(std::FILE* file, float quality)
        : Writer(file),
          m_percent(
              std::max(static_cast<int>(std::lround(std::clamp(quality, 0.0f, 1.0f) * 100)), 1))
    {
    }
    ~JpegWriter() override { jpeg_destroy_compress(&m_info); }

    bool put(const unsigned char* row) override
    {
        const unsigned char* rgb = withoutOpacity(row);
        return encode(rgb);
    }

    bool end() override
    {
        if (setjmp(m_errors.exit)) {
            return false;
        }
        jpeg_finish_compress(&m_info);
        return true;
    }

private:
    bool open() override
    {
        m_info.err = jpeg_std_error(&m_errors.manager);
        m_errors.manager.error_exit = leaveJpeg;
        m_errors.manager.output_message = ignoreJpegMessage;
        if (setjmp(m_errors.exit)) {
            return false;
        }
        jpeg_create_compress(&m_info);
        jpeg_stdio_dest(&m_info, m_file);
        m_info.image_width = static_cast<JDIMENSION>(m_width);
        m_info.image_height = static_cast<JDIMENSION>(m_height);
        m_info.input_components = 3;
        m_info.in_color_space = JCS_RGB;
        jpeg_set_defaults(&m_info);
        jpeg_set_quality(&m_info, m_percent, TRUE);
        jpeg_start_compress(&m_info, TRUE);
        return true;
    }

    bool encode(const unsigned char* rgb)
    {
        if (setjmp(m_errors.exit)) {
            return false;
        }
        auto* row = const_cast<JSAMPROW>(rgb);
        jpeg_write_scanlines(&m_info, &row, 1);
        return true;
    }

    jpeg_compress_struct m_info{};
    JpegErrors m_errors{};
    int m_percent;
};

// ---- BMP

class BmpWriter final : public Writer {
public:
    using Writer::Writer;
    bool isBottomUp() const override { return true; }

    bool put(const unsigned char* row) override
    {
        const unsigned char* p = withoutOpacity(row);
        for (std::size_t x = 0; x < m_width; ++x, p += 3) {
            m_row[3 * x] = p[2];
            m_row[3 * x + 1] = p[1];
            m_row[3 * x + 2] = p[0];
        }
        return putBytes(m_file, m_row.data(), m_row.size());
    }

    bool end() override { return true; }

private:
    bool open() override
    {
        constexpr std::uint32_t kHeader = 14 + 40;
        const std::size_t stride = (m_width * 3 + 3) / 4 * 4;
        if (stride > (std::numeric_limits<std::uint32_t>::max() - kHeader) / m_height) {
            return false;
        }
        m_row.assign(stride, 0);
        const auto size = static_cast<std::uint32_t>(stride * m_height);
        Bytes out{'B', 'M'};
        for (const std::uint32_t value :
             {kHeader + size, 0u, kHeader, 40u, static_cast<std::uint32_t>(m_width),
              static_cast<std::uint32_t>(m_height)}) {
            appendLittle(out, value, 4);
        }
        appendLittle(out, 1, 2);
        appendLittle(out, 24, 2);
        for (const std::uint32_t value : {0u, size, 2835u, 2835u, 0u, 0u}) {
            appendLittle(out, value, 4);
        }
        return putBytes(m_file, out.data(), out.size());
    }

    Bytes m_row;
};

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

int ignoreTiffMessage(TIFF*, void*, const char*, const char*, va_list)
{
    return 1;
}

class TiffWriter final : public Writer {
public:
    TiffWriter(std::FILE* file, bool isPacked)
        : Writer(file), m_stream{file, std::ftell(file)}, m_isPacked(isPacked)
    {
    }
    ~TiffWriter() override { close(); }
    bool keepsOpacity() const override { return true; }

    bool put(const unsigned char* row) override
    {
        m_row.assign(row, row + m_width * m_components); // packing may change it
        return TIFFWriteScanline(m_tiff, m_row.data(), m_next++, 0) >= 0;
    }

    bool end() override
    {
        const bool flushed = TIFFFlush(m_tiff);
        close();
        return flushed && std::fseek(m_file, 0, SEEK_END) == 0;
    }

private:
    bool open() override
    {
        TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
        TIFFOpenOptionsSetErrorHandlerExtR(options, ignoreTiffMessage, nullptr);
        TIFFOpenOptionsSetWarningHandlerExtR(options, ignoreTiffMessage, nullptr);
        m_tiff = TIFFClientOpenExt("picture", "w", &m_stream, readTiff, writeTiffBytes, seekTiff,
                                   closeTiff, sizeTiff, nullptr, nullptr, options);
        TIFFOpenOptionsFree(options);
        if (!m_tiff) {
            return false;
        }
        const auto set = [this](std::uint32_t tag, auto value) {
            TIFFSetField(m_tiff, tag, value);
        };
        set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(m_width));
        set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(m_height));
        set(TIFFTAG_BITSPERSAMPLE, 8);
        set(TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(m_components));
        set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
        set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
        set(TIFFTAG_COMPRESSION, m_isPacked ? COMPRESSION_PACKBITS : COMPRESSION_NONE);
        set(TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(m_tiff, 0));
        if (m_components == 4) {
            const std::uint16_t extra[] = {EXTRASAMPLE_UNASSALPHA};
            TIFFSetField(m_tiff, TIFFTAG_EXTRASAMPLES, 1, extra);
        }
        return true;
    }

    void close()
    {
        if (m_tiff) {
            TIFFClose(m_tiff);
            m_tiff = nullptr;
        }
    }

    TiffStream m_stream;
    bool m_isPacked;
    TIFF* m_tiff = nullptr;
    std::uint32_t m_next = 0;
    Bytes m_row;
};

// ---- SGI: each component by itself, one after the other

class RgbWriter final : public Writer {
public:
    using Writer::Writer;
    bool isBottomUp() const override { return true; }
    bool keepsOpacity() const override { return true; }

    bool put(const unsigned char* row) override
    {
        for (std::size_t c = 0; c < m_components; ++c) {
            for (std::size_t x = 0; x < m_width; ++x) {
                m_row[x] = row[x * m_components + c];
            }
            const std::size_t at = (c * m_height + m_next) * m_width;
            if (m_start < 0) {
                std::copy(m_row.begin(), m_row.end(), m_all.begin() + static_cast<long>(at));
            } else if (std::fseek(m_file, m_start + static_cast<long>(at), SEEK_SET) != 0
                       || !putBytes(m_file, m_row.data(), m_row.size())) {
                return false;
            }
        }
        ++m_next;
        return true;
    }

    bool end() override
    {
        return m_start < 0 ? putBytes(m_file, m_all.data(), m_all.size())
                           : std::fseek(m_file, 0, SEEK_END) == 0;
    }

private:
    bool open() override
    {
        constexpr std::size_t kHeader = 512;
        constexpr std::uint32_t kMagic = 474;
        Bytes out;
        appendBig(out, kMagic, 2);
        appendBig(out, 0x0001, 2); // stored as it is, one byte a component
        appendBig(out, 3, 2);
        for (const std::size_t value : {m_width, m_height, m_components}) {
            appendBig(out, static_cast<std::uint32_t>(value), 2);
        }
        appendBig(out, 0, 4);
        appendBig(out, 255, 4);
        out.resize(kHeader);
        m_row.resize(m_width);
        if (!putBytes(m_file, out.data(), out.size())) {
            return false;
        }
        m_start = std::ftell(m_file);
        if (m_start < 0) { // a pipe
            m_all.resize(m_width * m_height * m_components);
        }
        return true;
    }

    long m_start = 0; ///< of the components in the file; -1: it can only be written from front to
                      ///< back
    std::size_t m_next = 0;
    Bytes m_row;
    Bytes m_all;
};

// ---- PostScript: one page

/// A part of a row that a string of PostScript can hold, and that goes into the row without rest.
int stringPixels(int width)
{
    constexpr int kMaxString = 65535;
    int parts = 1;
    while (3 * (width / parts) > kMaxString || width % parts != 0) {
        ++parts;
    }
    return width / parts;
}

class PostScriptWriter final : public Writer {
public:
    using Writer::Writer;

    bool put(const unsigned char* row) override
    {
        constexpr const char* kDigits = "0123456789abcdef";
        constexpr std::size_t kBytesPerLine = 36;
        const unsigned char* rgb = withoutOpacity(row);
        m_text.clear();
        for (std::size_t i = 0; i < 3 * m_width; ++i) {
            m_text += kDigits[rgb[i] >> 4];
            m_text += kDigits[rgb[i] & 15];
            if (++m_inLine == kBytesPerLine) {
                m_text += '\n';
                m_inLine = 0;
            }
        }
        return putBytes(m_file, m_text.data(), m_text.size());
    }

    bool end() override
    {
        m_text = m_inLine > 0 ? "\n" : "";
        m_text += "grestore\nshowpage\n%%EOF\n";
        return putBytes(m_file, m_text.data(), m_text.size());
    }

private:
    bool open() override
    {
        constexpr int kPageWidth = 612; // points, with a margin of half an inch
        constexpr int kPageHeight = 792;
        constexpr int kMargin = 36;
        const auto width = static_cast<int>(m_width);
        const auto height = static_cast<int>(m_height);
        const double scale = std::min(double(kPageWidth - 2 * kMargin) / width,
                                      double(kPageHeight - 2 * kMargin) / height);
        const int drawnWidth = std::max(1, static_cast<int>(width * scale));
        const int drawnHeight = std::max(1, static_cast<int>(height * scale));
        const int left = (kPageWidth - drawnWidth) / 2;
        const int bottom = (kPageHeight - drawnHeight) / 2;
        const auto n = [](int value) { return std::to_string(value) + " "; };
        m_text = "%!PS-Adobe-3.0\n%%BoundingBox: " + n(left) + n(bottom) + n(left + drawnWidth)
                 + std::to_string(bottom + drawnHeight)
                 + "\n%%Creator: Kalmyr\n%%Pages: 1\n%%EndComments\n%%Page: 1 1\ngsave\n" + n(left)
                 + n(bottom) + "translate\n" + n(drawnWidth) + n(drawnHeight) + "scale\n/row "
                 + n(3 * stringPixels(width)) + "string def\n" + n(width) + n(height) + "8 ["
                 + n(width) + "0 0 " + n(-height) + "0 " + n(height)
                 + "]\n{ currentfile row readhexstring pop } false 3 colorimage\n";
        return putBytes(m_file, m_text.data(), m_text.size());
    }

    std::string m_text;
    std::size_t m_inLine = 0;
};

} // namespace

std::unique_ptr<RasterWriter> makeRasterWriter(RasterFormat format, std::FILE* file,
                                               const RasterOptions& options)
{
    switch (format) {
    case RasterFormat::PNG:
        return std::make_unique<PngWriter>(file);
    case RasterFormat::JPEG:
        return std::make_unique<JpegWriter>(file, options.quality);
    case RasterFormat::BMP:
        return std::make_unique<BmpWriter>(file);
    case RasterFormat::TIFF:
        return std::make_unique<TiffWriter>(file, options.isPacked);
    case RasterFormat::RGB:
        return std::make_unique<RgbWriter>(file);
    default:
        return std::make_unique<PostScriptWriter>(file);
    }
}

bool failToWrite(RasterFormat format, std::FILE* file)
{
    // The codecs do not hand it on, but nothing that succeeds clears it.
    const int reason = errno;
    const bool isFile = file && std::ferror(file) && reason != 0;
    SoError::post("the picture could not be written as %s%s%s",
                  kNames[static_cast<std::size_t>(format)], isFile ? ": " : "",
                  isFile ? std::strerror(reason) : "");
    return false;
}

bool writeRaster(RasterFormat format, std::FILE* file, const SbImage& image,
                 const RasterOptions& options)
{
    if (!file || image.isNull() || image.getComponents() < 3) {
        return failToWrite(format, nullptr);
    }
    errno = 0;
    const std::unique_ptr<RasterWriter> writer = makeRasterWriter(format, file, options);
    const int height = image.getHeight();
    bool ok = writer->begin(image.getWidth(), height, image.getComponents());
    for (int y = 0; y < height && ok; ++y) {
        ok = writer->put(image.getPixel(0, writer->isBottomUp() ? y : height - 1 - y));
    }
    return (ok && writer->end() && !std::ferror(file)) || failToWrite(format, file);
}

} // namespace kalmyr::detail
