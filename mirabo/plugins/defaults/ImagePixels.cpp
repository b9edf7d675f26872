#include "ImagePixels.h"

#include <kalmyr/base/SbImage.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace image_pixels {

namespace {

using Rgba = std::array<unsigned, 4>;

/// Source component of the red, green, blue and alpha of a shown pixel; -1: opaque.
std::array<int, 4> sources(int components, ImageChannels channels)
{
    const int alpha = alphaOf(components);
    if (channels != ImageChannels::All) {
        const int channel = std::min(
            static_cast<int>(channels) - static_cast<int>(ImageChannels::First), components - 1);
        return {channel, channel, channel, -1};
    }
    return components >= 3 ? std::array{0, 1, 2, alpha} : std::array{0, 0, 0, alpha};
}

/// Averages a block of pixels, of large ones some that are spread evenly; colours count as much as
/// they are opaque.
QRgb average(const unsigned char* block, std::ptrdiff_t stride, int components, int width,
             int height, const std::array<int, 4>& from)
{
    constexpr int kSamples = 8; // along a side
    const int stepX = (width + kSamples - 1) / kSamples;
    const int stepY = (height + kSamples - 1) / kSamples;
    Rgba sum{};
    unsigned weights = 0;
    unsigned count = 0;
    for (int y = stepY / 2; y < height; y += stepY) {
        const unsigned char* row = block + y * stride;
        for (int x = stepX / 2; x < width; x += stepX, ++count) {
            const unsigned char* pixel = row + static_cast<std::ptrdiff_t>(x) * components;
            const unsigned alpha = from[3] < 0 ? 255 : pixel[from[3]];
            for (std::size_t i = 0; i < 3; ++i)
                sum[i] += pixel[from[i]] * alpha;
            weights += alpha;
        }
    }
    if (weights == 0)
        return qRgba(0, 0, 0, 0);
    const auto part = [&](std::size_t i) {
        return static_cast<int>((sum[i] + weights / 2) / weights);
    };
    return qRgba(part(0), part(1), part(2), static_cast<int>((weights + count / 2) / count));
}

QRgb one(const unsigned char* pixel, const std::array<int, 4>& from)
{
    return qRgba(pixel[from[0]], pixel[from[1]], pixel[from[2]],
                 from[3] < 0 ? 255 : pixel[from[3]]);
}

} // namespace

int sliceCount(const SbImage& image)
{
    return image.isNull() ? 0 : std::max(image.getDepth(), 1);
}

int alphaOf(int components)
{
    return components == 2 || components == 4 ? components - 1 : -1;
}

QImage toQImage(const SbImage& image, int slice, ImageChannels channels, QRect part, int factor)
{
    const int width = image.getWidth();
    const int height = image.getHeight();
    part &= QRect(0, 0, width, height);
    if (slice < 0 || slice >= sliceCount(image) || part.isEmpty())
        return {};
    const int components = image.getComponents();
    const std::array<int, 4> from = sources(components, channels);
    const auto stride = static_cast<std::ptrdiff_t>(width) * components;
    const unsigned char* bottom = image.getBytes() + stride * height * slice;
    const auto rowAt = [&](int y) { return bottom + stride * (height - 1 - y); };
    QImage picture((part.width() + factor - 1) / factor, (part.height() + factor - 1) / factor,
                   from[3] < 0 ? QImage::Format_RGB32 : QImage::Format_ARGB32);
    if (picture.isNull())
        return {};
    for (int y = 0; y < picture.height(); ++y) {
        auto* to = reinterpret_cast<QRgb*>(picture.scanLine(y));
        const int top = part.top() + y * factor;
        const unsigned char* pixel =
            rowAt(top) + static_cast<std::ptrdiff_t>(part.left()) * components;
        const int rows = std::min(factor, part.bottom() + 1 - top);
        for (int x = 0; x < picture.width(); ++x, pixel += components * factor)
            to[x] = factor == 1 ? one(pixel, from)
                                : average(pixel, -stride, components,
                                          std::min(factor, part.width() - x * factor), rows, from);
    }
    return picture;
}

SbImage fromQImage(const QImage& picture)
{
    const QImage source = picture.convertToFormat(QImage::Format_RGBA8888);
    const int components = (picture.isGrayscale() ? 1 : 3) + (picture.hasAlphaChannel() ? 1 : 0);
    const int colors = components - (picture.hasAlphaChannel() ? 1 : 0);
    std::vector<unsigned char> bytes;
    bytes.reserve(static_cast<std::size_t>(source.width()) * source.height() * components);
    for (int y = source.height() - 1; y >= 0; --y) {
        const unsigned char* pixel = source.constScanLine(y);
        for (int x = 0; x < source.width(); ++x, pixel += 4) {
            bytes.insert(bytes.end(), pixel, pixel + colors);
            if (colors < components)
                bytes.push_back(pixel[3]);
        }
    }
    SbImage image;
    image.adopt(SbVec3i32(source.width(), source.height(), 0), components, std::move(bytes));
    return image;
}

} // namespace image_pixels
