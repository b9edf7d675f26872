#pragma once

#include <cstddef>
#include <cstdlib>

namespace kalmyr::detail {

/// The picture that a codec fills in: plain C data, since the libraries leave by longjmp.
struct RawImage {
    int width = 0;
    int height = 0;
    int components = 0; ///< 1 to 4 bytes a pixel
    unsigned char* bytes =
        nullptr; ///< rows from bottom to top; from std::malloc, the caller's to free
    char error[256] = {};

    /// False, with the reason in `error`, for sizes beyond the limits or too little memory.
    bool allocate(long long w, long long h, int numComponents);
    bool fail(const char* reason);
    /// Row `y` counted from the top, as most files do.
    unsigned char* rowFromTop(int y) const
    {
        return bytes
               + static_cast<std::size_t>(height - 1 - y) * static_cast<std::size_t>(width)
                     * static_cast<std::size_t>(components);
    }
};

/// Each reads a whole file in memory; false with the reason in `out.error`.
using Codec = bool (*)(const unsigned char* data, std::size_t size, RawImage& out);

bool readJpeg(const unsigned char* data, std::size_t size, RawImage& out);
bool readPng(const unsigned char* data, std::size_t size, RawImage& out);
bool readGif(const unsigned char* data, std::size_t size, RawImage& out);
bool readTiff(const unsigned char* data, std::size_t size, RawImage& out);
bool readBmp(const unsigned char* data, std::size_t size, RawImage& out);
bool readRgb(const unsigned char* data, std::size_t size, RawImage& out);

} // namespace kalmyr::detail
