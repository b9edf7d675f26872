#include "ImageCodecs.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <tiffio.h>

namespace kalmyr::detail {

namespace {

struct Source {
    const unsigned char* data;
    std::uint64_t size;
    std::uint64_t at;
    RawImage* out;
};

tmsize_t readSome(thandle_t handle, void* to, tmsize_t count)
{
    auto* s = static_cast<Source*>(handle);
    const std::uint64_t left = s->at < s->size ? s->size - s->at : 0;
    const std::uint64_t n =
        std::min<std::uint64_t>(left, static_cast<std::uint64_t>(std::max<tmsize_t>(count, 0)));
    if (n)
        std::memcpy(to, s->data + s->at, n);
    s->at += n;
    return static_cast<tmsize_t>(n);
}

toff_t seekTo(thandle_t handle, toff_t offset, int whence)
{
    auto* s = static_cast<Source*>(handle);
    s->at = whence == SEEK_SET ? offset : whence == SEEK_CUR ? s->at + offset : s->size + offset;
    return s->at;
}

int keepError(TIFF*, void* data, const char*, const char* pattern, va_list arguments)
{
    auto* out = static_cast<RawImage*>(data);
    if (!out->error[0])
        std::vsnprintf(out->error, sizeof out->error, pattern, arguments);
    return 1;
}

int ignoreWarning(TIFF*, void*, const char*, const char*, va_list)
{
    return 1;
}

TIFF* openSource(Source& source)
{
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (!options)
        return nullptr;
    TIFFOpenOptionsSetErrorHandlerExtR(options, keepError, source.out);
    TIFFOpenOptionsSetWarningHandlerExtR(options, ignoreWarning, nullptr);
    TIFF* file = TIFFClientOpenExt(
        "picture", "rm", &source, readSome,
        [](thandle_t, void*, tmsize_t) -> tmsize_t { return 0; }, seekTo,
        [](thandle_t) { return 0; },
        [](thandle_t h) -> toff_t { return static_cast<Source*>(h)->size; },
        [](thandle_t, void**, toff_t*) { return 0; }, [](thandle_t, void*, toff_t) {}, options);
    TIFFOpenOptionsFree(options);
    return file;
}

int componentsOf(TIFF* file)
{
    std::uint16_t samples = 1, photometric = PHOTOMETRIC_RGB, extras = 0;
    std::uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(file, TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetField(file, TIFFTAG_PHOTOMETRIC, &photometric);
    TIFFGetFieldDefaulted(file, TIFFTAG_EXTRASAMPLES, &extras, &kinds);
    const bool grey =
        photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
    return (grey ? 1 : 3) + (extras > 0 ? 1 : 0);
}

/// The library's colours are multiplied by the opacity, ours are not.
unsigned char straight(std::uint32_t color, std::uint32_t alpha)
{
    constexpr std::uint32_t kOpaque = 255;
    return static_cast<unsigned char>(
        alpha == 0 ? 0 : std::min(kOpaque, (color * kOpaque + alpha / 2) / alpha));
}

void unpack(const std::uint32_t* pixels, RawImage& out)
{
    const std::size_t count =
        static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height);
    const bool hasAlpha = out.components % 2 == 0;
    unsigned char* to = out.bytes;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t p = pixels[i];
        const std::uint32_t alpha = hasAlpha ? TIFFGetA(p) : 255;
        *to++ = straight(TIFFGetR(p), alpha);
        if (out.components > 2) {
            *to++ = straight(TIFFGetG(p), alpha);
            *to++ = straight(TIFFGetB(p), alpha);
        }
        if (hasAlpha)
            *to++ = static_cast<unsigned char>(alpha);
    }
}

} // namespace

bool readTiff(const unsigned char* data, std::size_t size, RawImage& out)
{
    Source source{data, size, 0, &out};
    TIFF* file = openSource(source);
    if (!file)
        return false;
    std::uint32_t width = 0, height = 0;
    TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(file, TIFFTAG_IMAGELENGTH, &height);
    bool ok = out.allocate(width, height, componentsOf(file));
    auto* pixels =
        ok ? static_cast<std::uint32_t*>(std::malloc(static_cast<std::size_t>(width) * height * 4))
           : nullptr;
    if (ok && !pixels)
        ok = out.fail("not enough memory");
    if (ok)
        ok = TIFFReadRGBAImageOriented(file, width, height, pixels, ORIENTATION_BOTLEFT, 1) != 0;
    if (ok)
        unpack(pixels, out);
    std::free(pixels);
    TIFFClose(file);
    return ok;
}

} // namespace kalmyr::detail
