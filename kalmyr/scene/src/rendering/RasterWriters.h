#pragma once

#include <kalmyr/base/SbImage.h>

#include <cstdio>
#include <memory>

namespace kalmyr::detail {

enum class RasterFormat { PNG, JPEG, BMP, TIFF, RGB, POSTSCRIPT };

struct RasterOptions {
    float quality = 0.75f; ///< of JPEG, from 0 to 1
    bool isPacked = true;  ///< TIFF: without loss
};

/// Writes one picture row by row into an open file, which stays open. After a function has
/// returned false nothing more can be written.
class RasterWriter {
public:
    virtual ~RasterWriter() = default;
    /// Whether rows are to come from the bottom up; else from the top down.
    virtual bool isBottomUp() const { return false; }
    /// Whether the fourth component is kept: opacity, by which colours are not multiplied.
    virtual bool keepsOpacity() const { return false; }
    /// Called once, first. False when the format cannot hold such a picture. `components`: 3 or 4
    virtual bool begin(int width, int height, int components) = 0;
    virtual bool put(const unsigned char* row) = 0;
    /// Called once, when all rows were put.
    virtual bool end() = 0;
};
std::unique_ptr<RasterWriter> makeRasterWriter(RasterFormat format, std::FILE* file,
                                               const RasterOptions& options);

/// Posts the error that a picture could not be written, with the system's reason when the file has
/// failed: errno was 0 before the first byte. False.
bool failToWrite(RasterFormat format, std::FILE* file);
/// Writes a picture of 3 or 4 components, whose rows run from bottom to top. False, with an error
/// posted, for a null image or when writing fails.
bool writeRaster(RasterFormat format, std::FILE* file, const SbImage& image,
                 const RasterOptions& options = {});

} // namespace kalmyr::detail
