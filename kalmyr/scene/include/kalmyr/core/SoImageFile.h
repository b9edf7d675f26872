#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbString.h>

#include <span>
#include <string>

/// Picture files. Formats are told apart by their first bytes, not by the file's name.
class KALMYR_API SoImageFile {
public:
    enum Format { UNKNOWN, JPEG, PNG, GIF, TIFF, BMP, RGB };

    /// Width and height beyond this, or more pixels than kMaxPixels, are refused.
    static constexpr int kMaxSide = 32768;
    static constexpr long long kMaxPixels = 1LL << 28;

    /// The format that the first bytes of a file show.
    static Format detect(std::span<const unsigned char> bytes);

    /// Reads a picture. False, `image` null and the reason in `error`, when it cannot.
    static bool read(const SbString& path, SbImage& image, SbString* error = nullptr);
    static bool readMemory(std::span<const unsigned char> bytes, SbImage& image,
                           SbString* error = nullptr);

    /// Writes a PNG of the components of the image, of its first slice if it has several. False,
    /// with the reason, when it cannot.
    static bool writePng(const SbString& path, const SbImage& image, SbString* error = nullptr);
    /// The same into memory; `bytes` is empty after a failure.
    static bool writePngMemory(const SbImage& image, std::string& bytes, SbString* error = nullptr);

    /// `name` when there is such a file or it is absolute, else the same name inside `directory`.
    static SbString findFile(const SbString& name, const SbString& directory);

    SoImageFile() = delete;
};
