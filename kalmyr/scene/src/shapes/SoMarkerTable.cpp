#include <kalmyr/shapes/SoMarkerTable.h>

#include <kalmyr/base/SoDebugError.h>

#include <cstdlib>
#include <mutex>

namespace {

constexpr int kSizes[] = {5, 7, 9, 13};

/// Whether the filled form of a shape covers a pixel; the middle is at 0 0, the border at `r`.
bool covers(SoMarkerTable::Shape shape, int x, int y, int r)
{
    const int ax = std::abs(x), ay = std::abs(y);
    switch (shape) {
    case SoMarkerTable::CIRCLE:
    case SoMarkerTable::CIRCLE_LINE:
        return 4 * (x * x + y * y) <= (2 * r + 1) * (2 * r + 1);
    case SoMarkerTable::DIAMOND:
    case SoMarkerTable::DIAMOND_LINE:
        return ax + ay <= r;
    case SoMarkerTable::TRIANGLE:
    case SoMarkerTable::TRIANGLE_LINE:
        return 2 * ax <= r - y;
    case SoMarkerTable::TRIANGLE_DOWN:
    case SoMarkerTable::TRIANGLE_DOWN_LINE:
        return 2 * ax <= r + y;
    case SoMarkerTable::PLUS:
        return x == 0 || y == 0;
    case SoMarkerTable::CROSS:
        return ax == ay;
    case SoMarkerTable::STAR:
        return x == 0 || y == 0 || ax == ay;
    case SoMarkerTable::HORIZONTAL:
        return y == 0;
    case SoMarkerTable::VERTICAL:
        return x == 0;
    case SoMarkerTable::HOURGLASS:
        return ax <= ay;
    case SoMarkerTable::BOW_TIE:
        return ay <= ax;
    default:
        return true;
    }
}

bool isLine(SoMarkerTable::Shape shape)
{
    return shape == SoMarkerTable::CIRCLE_LINE || shape == SoMarkerTable::SQUARE_LINE
           || shape == SoMarkerTable::DIAMOND_LINE || shape == SoMarkerTable::TRIANGLE_LINE
           || shape == SoMarkerTable::TRIANGLE_DOWN_LINE;
}

SoMarker makeBuiltIn(SoMarkerTable::Shape shape, int size)
{
    const int r = size / 2;
    const auto inside = [&](int x, int y) {
        return std::abs(x) <= r && std::abs(y) <= r && covers(shape, x, y, r);
    };
    SoMarker marker;
    marker.size = SbVec2s(static_cast<short>(size), static_cast<short>(size));
    marker.center = SbVec2s(static_cast<short>(r), static_cast<short>(r));
    for (int y = -r; y <= r; ++y) {
        for (int x = -r; x <= r; ++x) {
            const bool within = isLine(shape) && inside(x - 1, y) && inside(x + 1, y)
                                && inside(x, y - 1) && inside(x, y + 1);
            marker.pixels.push_back(inside(x, y) && !within ? 1 : 0);
        }
    }
    return marker;
}

struct Table {
    std::mutex mutex;
    std::vector<SoMarker> markers;

    Table()
    {
        for (int shape = 0; shape < SoMarkerTable::NUM_SHAPES; ++shape)
            for (const int size : kSizes)
                markers.push_back(makeBuiltIn(static_cast<SoMarkerTable::Shape>(shape), size));
    }
};

Table& table()
{
    static Table s_table;
    return s_table;
}

bool isUsable(const SoMarker& marker, const char* where)
{
    const int width = marker.size[0], height = marker.size[1];
    if (width < 1 || height < 1 || width > SoMarkerTable::kMaxSize
        || height > SoMarkerTable::kMaxSize) {
        SoDebugError::post(where, "a marker of %d by %d pixels: 1 to %d are possible", width,
                           height, SoMarkerTable::kMaxSize);
        return false;
    }
    if (marker.pixels.size()
        != static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {
        SoDebugError::post(where, "a marker of %d by %d pixels does not have so many values", width,
                           height);
        return false;
    }
    return true;
}

} // namespace

int SoMarkerTable::add(const SoMarker& marker)
{
    if (!isUsable(marker, "SoMarkerTable::add"))
        return kNone;
    const std::scoped_lock lock(table().mutex);
    table().markers.push_back(marker);
    return static_cast<int>(table().markers.size()) - 1;
}

bool SoMarkerTable::replace(int number, const SoMarker& marker)
{
    if (!isUsable(marker, "SoMarkerTable::replace"))
        return false;
    {
        const std::scoped_lock lock(table().mutex);
        if (number >= 0 && static_cast<std::size_t>(number) < table().markers.size()) {
            table().markers[static_cast<std::size_t>(number)] = marker;
            return true;
        }
    }
    SoDebugError::post("SoMarkerTable::replace", "there is no marker %d", number);
    return false;
}

int SoMarkerTable::getNum()
{
    const std::scoped_lock lock(table().mutex);
    return static_cast<int>(table().markers.size());
}

bool SoMarkerTable::get(int number, SoMarker& marker)
{
    const std::scoped_lock lock(table().mutex);
    if (number < 0 || static_cast<std::size_t>(number) >= table().markers.size())
        return false;
    marker = table().markers[static_cast<std::size_t>(number)];
    return true;
}
