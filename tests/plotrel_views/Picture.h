#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

/// A picture of three bytes a pixel, rows from top to bottom.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> bytes;

    const unsigned char* at(int x, int y) const
    {
        return bytes.data() + 3 * (static_cast<std::size_t>(y) * width + x);
    }
    int difference(const Picture& other, int x, int y) const
    {
        int most = 0;
        for (int c = 0; c < 3; ++c)
            most = std::max(most, std::abs(at(x, y)[c] - other.at(x, y)[c]));
        return most;
    }
};

/// A binary PPM file; an empty picture when it cannot be read.
inline Picture readPpm(const std::string& name)
{
    Picture picture;
    std::FILE* file = std::fopen(name.c_str(), "rb");
    if (!file)
        return picture;
    int width = 0, height = 0, largest = 0;
    const auto next = [file](int& number) {
        while (std::fscanf(file, " %d", &number) != 1) // a comment
            if (std::fscanf(file, "#%*[^\n]") < 0)
                return false;
        return true;
    };
    if (std::fgetc(file) == 'P' && std::fgetc(file) == '6' && next(width) && next(height)
        && next(largest) && std::fgetc(file) >= 0 && width > 0 && height > 0 && largest == 255) {
        picture.bytes.resize(3 * static_cast<std::size_t>(width) * height);
        if (std::fread(picture.bytes.data(), 1, picture.bytes.size(), file)
            == picture.bytes.size()) {
            picture.width = width;
            picture.height = height;
        }
    }
    std::fclose(file);
    return picture;
}

inline void writePpm(const std::string& name, const Picture& picture)
{
    if (std::FILE* file = std::fopen(name.c_str(), "wb")) {
        std::fprintf(file, "P6\n%d %d\n255\n", picture.width, picture.height);
        std::fwrite(picture.bytes.data(), 1, picture.bytes.size(), file);
        std::fclose(file);
    }
}

/// How far two pictures differ away from the edges of the first one.
struct Likeness {
    double mean = 255;   ///< mean difference of the colour components
    double offShare = 1; ///< of pixels of which one component is off by more than 16
    double compared = 0; ///< share of pixels that are compared
};

/// Pixels within two pixels of a sudden change of colour are left out: smoothing, and the last bit
/// of where an edge lies, differ from program to program.
inline Likeness compare(const Picture& expected, const Picture& found)
{
    constexpr int kEdge = 24, kAround = 2, kOff = 16;
    Likeness likeness;
    const int w = expected.width, h = expected.height;
    if (w == 0 || found.width != w || found.height != h)
        return likeness;
    std::vector<unsigned char> isEdge(static_cast<std::size_t>(w) * h, 0);
    const auto mark = [&](int x, int y) {
        for (int dy = -kAround; dy <= kAround; ++dy)
            for (int dx = -kAround; dx <= kAround; ++dx)
                if (x + dx >= 0 && x + dx < w && y + dy >= 0 && y + dy < h)
                    isEdge[static_cast<std::size_t>(y + dy) * w + x + dx] = 1;
    };
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            int change = 0;
            for (int c = 0; c < 3; ++c) {
                if (x + 1 < w)
                    change =
                        std::max(change, std::abs(expected.at(x, y)[c] - expected.at(x + 1, y)[c]));
                if (y + 1 < h)
                    change =
                        std::max(change, std::abs(expected.at(x, y)[c] - expected.at(x, y + 1)[c]));
            }
            if (change > kEdge)
                mark(x, y);
        }
    }
    double sum = 0;
    long compared = 0, off = 0;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            if (isEdge[static_cast<std::size_t>(y) * w + x])
                continue;
            ++compared;
            for (int c = 0; c < 3; ++c)
                sum += std::abs(expected.at(x, y)[c] - found.at(x, y)[c]) / 3.0;
            off += expected.difference(found, x, y) > kOff ? 1 : 0;
        }
    }
    likeness.mean = compared ? sum / static_cast<double>(compared) : 0;
    likeness.offShare = compared ? static_cast<double>(off) / static_cast<double>(compared) : 0;
    likeness.compared = static_cast<double>(compared) / (static_cast<double>(w) * h);
    return likeness;
}
