#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>

#include <vector>

/// A picture of one colour that stands for a point.
struct SoMarker {
    SbVec2s size{0, 0};   ///< pixels
    SbVec2s center{0, 0}; ///< pixel that covers the point, counted from the lower left one
    /// Row by row from the bottom, size[0] * size[1] values; not 0: drawn.
    std::vector<unsigned char> pixels;
};

/// The markers that marker sets name by number: first those that are built in, then those that the
/// program adds. One table for the process; any thread may use it.
class KALMYR_API SoMarkerTable {
public:
    enum Shape {
        CIRCLE,
        CIRCLE_LINE,
        SQUARE,
        SQUARE_LINE,
        DIAMOND,
        DIAMOND_LINE,
        TRIANGLE,
        TRIANGLE_LINE,
        TRIANGLE_DOWN,
        TRIANGLE_DOWN_LINE,
        PLUS,
        CROSS,
        STAR,
        HORIZONTAL,
        VERTICAL,
        HOURGLASS,
        BOW_TIE,
        NUM_SHAPES
    };
    /// Width and height in pixels: 5, 7, 9 and 13.
    enum Size { TINY, SMALL, MEDIUM, LARGE, NUM_SIZES };
    static constexpr int kNumBuiltIn = int(NUM_SHAPES) * int(NUM_SIZES);
    static constexpr int kNone = -1; ///< no marker
    static constexpr int kMaxSize = 256;

    /// Number of a built-in marker.
    static int find(Shape shape, Size size) { return int(shape) * int(NUM_SIZES) + int(size); }

    /// Adds a marker and returns its number, which no other marker gets again. -1, with a debug
    /// error, when its size is not 1 to kMaxSize or there are not enough pixels.
    static int add(const SoMarker& marker);
    /// Exchanges a marker, the built-in ones too; shapes follow when they are next touched. False,
    /// with a debug error, as above or when there is none of that number.
    static bool replace(int number, const SoMarker& marker);
    /// One more than the highest number.
    static int getNum();
    /// False when there is no marker of that number.
    static bool get(int number, SoMarker& marker);
};
