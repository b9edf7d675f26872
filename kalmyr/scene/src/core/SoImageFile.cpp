#include <kalmyr/core/SoImageFile.h>

#include "ImageCodecs.h"
#include "PercentText.h"

#include <kalmyr/base/SbFileHelper.h>

#include <cstring>
#include <string_view>
#include <vector>

#include <png.h>

using kalmyr::detail::RawImage;

bool RawImage::fail(const char* reason)
{
    std::strncpy(error, reason, sizeof error - 1);
    return false;
}

bool RawImage::allocate(long long w, long long h, int numComponents)
{
    if (w < 1 || h < 1)
        return fail("the picture has no pixels");
    if (w > SoImageFile::kMaxSide || h > SoImageFile::kMaxSide || w * h > SoImageFile::kMaxPixels)
        return fail("the picture is too large");
    width = static_cast<int>(w);
    height = static_cast<int>(h);
    components = numComponents;
    std::free(bytes);
    bytes = static_cast<unsigned char*>(
        std::calloc(static_cast<std::size_t>(w * h), static_cast<std::size_t>(components)));
    return bytes || fail("not enough memory");
}

namespace {

struct Signature {
    std::string_view start;
    SoImageFile::Format format;
    kalmyr::detail::Codec read;
};

using namespace std::string_view_literals;

constexpr Signature kSignatures[] = {
    {"\xff\xd8\xff"sv, SoImageFile::JPEG, kalmyr::detail::readJpeg},
    {"\x89PNG\r\n\x1a\n"sv, SoImageFile::PNG, kalmyr::detail::readPng},
    {"GIF8"sv, SoImageFile::GIF, kalmyr::detail::readGif},
    {"II*\0"sv, SoImageFile::TIFF, kalmyr::detail::readTiff},
    {"MM\0*"sv, SoImageFile::TIFF, kalmyr::detail::readTiff},
    {"BM"sv, SoImageFile::BMP, kalmyr::detail::readBmp},
    {"\x01\xda"sv, SoImageFile::RGB, kalmyr::detail::readRgb},
};

const Signature* findSignature(std::span<const unsigned char> bytes)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (const Signature& s : kSignatures) {
        if (text.starts_with(s.start))
            return &s;
    }
    return nullptr;
}

bool fail(SbString* error, const char* reason)
{
    if (error)
        *error = reason;
    return false;
}

} // namespace

SoImageFile::Format SoImageFile::detect(std::span<const unsigned char> bytes)
{
    const Signature* found = findSignature(bytes);
    return found ? found->format : UNKNOWN;
}

bool SoImageFile::readMemory(std::span<const unsigned char> bytes, SbImage& image, SbString* error)
{
    image.makeNull();
    const Signature* found = findSignature(bytes);
    if (!found)
        return fail(error, bytes.empty() ? "the file is empty" : "not a picture of a known format");
    RawImage raw;
    const bool ok = found->read(bytes.data(), bytes.size(), raw);
    if (ok)
        image.setValue(SbVec2i32(raw.width, raw.height), raw.components, raw.bytes);
    std::free(raw.bytes);
    return ok || fail(error, raw.error[0] ? raw.error : "the file is damaged");
}

bool SoImageFile::read(const SbString& path, SbImage& image, SbString* error)
{
    image.makeNull();
    // Not mapped: another program may cut the file meanwhile.
    std::vector<char> bytes;
    return SbFileHelper::readFile(path, bytes, error)
           && readMemory({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()},
                         image, error);
}

bool SoImageFile::writePng(const SbString& path, const SbImage& image, SbString* error)
{
    std::string bytes;
    return writePngMemory(image, bytes, error) && SbFileHelper::writeFile(path, bytes, error);
}

bool SoImageFile::writePngMemory(const SbImage& image, std::string& bytes, SbString* error)
{
    bytes.clear();
    if (image.isNull())
        return fail(error, "there is no picture to write");
    static constexpr png_uint_32 kFormats[] = {PNG_FORMAT_GRAY, PNG_FORMAT_GA, PNG_FORMAT_RGB,
                                               PNG_FORMAT_RGBA};
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(image.getWidth());
    png.height = static_cast<png_uint_32>(image.getHeight());
    png.format = kFormats[image.getComponents() - 1];
    const auto stride =
        -static_cast<png_int_32>(PNG_IMAGE_ROW_STRIDE(png)); // rows from bottom to top
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png);
    std::string packed(size, '\0');
    if (!png_image_write_to_memory(&png, packed.data(), &size, 0, image.getBytes(), stride,
                                   nullptr))
        return fail(error, png.message);
    packed.resize(size);
    bytes = std::move(packed);
    return true;
}

SbString SoImageFile::findFile(const SbString& name, const SbString& directory)
{
    const bool isBare = directory.isEmpty() || SbFileHelper::isAbsolute(name);
    const SbString beside = isBare ? name : SbFileHelper::join(directory, name);
    if (SbFileHelper::isAccessible(beside))
        return beside;
    if (SbFileHelper::isAccessible(name))
        return name;
    // Names may be written as addresses are.
    const SbString decoded(kalmyr::detail::decodePercent(beside.view()));
    return SbFileHelper::isAccessible(decoded) ? decoded : beside;
}
