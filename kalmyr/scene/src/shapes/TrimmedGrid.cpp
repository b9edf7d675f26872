#include "TrimmedGrid.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <deque>
#include <memory>
#include <random>
#include <utility>

#include <GL/glu.h>

namespace kalmyr::detail {

namespace {

using Callback = void (*)();

double turn(const SbVec2d& a, const SbVec2d& b, const SbVec2d& c)
{
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

/// Twice the signed area.
template <class Points, class At>
double areaOf(const Points& points, At&& at)
{
    double sum = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const SbVec2d& a = at(points[i]);
        const SbVec2d& b = at(points[(i + 1) % points.size()]);
        sum += a[0] * b[1] - a[1] * b[0];
    }
    return sum;
}

/// Whether edges cross so often, by a sample of pairs, that to cut them would take minutes.
bool crossEverywhere(std::span<const std::vector<SbVec2d>> outlines)
{
    constexpr std::size_t kSamples = 20'000;
    constexpr double kCrossingsPerCorner = 30;
    std::vector<std::pair<SbVec2d, SbVec2d>> edges;
    for (const auto& outline : outlines) {
        for (std::size_t i = 0; i < outline.size(); ++i)
            edges.emplace_back(outline[i], outline[(i + 1) % outline.size()]);
    }
    if (edges.size() < 500)
        return false;
    std::minstd_rand random; // always the same sample, for the same picture every time
    std::size_t crossings = 0;
    for (std::size_t i = 0; i < kSamples; ++i) {
        const auto& [a, b] = edges[random() % edges.size()];
        const auto& [c, d] = edges[random() % edges.size()];
        crossings += turn(a, b, c) * turn(a, b, d) < 0 && turn(c, d, a) * turn(c, d, b) < 0;
    }
    const double pairs = 0.5 * double(edges.size()) * double(edges.size());
    return double(crossings) / kSamples * pairs > kCrossingsPerCorner * double(edges.size());
}

} // namespace

/// Keeps what a contour goes round more often counter-clockwise than clockwise.
struct TrimmedGrid::Tessellator {
    struct Point {
        std::array<double, 3> position;
        std::uint32_t number;
    };

    TrimmedGrid& grid;
    std::unique_ptr<GLUtesselator, decltype(&gluDeleteTess)> tess{gluNewTess(), gluDeleteTess};
    std::deque<Point> points; // addresses are handed to the tessellator and must stay
    std::vector<std::uint32_t> corners;
    bool failed = false;

    explicit Tessellator(TrimmedGrid& owner) : grid(owner)
    {
        if (!tess)
            return;
        void (*vertex)(void*, void*) = [](void* point, void* self) {
            static_cast<Tessellator*>(self)->corners.push_back(static_cast<Point*>(point)->number);
        };
        void (*combine)(GLdouble*, void**, GLfloat*, void**,
                        void*) = [](GLdouble* at, void**, GLfloat*, void** out, void* self) {
            *out = static_cast<Tessellator*>(self)->add({at[0], at[1]});
        };
        void (*error)(GLenum, void*) = [](GLenum, void* self) {
            static_cast<Tessellator*>(self)->failed = true;
        };
        // Asking for edge flags makes it hand out single triangles instead of fans and strips.
        void (*edge)(GLboolean, void*) = [](GLboolean, void*) {};
        gluTessCallback(tess.get(), GLU_TESS_VERTEX_DATA, reinterpret_cast<Callback>(vertex));
        gluTessCallback(tess.get(), GLU_TESS_COMBINE_DATA, reinterpret_cast<Callback>(combine));
        gluTessCallback(tess.get(), GLU_TESS_ERROR_DATA, reinterpret_cast<Callback>(error));
        gluTessCallback(tess.get(), GLU_TESS_EDGE_FLAG_DATA, reinterpret_cast<Callback>(edge));
        gluTessProperty(tess.get(), GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_POSITIVE);
        gluTessNormal(tess.get(), 0, 0, 1);
    }

    Point* add(const SbVec2d& at)
    {
        points.push_back({{at[0], at[1], 0}, grid.vertex(at)});
        return &points.back();
    }

    void cut(const std::vector<Loop>& loops, std::size_t cell)
    {
        points.clear();
        corners.clear();
        failed = !tess;
        if (failed)
            return;
        gluTessBeginPolygon(tess.get(), this);
        for (const Loop& loop : loops) {
            gluTessBeginContour(tess.get());
            for (const Corner& corner : loop) {
                Point* point = add(corner.at);
                gluTessVertex(tess.get(), point->position.data(), point);
            }
            gluTessEndContour(tess.get());
        }
        gluTessEndPolygon(tess.get());
        for (std::size_t i = 0; !failed && i + 2 < corners.size(); i += 3)
            grid.addTriangle(corners[i], corners[i + 1], corners[i + 2], cell);
    }
};

std::size_t TrimmedGrid::Hash::operator()(const SbVec2d& p) const
{
    const auto a = std::bit_cast<std::uint64_t>(p[0] + 0.0) * 0x9E3779B97F4A7C15ull;
    const auto b = (std::bit_cast<std::uint64_t>(p[1] + 0.0) ^ (a >> 29)) * 0xBF58476D1CE4E5B9ull;
    return static_cast<std::size_t>(a ^ b ^ (b >> 32));
}

TrimmedGrid::TrimmedGrid(std::vector<double> u, std::vector<double> v)
{
    m_lines[0] = std::move(u);
    m_lines[1] = std::move(v);
}

std::uint32_t TrimmedGrid::vertex(const SbVec2d& at)
{
    const auto [found, isNew] =
        m_numbers.try_emplace(at, static_cast<std::uint32_t>(m_vertices.size()));
    if (isNew)
        m_vertices.push_back(at);
    return found->second;
}

void TrimmedGrid::addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::size_t cell)
{
    if (a == b || b == c || c == a)
        return;
    m_triangles.insert(m_triangles.end(), {a, b, c});
    m_cells.push_back(static_cast<std::uint32_t>(cell));
}

/// Corners on the line belong to both sides. The crossings of an edge are the same ones there.
TrimmedGrid::Loop TrimmedGrid::clip(const Loop& loop, int axis, double at, bool keepsBelow)
{
    Loop kept;
    const auto isIn = [&](const Corner& c) {
        return keepsBelow ? c.at[axis] <= at : c.at[axis] >= at;
    };
    const auto isOn = [&](const Corner& c) { return c.at[axis] == at; };
    const int other = 1 - axis;
    for (std::size_t i = 0; i < loop.size(); ++i) {
        const Corner& a = loop[i];
        const Corner& b = loop[(i + 1) % loop.size()];
        const bool aIn = isIn(a), bIn = isIn(b);
        if (aIn)
            kept.push_back({a.at, a.isBorder || (isOn(a) && (isOn(b) || !bIn))});
        if (aIn == bIn || (aIn && isOn(a)) || (bIn && isOn(b)))
            continue;
        SbVec2d crossing;
        crossing[axis] = at;
        crossing[other] =
            a.at[other]
            + (b.at[other] - a.at[other]) * ((at - a.at[axis]) / (b.at[axis] - a.at[axis]));
        kept.push_back({crossing, aIn || a.isBorder});
    }
    if (kept.size() < 3)
        kept.clear();
    return kept;
}

std::vector<TrimmedGrid::Loop> TrimmedGrid::clipAll(const std::vector<Loop>& loops, int axis,
                                                    double at, bool keepsBelow)
{
    std::vector<Loop> kept;
    for (const Loop& loop : loops) {
        Loop part = clip(loop, axis, at, keepsBelow);
        if (!part.empty())
            kept.push_back(std::move(part));
    }
    return kept;
}

bool TrimmedGrid::isKept(const Part& part, const std::vector<Loop>& loops) const
{
    double area = 0;
    for (const Loop& loop : loops)
        area += areaOf(loop, [](const Corner& c) -> const SbVec2d& { return c.at; });
    const double whole = 2 * (m_lines[0][part.u1] - m_lines[0][part.u0])
                         * (m_lines[1][part.v1] - m_lines[1][part.v0]);
    return std::lround(area / whole) + (m_keepsOutside ? 1 : 0) > 0;
}

void TrimmedGrid::divide(const Part& part, std::vector<Loop>&& loops)
{
    const bool isCut = std::any_of(loops.begin(), loops.end(), [](const Loop& loop) {
        return std::any_of(loop.begin(), loop.end(), [](const Corner& c) { return !c.isBorder; });
    });
    if (!isCut) {
        if (isKept(part, loops)) {
            for (std::size_t row = part.v0; row < part.v1; ++row) {
                for (std::size_t column = part.u0; column < part.u1; ++column)
                    m_whole[row * (m_lines[0].size() - 1) + column] = 1;
            }
        }
        return;
    }
    const std::size_t columns = part.u1 - part.u0, rows = part.v1 - part.v0;
    if (columns == 1 && rows == 1) {
        m_cut.push_back({part.u0, part.v0, std::move(loops)});
        return;
    }
    const int axis = columns >= rows ? 0 : 1;
    const std::size_t middle = axis == 0 ? part.u0 + columns / 2 : part.v0 + rows / 2;
    Part low = part, high = part;
    (axis == 0 ? low.u1 : low.v1) = middle;
    (axis == 0 ? high.u0 : high.v0) = middle;
    const double at = m_lines[axis][middle];
    divide(low, clipAll(loops, axis, at, true));
    divide(high, clipAll(loops, axis, at, false));
}

void TrimmedGrid::noteEdgePoint(int axis, std::size_t line, double along)
{
    const std::vector<double>& lines = m_lines[1 - axis];
    const auto above = std::lower_bound(lines.begin(), lines.end(), along);
    if (above == lines.end() || above == lines.begin() || *above == along)
        return; // a corner of the grid
    const auto cell = static_cast<std::size_t>(above - lines.begin()) - 1;
    m_edgePoints[(static_cast<std::uint64_t>(axis) << 62) | (std::uint64_t(line) << 31) | cell]
        .push_back(along);
}

/// Corners of cut cells on the lines around them, which their neighbours need as well.
void TrimmedGrid::noteEdgePoints()
{
    for (const CutCell& cell : m_cut) {
        const std::size_t lines[2] = {cell.column, cell.row};
        for (const Loop& loop : cell.loops) {
            for (const Corner& corner : loop) {
                for (int axis = 0; axis < 2; ++axis) {
                    for (const std::size_t line : {lines[axis], lines[axis] + 1}) {
                        if (corner.at[axis] == m_lines[axis][line])
                            noteEdgePoint(axis, line, corner.at[1 - axis]);
                    }
                }
            }
        }
    }
    for (auto& [key, points] : m_edgePoints) {
        std::sort(points.begin(), points.end());
        points.erase(std::unique(points.begin(), points.end()), points.end());
    }
}

/// The corners on an edge of the grid that lie between two places, on the way from one to the
/// other.
std::vector<double> TrimmedGrid::between(int axis, std::size_t line, std::size_t cell, double from,
                                         double to) const
{
    const auto found = m_edgePoints.find((static_cast<std::uint64_t>(axis) << 62)
                                         | (std::uint64_t(line) << 31) | cell);
    std::vector<double> points;
    if (found == m_edgePoints.end())
        return points;
    for (const double p : found->second) {
        if (p > std::min(from, to) && p < std::max(from, to))
            points.push_back(p);
    }
    if (from > to)
        std::reverse(points.begin(), points.end());
    return points;
}

void TrimmedGrid::insertEdgePoints(const CutCell& cell, Loop& loop) const
{
    const std::size_t place[2] = {cell.column, cell.row};
    Loop all;
    for (std::size_t i = 0; i < loop.size(); ++i) {
        const SbVec2d a = loop[i].at, b = loop[(i + 1) % loop.size()].at;
        all.push_back(loop[i]);
        for (int axis = 0; axis < 2; ++axis) {
            for (const std::size_t line : {place[axis], place[axis] + 1}) {
                if (a[axis] != m_lines[axis][line] || b[axis] != a[axis])
                    continue;
                for (const double p :
                     between(axis, line, place[1 - axis], a[1 - axis], b[1 - axis])) {
                    SbVec2d at = a;
                    at[1 - axis] = p;
                    all.push_back({at, true});
                }
            }
        }
    }
    loop.swap(all);
}

TrimmedGrid::Loop TrimmedGrid::borderOf(std::size_t column, std::size_t row) const
{
    const double u0 = m_lines[0][column], u1 = m_lines[0][column + 1];
    const double v0 = m_lines[1][row], v1 = m_lines[1][row + 1];
    return {{{u0, v0}, true}, {{u1, v0}, true}, {{u1, v1}, true}, {{u0, v1}, true}};
}

void TrimmedGrid::addWhole(std::size_t column, std::size_t row)
{
    const std::size_t cell = row * (m_lines[0].size() - 1) + column;
    Loop border = borderOf(column, row);
    if (!m_edgePoints.empty())
        insertEdgePoints({column, row, {}}, border);
    std::vector<std::uint32_t> corners;
    for (const Corner& corner : border)
        corners.push_back(vertex(corner.at));
    if (corners.size() == 4) {
        addTriangle(corners[0], corners[1], corners[2], cell);
        addTriangle(corners[0], corners[2], corners[3], cell);
        return;
    }
    const std::uint32_t middle =
        vertex((border.front().at + SbVec2d(m_lines[0][column + 1], m_lines[1][row + 1])) * 0.5);
    for (std::size_t i = 0; i < corners.size(); ++i)
        addTriangle(middle, corners[i], corners[(i + 1) % corners.size()], cell);
}

bool TrimmedGrid::cut(std::span<const std::vector<SbVec2d>> outlines)
{
    const std::size_t columns = m_lines[0].size() - 1, rows = m_lines[1].size() - 1;
    m_whole.assign(columns * rows, outlines.empty() ? 1 : 0);
    if (!outlines.empty()) {
        std::size_t numCorners = 0;
        double largest = 0;
        std::vector<Loop> loops;
        for (const auto& outline : outlines) {
            const double area =
                areaOf(outline, [](const SbVec2d& p) -> const SbVec2d& { return p; });
            if (std::abs(area) > std::abs(largest))
                largest = area;
            Loop loop;
            for (const SbVec2d& p : outline)
                loop.push_back({p, false});
            numCorners += loop.size();
            for (int axis = 0; axis < 2; ++axis) {
                loop = clip(loop, axis, 0, false);
                loop = clip(loop, axis, 1, true);
            }
            if (!loop.empty())
                loops.push_back(std::move(loop));
        }
        if (numCorners > kMaxCorners || crossEverywhere(outlines))
            return false;
        m_keepsOutside = largest < 0;
        divide({0, columns, 0, rows}, std::move(loops));
        noteEdgePoints();
    }
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            if (m_whole[row * columns + column])
                addWhole(column, row);
        }
    }
    Tessellator tessellator(*this);
    for (CutCell& cell : m_cut) {
        if (m_keepsOutside)
            cell.loops.push_back(borderOf(cell.column, cell.row));
        for (Loop& loop : cell.loops)
            insertEdgePoints(cell, loop);
        tessellator.cut(cell.loops, cell.row * columns + cell.column);
    }
    return true;
}

} // namespace kalmyr::detail
