#include "Flattening.h"

#include "ConvexPolygons.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace kalmyr::detail {

namespace {

constexpr float kShortestEdge = 0.1f; // Millimetres; shorter ones are not divided.
constexpr float kInvisible = 0.5f / 255;

std::span<const VectorVertex> cornersOf(const VectorDrawing& drawing, const VectorPrimitive& one)
{
    return {drawing.vertices.data() + one.first, one.count};
}

void copyPrimitive(const VectorDrawing& from, const VectorPrimitive& one, VectorDrawing& to)
{
    VectorPrimitive& copy = to.primitives.emplace_back(one);
    if (one.kind == VectorPrimitive::TEXT)
        return;
    copy.first = static_cast<std::uint32_t>(to.vertices.size());
    const auto corners = cornersOf(from, one);
    to.vertices.insert(to.vertices.end(), corners.begin(), corners.end());
}

/// Makes `drawing` what `rewrite(primitive, target)` put together from its primitives.
template <class Rewrite>
void rewritePrimitives(VectorDrawing& drawing, const Rewrite& rewrite)
{
    VectorDrawing target;
    target.vertices.reserve(drawing.vertices.size());
    target.primitives.reserve(drawing.primitives.size());
    for (const VectorPrimitive& one : drawing.primitives)
        rewrite(one, target);
    drawing.vertices.swap(target.vertices);
    drawing.primitives.swap(target.primitives);
}

// --- Images --------------------------------------------------------------------------------------

constexpr double kMaxSamples = 300000;
constexpr int kFewSamples = 12; // No gradient is fitted to less.

/// Pixels of an image by their places in it, colours from 0 to 1.
class Pixels {
public:
    explicit Pixels(const VectorImage& image) : m_image(image) {}

    int width() const { return m_image.pixels.getWidth(); }
    int height() const { return m_image.pixels.getHeight(); }
    double column(double x) const { return (x - m_image.x) / m_image.width * width(); }
    double row(double y) const { return (y - m_image.y) / m_image.height * height(); }

    /// Red, green, blue, alpha; places outside get those at the border.
    std::array<double, 4> at(int column, int row) const
    {
        const unsigned char* pixel = m_image.pixels.getPixel(std::clamp(column, 0, width() - 1),
                                                             std::clamp(row, 0, height() - 1));
        const double alpha = m_image.pixels.getComponents() == 4 ? pixel[3] / 255.0 : 1;
        return {pixel[0] / 255.0, pixel[1] / 255.0, pixel[2] / 255.0, alpha};
    }

private:
    const VectorImage& m_image;
};

/// The plane of least squares through the colours of pixels.
class ColorPlane {
public:
    void add(double x, double y, const std::array<double, 4>& pixel)
    {
        ++m_count;
        const double weight = pixel[3];
        if (weight <= 0)
            return;
        m_weight += weight;
        m_x += weight * x;
        m_y += weight * y;
        m_xx += weight * x * x;
        m_xy += weight * x * y;
        m_yy += weight * y * y;
        for (std::size_t i = 0; i < 3; ++i) {
            const double value = pixel[i];
            m_value[i] += weight * value;
            m_valueX[i] += weight * value * x;
            m_valueY[i] += weight * value * y;
            m_least[i] = std::min(m_least[i], value);
            m_most[i] = std::max(m_most[i], value);
        }
    }

    int count() const { return m_count; }
    double alpha() const { return m_count ? m_weight / m_count : 0; }

    void solve()
    {
        if (m_weight <= 0) {
            m_least = m_most;
            return;
        }
        m_x /= m_weight;
        m_y /= m_weight;
        const double xx = m_xx / m_weight - m_x * m_x;
        const double xy = m_xy / m_weight - m_x * m_y;
        const double yy = m_yy / m_weight - m_y * m_y;
        const double determinant = xx * yy - xy * xy;
        const bool sound = m_count >= kFewSamples && determinant > 1e-3 * xx * yy && xx * yy > 0.1;
        for (std::size_t i = 0; i < 3; ++i) {
            m_value[i] /= m_weight;
            const double x = m_valueX[i] / m_weight - m_value[i] * m_x;
            const double y = m_valueY[i] / m_weight - m_value[i] * m_y;
            m_slopeX[i] = sound ? (x * yy - y * xy) / determinant : 0;
            m_slopeY[i] = sound ? (y * xx - x * xy) / determinant : 0;
        }
    }
    float value(std::size_t i, double x, double y) const
    {
        const double plane = m_value[i] + m_slopeX[i] * (x - m_x) + m_slopeY[i] * (y - m_y);
        return static_cast<float>(std::clamp(plane, m_least[i], m_most[i]));
    }

private:
    using Triple = std::array<double, 3>;
    int m_count = 0;
    double m_weight = 0, m_x = 0, m_y = 0, m_xx = 0, m_xy = 0, m_yy = 0;
    Triple m_value{}, m_valueX{}, m_valueY{}, m_slopeX{}, m_slopeY{};
    Triple m_least{1, 1, 1}, m_most{0, 0, 0};
};

/// The columns between which a convex polygon holds the row, in an image's pixels.
std::pair<double, double> columnsInRow(std::span<const VectorVertex> corners, const Pixels& pixels,
                                       double row)
{
    double from = 1e30;
    double to = -1e30;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const VectorVertex& a = corners[i];
        const VectorVertex& b = corners[(i + 1) % corners.size()];
        const double rowA = pixels.row(a.y);
        const double rowB = pixels.row(b.y);
        if ((rowA <= row) == (rowB <= row))
            continue;
        const double share = (row - rowA) / (rowB - rowA);
        const double column = pixels.column(a.x + (double(b.x) - a.x) * share);
        from = std::min(from, column);
        to = std::max(to, column);
    }
    return {from, to};
}

void samplePixels(std::span<const VectorVertex> corners, const Pixels& pixels, ColorPlane& plane)
{
    const PageBox box = boxOf(corners);
    const double firstRow =
        std::clamp(std::floor(pixels.row(box.minY)), 0.0, double(pixels.height()));
    const double lastRow =
        std::clamp(std::ceil(pixels.row(box.maxY)), 0.0, double(pixels.height()));
    const double columns =
        std::min<double>(pixels.width(), pixels.column(box.maxX) - pixels.column(box.minX));
    const int step = std::max(
        1, static_cast<int>(std::ceil(std::sqrt(columns * (lastRow - firstRow) / kMaxSamples))));
    double shift = 0; // Rows begin at different columns, lest the steps beat with a pattern.
    for (int row = static_cast<int>(firstRow) + step / 2; row < lastRow; row += step) {
        const auto [from, to] = columnsInRow(corners, pixels, row + 0.5);
        shift = std::fmod(shift + 0.618 * step, step);
        if (from > to || from > pixels.width())
            continue;
        const int first = static_cast<int>(std::ceil(std::max(from, 0.5) - 0.5));
        for (int column = first + static_cast<int>(shift);
             column + 0.5 <= to && column < pixels.width(); column += step)
            plane.add(column + 0.5, row + 0.5, pixels.at(column, row));
    }
}

/// The pixel below a corner moved a little inwards.
void sampleCorner(VectorVertex& corner, const VectorVertex& middle, const Pixels& pixels)
{
    const VectorVertex place = between(corner, middle, 0.2);
    const double column = pixels.column(place.x) - 0.5;
    const double row = pixels.row(place.y) - 0.5;
    const int left = static_cast<int>(std::floor(std::clamp(column, -1.0, double(pixels.width()))));
    const int low = static_cast<int>(std::floor(std::clamp(row, -1.0, double(pixels.height()))));
    std::array<double, 4> sum{};
    for (const int dx : {0, 1})
        for (const int dy : {0, 1}) {
            const auto pixel = pixels.at(left + dx, low + dy);
            const double share = std::clamp(1 - std::abs(column - left - dx), 0.0, 1.0)
                                 * std::clamp(1 - std::abs(row - low - dy), 0.0, 1.0) * pixel[3];
            for (std::size_t i = 0; i < 3; ++i)
                sum[i] += share * pixel[i];
            sum[3] += share;
        }
    if (sum[3] > 0) {
        corner.red = static_cast<float>(sum[0] / sum[3]);
        corner.green = static_cast<float>(sum[1] / sum[3]);
        corner.blue = static_cast<float>(sum[2] / sum[3]);
    }
}

// --- Shading -------------------------------------------------------------------------------------

float length(const VectorVertex& a, const VectorVertex& b)
{
    return std::max(std::abs(a.x - b.x), std::abs(a.y - b.y));
}

void roundColor(VectorVertex& place)
{
    for (float* value : {&place.red, &place.green, &place.blue})
        *value = std::round(std::clamp(*value, 0.0f, 1.0f) * 255) / 255;
}

/// Divides one triangle after the other. A piece is a convex polygon with colours at its corners.
/// The edge whose ends differ most is cut in its middle, towards the middle of another edge that
/// will be cut as well if the colour there is nearly the same, so that a gradient ends as bands
/// across it; else a triangle is cut towards its third corner, a larger piece between corners.
/// That ends: a new edge is either never cut or shorter, as a way between colours, than the one
/// that was.
class ShadingDivider {
public:
    explicit ShadingDivider(float tolerance) : m_tolerance(tolerance) {}

    void divide(std::span<const VectorVertex> corners, float opacity, VectorDrawing& target)
    {
        m_pieces.assign(1, Corners(corners.begin(), corners.end()));
        while (!m_pieces.empty()) {
            Corners piece = std::move(m_pieces.back());
            m_pieces.pop_back();
            if (!cutEdge(piece) && !cutAcross(piece))
                emit(piece, opacity, target);
        }
    }

private:
    /// Whether to divide the edge. Depends on its ends alone, so that both triangles agree.
    bool isCut(const VectorVertex& a, const VectorVertex& b) const
    {
        return colorDifference(a, b) > m_tolerance && length(a, b) >= kShortestEdge;
    }

    static float colorDistance(const VectorVertex& a, const VectorVertex& b)
    {
        return std::hypot(a.red - b.red, a.green - b.green, a.blue - b.blue);
    }

    bool cutEdge(const Corners& piece)
    {
        const std::size_t size = piece.size();
        std::size_t widest = size;
        float most = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const VectorVertex& next = piece[(i + 1) % size];
            if (const float by = colorDistance(piece[i], next);
                isCut(piece[i], next) && by > most) {
                most = by;
                widest = i;
            }
        }
        if (widest == size)
            return false;
        // Round from the end of the edge to its beginning.
        const auto corner = [&](std::size_t i) -> const VectorVertex& {
            return piece[(widest + 1 + i) % size];
        };
        const VectorVertex start = middle(corner(size - 1), corner(0));
        float least = m_tolerance / 2;
        std::size_t partner = size;
        for (std::size_t i = 0; i + 1 < size; ++i) {
            const float by = colorDifference(start, middle(corner(i), corner(i + 1)));
            if (by <= least && isCut(corner(i), corner(i + 1))) {
                least = by;
                partner = i;
            }
        }
        if (partner == size && size > 3)
            return cutAtLeastDifference(piece);
        Corners left{start};
        Corners right;
        if (partner == size)
            partner = 1;
        else
            right.push_back(middle(corner(partner), corner(partner + 1)));
        for (std::size_t i = 0; i <= partner; ++i)
            left.push_back(corner(i));
        if (right.empty())
            right.push_back(corner(partner));
        else
            left.push_back(right.front());
        for (std::size_t i = partner + 1; i < size; ++i)
            right.push_back(corner(i));
        right.push_back(start);
        m_pieces.push_back(std::move(left));
        m_pieces.push_back(std::move(right));
        return true;
    }

    /// Edges are fine, but corners that are no neighbours differ: nobody else sees where they are
    /// parted.
    bool cutAcross(const Corners& piece)
    {
        const std::size_t size = piece.size();
        for (std::size_t i = 0; i < size; ++i)
            for (std::size_t k = i + 2; k < size; ++k)
                if (isCut(piece[i], piece[k]))
                    return cutAtLeastDifference(piece);
        return false;
    }

    bool cutAtLeastDifference(const Corners& piece)
    {
        const std::size_t size = piece.size();
        float least = 4;
        std::pair<std::size_t, std::size_t> ends;
        for (std::size_t i = 0; i < size; ++i)
            for (std::size_t k = i + 2; k < size; ++k)
                if (const float by = colorDistance(piece[i], piece[k]);
                    by < least && (i > 0 || k + 1 < size)) {
                    least = by;
                    ends = {i, k};
                }
        if (ends.second == 0)
            return false;
        const auto from = piece.begin() + static_cast<std::ptrdiff_t>(ends.first);
        const auto to = piece.begin() + static_cast<std::ptrdiff_t>(ends.second);
        Corners left(from, to + 1);
        Corners right(to, piece.end());
        right.insert(right.end(), piece.begin(), from + 1);
        m_pieces.push_back(std::move(left));
        m_pieces.push_back(std::move(right));
        return true;
    }

    static VectorVertex middle(const VectorVertex& a, const VectorVertex& b)
    {
        return {(a.x + b.x) / 2, (a.y + b.y) / 2, (a.red + b.red) / 2, (a.green + b.green) / 2,
                (a.blue + b.blue) / 2};
    }

    static void emit(const Corners& piece, float opacity, VectorDrawing& target)
    {
        VectorPrimitive& one = target.add(VectorPrimitive::POLYGON);
        one.opacity = opacity;
        VectorVertex color;
        for (const VectorVertex& corner : piece) {
            const float share = 1.0f / static_cast<float>(piece.size());
            color.red += share * corner.red;
            color.green += share * corner.green;
            color.blue += share * corner.blue;
        }
        roundColor(color);
        for (VectorVertex corner : piece) {
            setColor(corner, color);
            target.addVertex(corner);
        }
    }

    float m_tolerance;
    std::vector<Corners> m_pieces;
};

// --- Colours -------------------------------------------------------------------------------------

float luminance(float red, float green, float blue)
{
    return 0.2126f * red + 0.7152f * green + 0.0722f * blue;
}

float luminance(const VectorVertex& place)
{
    return luminance(place.red, place.green, place.blue);
}

/// The grey that stands for a luminance.
float toneOf(float luminance, SoVectorOutput::ColorMode mode)
{
    if (mode == SoVectorOutput::GREY)
        return std::clamp(luminance, 0.0f, 1.0f);
    return luminance < 0.5f ? 0.0f : 1.0f;
}

void convertImage(SbImage& image, SoVectorOutput::ColorMode mode)
{
    const auto components = static_cast<std::size_t>(image.getComponents());
    if (components < 3)
        return;
    unsigned char* bytes = image.edit();
    for (std::size_t i = 0; i < image.getByteCount(); i += components) {
        const float tone = toneOf(
            luminance(bytes[i] / 255.0f, bytes[i + 1] / 255.0f, bytes[i + 2] / 255.0f), mode);
        std::fill_n(bytes + i, 3, static_cast<unsigned char>(std::lround(tone * 255)));
    }
}

/// The dark and the bright part of a shaded triangle.
void splitAtHalf(std::span<const VectorVertex> corners, float opacity, VectorDrawing& target)
{
    for (const float tone : {0.0f, 1.0f}) {
        Corners part;
        const auto isIn = [&](float level) { return (level < 0.5f) == (tone == 0); };
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const VectorVertex& next = corners[(i + 1) % corners.size()];
            const float level = luminance(corners[i]);
            const float nextLevel = luminance(next);
            if (isIn(level))
                part.push_back(corners[i]);
            if (isIn(level) != isIn(nextLevel))
                part.push_back(
                    between(corners[i], next, (0.5 - level) / (double(nextLevel) - level)));
        }
        for (VectorVertex& corner : part)
            setColor(corner, {0, 0, tone, tone, tone});
        if (part.size() >= 3)
            addPolygon(target, part, opacity);
    }
}

/// Gradients of the background become steps where they pass the half.
void convertBackground(std::vector<VectorBackgroundStop>& stops, SoVectorOutput::ColorMode mode)
{
    std::vector<VectorBackgroundStop> result;
    float lastLevel = 0;
    for (std::size_t i = 0; i < stops.size(); ++i) {
        const SbColor& color = stops[i].color;
        const float level = luminance(color[0], color[1], color[2]);
        const float tone = toneOf(level, mode);
        if (mode == SoVectorOutput::BLACK_AND_WHITE && i > 0 && toneOf(lastLevel, mode) != tone) {
            const float share =
                stops[i - 1].share
                + (stops[i].share - stops[i - 1].share) * (0.5f - lastLevel) / (level - lastLevel);
            result.push_back({SbColor(1 - tone, 1 - tone, 1 - tone), share});
            result.push_back({SbColor(tone, tone, tone), share});
        }
        result.push_back({SbColor(tone, tone, tone), stops[i].share});
        lastLevel = level;
    }
    stops = std::move(result);
}

} // namespace

float fitImage(const VectorImage& image, std::span<VectorVertex> corners)
{
    const Pixels pixels(image);
    if (image.pixels.isNull() || image.pixels.getComponents() < 3 || image.width <= 0
        || image.height <= 0)
        return 1; // Nothing to be seen through: the polygon's own colours stay.
    VectorVertex middle;
    for (const VectorVertex& corner : corners) {
        middle.x += corner.x / static_cast<float>(corners.size());
        middle.y += corner.y / static_cast<float>(corners.size());
    }
    ColorPlane plane;
    samplePixels(corners, pixels, plane);
    if (plane.count() < kFewSamples) {
        for (VectorVertex& corner : corners)
            sampleCorner(corner, middle, pixels);
        const double column = std::clamp(pixels.column(middle.x), 0.0, double(pixels.width()));
        const double row = std::clamp(pixels.row(middle.y), 0.0, double(pixels.height()));
        return static_cast<float>(
            plane.count() ? plane.alpha()
                          : pixels.at(static_cast<int>(column), static_cast<int>(row))[3]);
    }
    plane.solve();
    for (VectorVertex& corner : corners) {
        const double x = pixels.column(corner.x);
        const double y = pixels.row(corner.y);
        corner.red = plane.value(0, x, y);
        corner.green = plane.value(1, x, y);
        corner.blue = plane.value(2, x, y);
    }
    return static_cast<float>(plane.alpha());
}

void averageImages(VectorDrawing& drawing)
{
    const auto isSeen = [](const VectorPrimitive& one) { return one.image >= 0; };
    if (std::none_of(drawing.primitives.begin(), drawing.primitives.end(), isSeen))
        return;
    Corners corners;
    rewritePrimitives(drawing, [&](const VectorPrimitive& one, VectorDrawing& target) {
        if (!isSeen(one) || one.kind != VectorPrimitive::POLYGON) {
            copyPrimitive(drawing, one, target);
            return;
        }
        const auto old = cornersOf(drawing, one);
        corners.assign(old.begin(), old.end());
        const auto& image = drawing.images[static_cast<std::size_t>(one.image)];
        const float opacity = one.opacity * fitImage(image, corners);
        if (opacity > kInvisible)
            addPolygon(target, corners, opacity);
    });
    drawing.images.clear();
}

void divideShading(VectorDrawing& drawing, float tolerance)
{
    ShadingDivider divider(std::clamp(tolerance, 1.0f / 255, 1.0f));
    rewritePrimitives(drawing, [&](const VectorPrimitive& one, VectorDrawing& target) {
        const auto corners = cornersOf(drawing, one);
        if (one.kind == VectorPrimitive::POLYGON && one.shaded && one.image < 0) {
            divider.divide(corners, one.opacity, target);
            return;
        }
        copyPrimitive(drawing, one, target);
        if (one.kind != VectorPrimitive::TEXT)
            for (std::size_t i = target.vertices.size() - one.count; i < target.vertices.size();
                 ++i)
                roundColor(target.vertices[i]);
    });
}

void convertColors(VectorDrawing& drawing, SoVectorOutput::ColorMode mode)
{
    if (mode == SoVectorOutput::COLOR)
        return;
    if (mode == SoVectorOutput::BLACK_AND_WHITE)
        rewritePrimitives(drawing, [&](const VectorPrimitive& one, VectorDrawing& target) {
            if (one.kind == VectorPrimitive::POLYGON && one.shaded && one.image < 0)
                splitAtHalf(cornersOf(drawing, one), one.opacity, target);
            else
                copyPrimitive(drawing, one, target);
        });
    for (VectorVertex& place : drawing.vertices) {
        const float tone = toneOf(luminance(place), mode);
        place.red = place.green = place.blue = tone;
    }
    for (VectorImage& image : drawing.images)
        convertImage(image.pixels, mode);
    convertBackground(drawing.background, mode);
}

} // namespace kalmyr::detail
