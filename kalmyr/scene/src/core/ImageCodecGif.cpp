#include "ImageCodecs.h"

#include <algorithm>
#include <cstring>

#include <gif_lib.h>

namespace kalmyr::detail {

namespace {

struct Source {
    const unsigned char* at;
    std::size_t left;
};

int readSome(GifFileType* file, GifByteType* to, int count)
{
    auto* source = static_cast<Source*>(file->UserData);
    const std::size_t n = std::min(source->left, static_cast<std::size_t>(count));
    std::memcpy(to, source->at, n);
    source->at += n;
    source->left -= n;
    return static_cast<int>(n);
}

bool failWith(RawImage& out, int code)
{
    const char* reason = GifErrorString(code);
    return out.fail(reason ? reason : "the file is damaged");
}

/// Reads extension blocks; keeps the transparent colour's number.
bool readExtension(GifFileType* file, int& transparent)
{
    int code = 0;
    GifByteType* block = nullptr;
    if (DGifGetExtension(file, &code, &block) == GIF_ERROR)
        return false;
    if (code == GRAPHICS_EXT_FUNC_CODE && block) {
        GraphicsControlBlock control;
        if (DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK)
            transparent = control.TransparentColor;
    }
    while (block) {
        if (DGifGetExtensionNext(file, &block) == GIF_ERROR)
            return false;
    }
    return true;
}

void putRow(const RawImage& out, const GifFileType* file, const ColorMapObject* colors,
            int transparent, int y, const GifByteType* row)
{
    const GifImageDesc& place = file->Image;
    const int top = place.Top + y;
    if (top < 0 || top >= out.height)
        return;
    for (int x = 0; x < place.Width; ++x) {
        const int left = place.Left + x;
        if (left < 0 || left >= out.width || row[x] == transparent || row[x] >= colors->ColorCount)
            continue;
        const GifColorType& c = colors->Colors[row[x]];
        unsigned char* pixel = out.rowFromTop(top) + static_cast<std::size_t>(left) * 4;
        pixel[0] = c.Red;
        pixel[1] = c.Green;
        pixel[2] = c.Blue;
        pixel[3] = 255;
    }
}

bool readFrame(GifFileType* file, int transparent, RawImage& out)
{
    if (DGifGetImageDesc(file) == GIF_ERROR)
        return failWith(out, file->Error);
    const GifImageDesc& place = file->Image;
    const ColorMapObject* colors = place.ColorMap ? place.ColorMap : file->SColorMap;
    if (!colors || place.Width < 1 || place.Height < 1)
        return out.fail("a frame without colours or pixels");
    if (!out.allocate(std::max(file->SWidth, place.Width), std::max(file->SHeight, place.Height),
                      4))
        return false;
    auto* row = static_cast<GifByteType*>(std::malloc(static_cast<std::size_t>(place.Width)));
    static constexpr struct {
        int start, step;
    } kPasses[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}, {0, 1}};
    bool ok = row != nullptr;
    for (int pass = place.Interlace ? 0 : 4; ok && pass < (place.Interlace ? 4 : 5); ++pass) {
        for (int y = kPasses[pass].start; ok && y < place.Height; y += kPasses[pass].step) {
            ok = DGifGetLine(file, row, place.Width) == GIF_OK;
            if (ok)
                putRow(out, file, colors, transparent, y, row);
        }
    }
    std::free(row);
    return ok || failWith(out, file->Error);
}

bool readFirstFrame(GifFileType* file, RawImage& out)
{
    int transparent = NO_TRANSPARENT_COLOR;
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(file, &type) == GIF_ERROR)
            return failWith(out, file->Error);
        if (type == IMAGE_DESC_RECORD_TYPE)
            return readFrame(file, transparent, out);
        if (type != EXTENSION_RECORD_TYPE)
            return out.fail("there is no picture in the file");
        if (!readExtension(file, transparent))
            return failWith(out, file->Error);
    }
}

/// Without a transparent pixel three components say the same.
void dropFullAlpha(RawImage& out)
{
    const std::size_t count =
        static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height);
    for (std::size_t i = 0; i < count; ++i) {
        if (out.bytes[i * 4 + 3] != 255)
            return;
    }
    for (std::size_t i = 0; i < count; ++i)
        std::memmove(out.bytes + i * 3, out.bytes + i * 4, 3);
    out.components = 3;
}

} // namespace

bool readGif(const unsigned char* data, std::size_t size, RawImage& out)
{
    Source source{data, size};
    int error = 0;
    GifFileType* file = DGifOpen(&source, readSome, &error);
    if (!file)
        return failWith(out, error);
    const bool ok = readFirstFrame(file, out);
    DGifCloseFile(file, &error);
    if (ok)
        dropFullAlpha(out);
    return ok;
}

} // namespace kalmyr::detail
