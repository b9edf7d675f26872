#include "ImageCodecs.h"
#include "MovieFile.h"

#include <kalmyr/base/SbFileHelper.h>
#include <kalmyr/core/SoImageFile.h>

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

/// Reads extension blocks; keeps what is said of the next frame.
bool readExtension(GifFileType* file, GraphicsControlBlock& next)
{
    int code = 0;
    GifByteType* block = nullptr;
    if (DGifGetExtension(file, &code, &block) == GIF_ERROR)
        return false;
    if (code == GRAPHICS_EXT_FUNC_CODE && block) {
        GraphicsControlBlock control;
        if (DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK)
            next = control;
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

/// Draws the frame over what is in the picture; a picture without pixels becomes as large as the
/// screen of the file.
bool readFrame(GifFileType* file, int transparent, RawImage& out)
{
    if (DGifGetImageDesc(file) == GIF_ERROR)
        return failWith(out, file->Error);
    const GifImageDesc& place = file->Image;
    const ColorMapObject* colors = place.ColorMap ? place.ColorMap : file->SColorMap;
    if (!colors || place.Width < 1 || place.Height < 1)
        return out.fail("a frame without colours or pixels");
    if (!out.bytes
        && !out.allocate(std::max(file->SWidth, place.Width), std::max(file->SHeight, place.Height),
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
    GraphicsControlBlock control{};
    control.TransparentColor = NO_TRANSPARENT_COLOR;
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(file, &type) == GIF_ERROR)
            return failWith(out, file->Error);
        if (type == IMAGE_DESC_RECORD_TYPE)
            return readFrame(file, control.TransparentColor, out);
        if (type != EXTENSION_RECORD_TYPE)
            return out.fail("there is no picture in the file");
        if (!readExtension(file, control))
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

/// Empties the place of the frame that was read last.
void clearFrame(const GifFileType* file, RawImage& out)
{
    const GifImageDesc& place = file->Image;
    for (int y = std::max(0, place.Top); y < std::min(out.height, place.Top + place.Height); ++y) {
        const int left = std::max(0, place.Left), right = std::min(out.width, left + place.Width);
        if (right > left)
            std::memset(out.rowFromTop(y) + static_cast<std::size_t>(left) * 4, 0,
                        static_cast<std::size_t>(right - left) * 4);
    }
}

/// Shows nothing for no time: what players make of it.
constexpr double kDelayOfNone = 0.1;

bool readFrames(GifFileType* file, RawImage& canvas, std::vector<MovieFrame>& frames)
{
    GraphicsControlBlock control{};
    control.TransparentColor = NO_TRANSPARENT_COLOR;
    std::size_t bytes = 0;
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(file, &type) == GIF_ERROR)
            return failWith(canvas, file->Error);
        if (type == TERMINATE_RECORD_TYPE)
            return !frames.empty() || canvas.fail("there is no picture in the file");
        if (type == EXTENSION_RECORD_TYPE) {
            if (!readExtension(file, control))
                return failWith(canvas, file->Error);
            continue;
        }
        if (type != IMAGE_DESC_RECORD_TYPE)
            continue;
        const SbImage before = frames.empty() ? SbImage() : frames.back().image;
        if (!readFrame(file, control.TransparentColor, canvas))
            return false;
        MovieFrame& frame = frames.emplace_back();
        frame.image.setValue(SbVec2i32(canvas.width, canvas.height), 4, canvas.bytes);
        frame.seconds = control.DelayTime > 0 ? control.DelayTime / 100.0 : kDelayOfNone;
        bytes += frame.image.getByteCount();
        if (frames.size() > kMaxMovieFrames || bytes > kMaxMovieBytes)
            return canvas.fail("the film is too large");
        if (control.DisposalMode == DISPOSE_BACKGROUND)
            clearFrame(file, canvas);
        else if (control.DisposalMode == DISPOSE_PREVIOUS && !before.isNull())
            std::memcpy(canvas.bytes, before.getBytes(), before.getByteCount());
        control = GraphicsControlBlock{};
        control.TransparentColor = NO_TRANSPARENT_COLOR;
    }
}

} // namespace

bool readMovie(const SbString& path, std::vector<MovieFrame>& frames, SbString& reason)
{
    frames.clear();
    std::vector<char> bytes;
    if (!SbFileHelper::readFile(path, bytes, &reason))
        return false;
    const std::span data(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    if (SoImageFile::detect(data) != SoImageFile::GIF) {
        reason = "not a film of a known format";
        return false;
    }
    Source source{data.data(), data.size()};
    int error = 0;
    RawImage canvas;
    GifFileType* file = DGifOpen(&source, readSome, &error);
    const bool ok = file ? readFrames(file, canvas, frames) : failWith(canvas, error);
    if (file)
        DGifCloseFile(file, &error);
    std::free(canvas.bytes);
    if (!ok) {
        reason = canvas.error;
        frames.clear();
    }
    return ok;
}

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
