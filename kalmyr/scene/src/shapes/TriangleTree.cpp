#include <kalmyr/shapes/TriangleTree.h>

#include "Float4.h"

#include <array>
#include <cmath>
#include <limits>
#include <memory>

namespace kalmyr {

using detail::Float4;

namespace {

constexpr int kBins = 16;
constexpr int kFewBins = 8;
constexpr std::uint32_t kFewTriangles = 32;
constexpr std::uint32_t kMaxLeaf = 4;
/// Beyond this depth nodes are halved by count, so that the stack of a search has a bound.
constexpr int kMaxSahDepth = 48;
constexpr int kStackSize = 112;
/// More triangles than this are first sorted into the cells of a grid, and the grid is divided:
/// most levels of the tree cost two passes over the triangles together, and not two each.
constexpr std::uint32_t kFewForGrid = 64;
constexpr int kMaxGridBits = 12;
/// A cell holds about so many triangles, as a power of two.
constexpr int kCellBits = 2;
/// Rays through an edge meet at least one of its two triangles.
constexpr float kEdgeTolerance = 1e-6f;

constexpr float kHuge = std::numeric_limits<float>::max();

struct Box {
    Float4 lo = Float4::of(kHuge, kHuge, kHuge, kHuge);
    Float4 hi = Float4::of(-kHuge, -kHuge, -kHuge, -kHuge);
    void add(Float4 l, Float4 h)
    {
        lo = min(lo, l);
        hi = max(hi, h);
    }
    void add(const Box& b) { add(b.lo, b.hi); }
    float halfArea() const
    {
        const Float4 d = hi - lo;
        return d[0] * d[1] + d[1] * d[2] + d[2] * d[0];
    }
};

/// The box of a triangle or of the triangles in a cell. The number of the triangle or cell stands
/// in the fourth place of lo, how many triangles that are in the fourth of hi.
struct Ref {
    Float4 lo, hi;
    std::uint32_t number() const { return std::bit_cast<std::uint32_t>(lo[3]) ^ kNormal; }
    std::uint32_t weight() const { return std::bit_cast<std::uint32_t>(hi[3]) ^ kNormal; }
    void set(std::uint32_t number, std::uint32_t weight)
    {
        lo[3] = std::bit_cast<float>(number ^ kNormal);
        hi[3] = std::bit_cast<float>(weight ^ kNormal);
    }

private:
    /// Sums are taken of all four places, and denormal ones would be slow.
    static constexpr std::uint32_t kNormal = 0x40000000;
};

bool isFinite(Float4 v)
{
    return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]);
}

struct Split {
    float cost = kHuge;
    int axis = -1;
    int bin = 0; ///< bins below this go left
};

/// Where triangles fall along an axis, by the middles of their boxes (twice them, in fact).
struct Binning {
    int axis = 0;
    int count = kBins;
    float low = 0;
    float scale = 0;

    Binning(const Box& centers, int along, std::uint32_t triangles) : axis(along)
    {
        // A few triangles do not fill many bins.
        if (triangles < kFewTriangles)
            count = kFewBins;
        const float extent = centers.hi[axis] - centers.lo[axis];
        low = centers.lo[axis];
        if (extent > 0)
            scale = static_cast<float>(count) * 0.9999f / extent;
    }
    bool isUsable() const { return scale > 0; }
    int binOf(const Ref& ref) const
    {
        const int bin = static_cast<int>((ref.lo[axis] + ref.hi[axis] - low) * scale);
        return bin < 0 ? 0 : bin >= count ? count - 1 : bin;
    }
};

/// A run of triangles or cells that becomes a node, and what is known of it.
struct Run {
    std::uint32_t node = 0, begin = 0, end = 0;
    int depth = 0;
    bool inSpare = false; ///< in the second list of triangles
    bool hasCenters = true;
    Box box;
    Box centers; ///< of twice the middles of the boxes

    std::uint32_t count() const { return end - begin; }
    void add(const Ref& ref)
    {
        box.add(ref.lo, ref.hi);
        addCenter(ref);
    }
    void addCenter(const Ref& ref)
    {
        const Float4 center = ref.lo + ref.hi;
        centers.add(center, center);
    }
    int longestAxis() const
    {
        const Float4 d = centers.hi - centers.lo;
        const int xy = d[0] >= d[1] ? 0 : 1;
        return d[xy] >= d[2] ? xy : 2;
    }
};

/// Cells over the middles of boxes, about as long as they are wide.
class Grid {
public:
    Grid(const Box& centers, std::uint32_t triangles) : m_low(centers.lo)
    {
        const int wanted =
            std::min(static_cast<int>(std::bit_width(triangles)) - 1 - kCellBits, kMaxGridBits);
        const Float4 extent = centers.hi - centers.lo;
        float size[3] = {extent[0], extent[1], extent[2]};
        int bits[3] = {};
        for (; m_bits < wanted; ++m_bits) {
            const int xy = size[0] >= size[1] ? 0 : 1;
            const int longest = size[xy] >= size[2] ? xy : 2;
            if (!(size[longest] > 0))
                break;
            size[longest] /= 2;
            ++bits[longest];
        }
        for (int k = 0; k < 3; ++k) {
            const auto count = static_cast<float>(1 << bits[k]);
            m_scale[k] = extent[k] > 0 ? count * 0.9999f / extent[k] : 0;
            m_last[k] = count - 1;
        }
        m_shiftY = bits[0];
        m_shiftZ = bits[0] + bits[1];
        // Extents near the end of the range have no usable inverse.
        m_usable = m_bits > 0 && std::isfinite(m_scale[0]) && std::isfinite(m_scale[1])
                   && std::isfinite(m_scale[2]) && isFinite(extent);
    }

    bool isUsable() const { return m_usable; }
    std::size_t numCells() const { return std::size_t(1) << m_bits; }
    std::uint32_t cellOf(const Ref& ref) const
    {
        const Float4 at = max(min((ref.lo + ref.hi - m_low) * m_scale, m_last), m_zero);
        return static_cast<std::uint32_t>(at[0]) | static_cast<std::uint32_t>(at[1]) << m_shiftY
               | static_cast<std::uint32_t>(at[2]) << m_shiftZ;
    }

private:
    Float4 m_low;
    Float4 m_scale = Float4::of(0, 0, 0, 0);
    Float4 m_last = Float4::of(0, 0, 0, 0);
    Float4 m_zero = Float4::of(0, 0, 0, 0);
    int m_bits = 0, m_shiftY = 0, m_shiftZ = 0;
    bool m_usable = false;
};

} // namespace

struct TriangleTree::Builder {
    TriangleTree& tree;
    std::vector<Ref> refs;
    std::unique_ptr<Ref[]>
        spare; ///< as many, if there are any; each triangle stands in one of them

    explicit Builder(TriangleTree& t) : tree(t) {}
    void collect(std::span<const SbVec3f> positions, std::span<const std::uint32_t> triangles);
    void build();
    void fillTriangles(std::span<const SbVec3f> positions,
                       std::span<const std::uint32_t> triangles);

private:
    struct Cell {
        std::uint32_t count = 0, begin = 0;
        Box box;
    };

    std::vector<Run> m_open;
    std::vector<Cell> m_cells;
    std::vector<std::uint16_t> m_cellOf;

    Ref* listOf(bool inSpare) { return inSpare ? spare.get() : refs.data(); }
    void setBox(const Run& run);
    void makeLeaf(const Run& run);
    bool divideByGrid(const Run& run);
    std::vector<Ref> sortIntoCells(const Run& run, const Grid& grid);
    static Split findSplit(std::span<const Ref> all, const Run& run);
    static void divide(std::span<Ref> all, const Run& run, const Split& split, Run& left,
                       Run& right);
    void split(std::span<Ref> all, const Run& run, std::vector<Run>& open);
};

void TriangleTree::Builder::collect(std::span<const SbVec3f> positions,
                                    std::span<const std::uint32_t> triangles)
{
    const auto count = static_cast<std::uint32_t>(triangles.size() / 3);
    refs.reserve(count);
    const auto corner = [&](std::size_t i) {
        const SbVec3f& p = positions[triangles[i]];
        return Float4::of(p[0], p[1], p[2], 0);
    };
    for (std::uint32_t i = 0; i < count; ++i) {
        const Float4 a = corner(i * 3UL), b = corner(i * 3UL + 1), c = corner(i * 3UL + 2);
        // A sum is not finite when one of its parts is not: min and max may lose a not-a-number.
        if (!isFinite(a + b + c))
            continue;
        Ref ref{min(min(a, b), c), max(max(a, b), c)};
        ref.set(i, 1);
        refs.push_back(ref);
    }
}

/// The cheapest division along the longest axis; the others are hardly ever better.
Split TriangleTree::Builder::findSplit(std::span<const Ref> all, const Run& run)
{
    const Binning binning(run.centers, run.longestAxis(), run.count());
    if (!binning.isUsable())
        return {};
    const auto bins = static_cast<std::size_t>(binning.count);
    std::array<Box, kBins> boxes;
    std::array<std::uint32_t, kBins> weights{};
    std::uint32_t total = 0;
    for (std::uint32_t i = run.begin; i < run.end; ++i) {
        const auto bin = static_cast<std::size_t>(binning.binOf(all[i]));
        const std::uint32_t weight = all[i].weight();
        weights[bin] += weight;
        total += weight;
        boxes[bin].add(all[i].lo, all[i].hi);
    }
    std::array<float, kBins> rightCost;
    Box side;
    std::uint32_t number = 0;
    for (std::size_t b = bins - 1; b > 0; --b) {
        side.add(boxes[b]);
        number += weights[b];
        rightCost[b] = number ? side.halfArea() * static_cast<float>(number) : kHuge;
    }
    Split best;
    side = {};
    number = 0;
    for (std::size_t b = 1; b < bins; ++b) {
        side.add(boxes[b - 1]);
        number += weights[b - 1];
        if (!number || number == total)
            continue;
        const float cost = side.halfArea() * static_cast<float>(number) + rightCost[b];
        if (cost < best.cost)
            best = {cost, binning.axis, static_cast<int>(b)};
    }
    return best;
}

void TriangleTree::Builder::divide(std::span<Ref> all, const Run& run, const Split& split,
                                   Run& left, Run& right)
{
    std::uint32_t i = run.begin, j = run.end;
    if (split.axis < 0) {
        // Nothing tells them apart: half of them each.
        const std::uint32_t middle = i + run.count() / 2;
        for (; i < middle; ++i)
            left.add(all[i]);
        for (std::uint32_t k = middle; k < run.end; ++k)
            right.add(all[k]);
    } else {
        const Binning binning(run.centers, split.axis, run.count());
        while (i < j) {
            if (binning.binOf(all[i]) < split.bin) {
                left.add(all[i++]);
            } else {
                right.add(all[i]);
                std::swap(all[i], all[--j]);
            }
        }
    }
    left.begin = run.begin;
    left.end = right.begin = i;
    right.end = run.end;
    left.depth = right.depth = run.depth + 1;
    left.inSpare = right.inSpare = run.inSpare;
}

void TriangleTree::Builder::setBox(const Run& run)
{
    Node& node = tree.m_nodes[run.node];
    for (int k = 0; k < 3; ++k) {
        node.min[k] = run.box.lo[k];
        node.max[k] = run.box.hi[k];
    }
}

void TriangleTree::Builder::makeLeaf(const Run& run)
{
    Node& node = tree.m_nodes[run.node];
    node.first = run.begin;
    node.count = run.count();
    const Ref* from = listOf(run.inSpare);
    for (std::uint32_t i = run.begin; i < run.end; ++i)
        tree.m_order[i] = from[i].number();
}

/// Makes two nodes of a run, and leaves them to be divided.
void TriangleTree::Builder::split(std::span<Ref> all, const Run& run, std::vector<Run>& open)
{
    const Split best = run.depth < kMaxSahDepth ? findSplit(all, run) : Split();
    Run left, right;
    left.node = static_cast<std::uint32_t>(tree.m_nodes.size());
    right.node = left.node + 1;
    tree.m_nodes[run.node].first = left.node;
    tree.m_nodes[run.node].count = 0;
    tree.m_nodes.resize(tree.m_nodes.size() + 2);
    divide(all, run, best, left, right);
    open.push_back(right);
    open.push_back(left);
}

/// Moves the triangles to the other list, cell by cell, and returns the cells that hold any.
std::vector<Ref> TriangleTree::Builder::sortIntoCells(const Run& run, const Grid& grid)
{
    const Ref* from = listOf(run.inSpare);
    Ref* to = listOf(!run.inSpare);
    m_cells.assign(grid.numCells(), {});
    m_cellOf.resize(std::max<std::size_t>(m_cellOf.size(), run.count()));
    for (std::uint32_t i = run.begin; i < run.end; ++i) {
        const std::uint32_t number = grid.cellOf(from[i]);
        m_cellOf[i - run.begin] = static_cast<std::uint16_t>(number);
        Cell& cell = m_cells[number];
        ++cell.count;
        cell.box.add(from[i].lo, from[i].hi);
    }
    std::vector<Ref> filled;
    std::uint32_t begin = run.begin;
    for (Cell& cell : m_cells) {
        if (!cell.count)
            continue;
        cell.begin = begin;
        Ref ref{cell.box.lo, cell.box.hi};
        ref.set(begin, cell.count);
        filled.push_back(ref);
        begin += cell.count;
    }
    if (filled.size() < 2)
        return filled;
    for (std::uint32_t i = run.begin; i < run.end; ++i)
        to[m_cells[m_cellOf[i - run.begin]].begin++] = from[i];
    return filled;
}

/// False when all triangles are at one place.
bool TriangleTree::Builder::divideByGrid(const Run& run)
{
    const Grid grid(run.centers, run.count());
    if (!grid.isUsable())
        return false;
    if (!spare)
        spare = std::make_unique_for_overwrite<Ref[]>(refs.size());
    std::vector<Ref> cells = sortIntoCells(run, grid);
    if (cells.size() < 2)
        return false;
    std::vector<Run> open(1);
    open[0].node = run.node;
    open[0].depth = run.depth;
    open[0].end = static_cast<std::uint32_t>(cells.size());
    for (const Ref& cell : cells)
        open[0].add(cell);
    while (!open.empty()) {
        const Run part = open.back();
        open.pop_back();
        if (part.count() > 1) {
            setBox(part);
            split(cells, part, open);
            continue;
        }
        const Ref& cell = cells[part.begin];
        Run inside;
        inside.node = part.node;
        inside.begin = cell.number();
        inside.end = cell.number() + cell.weight();
        inside.depth = part.depth;
        inside.inSpare = !run.inSpare;
        inside.hasCenters = false;
        inside.box = part.box;
        m_open.push_back(inside);
    }
    return true;
}

void TriangleTree::Builder::build()
{
    const auto total = static_cast<std::uint32_t>(refs.size());
    tree.m_order.resize(total);
    tree.m_nodes.reserve(total * 2UL / 3 + 2);
    tree.m_nodes.emplace_back();
    m_open.resize(1);
    m_open[0].end = total;
    for (const Ref& ref : refs)
        m_open[0].add(ref);
    while (!m_open.empty()) {
        Run run = m_open.back();
        m_open.pop_back();
        setBox(run);
        // Comparing the costs of so few would take longer than it ever saves.
        if (run.count() <= kMaxLeaf) {
            makeLeaf(run);
            continue;
        }
        const std::span<Ref> all(listOf(run.inSpare), refs.size());
        for (std::uint32_t i = run.begin; !run.hasCenters && i < run.end; ++i)
            run.addCenter(all[i]);
        const bool many = run.count() > kFewForGrid && run.depth < kMaxSahDepth;
        if (!many || !divideByGrid(run))
            split(all, run, m_open);
    }
    tree.m_nodes.shrink_to_fit();
}

void TriangleTree::Builder::fillTriangles(std::span<const SbVec3f> positions,
                                          std::span<const std::uint32_t> triangles)
{
    tree.m_triangles.reserve(tree.m_order.size());
    for (const std::uint32_t number : tree.m_order) {
        const SbVec3f& a = positions[triangles[number * 3UL]];
        const SbVec3f e1 = positions[triangles[number * 3UL + 1]] - a;
        const SbVec3f e2 = positions[triangles[number * 3UL + 2]] - a;
        tree.m_triangles.push_back(
            {{a[0], a[1], a[2]}, {e1[0], e1[1], e1[2]}, {e2[0], e2[1], e2[2]}});
    }
}

TriangleTree::TriangleTree(std::span<const SbVec3f> positions,
                           std::span<const std::uint32_t> triangles)
{
    Builder builder(*this);
    builder.collect(positions, triangles);
    if (builder.refs.empty())
        return;
    builder.build();
    builder.refs = {};
    builder.spare.reset();
    builder.fillTriangles(positions, triangles);
}

std::size_t TriangleTree::getSize() const
{
    return m_nodes.capacity() * sizeof(Node) + m_triangles.capacity() * sizeof(Triangle)
           + m_order.capacity() * sizeof(std::uint32_t);
}

namespace {

/// A ray prepared for boxes: a direction of 0 along an axis becomes tiny, so that no 0 * infinity
/// appears.
struct PreparedRay {
    Float4 origin, inverse;
    SbVec3f o, d;
};

PreparedRay prepare(const SbVec3f& origin, const SbVec3f& direction)
{
    PreparedRay ray;
    ray.o = origin;
    ray.d = direction;
    float inverse[3];
    for (int k = 0; k < 3; ++k) {
        const float d = direction[k];
        inverse[k] = 1 / (std::abs(d) > 1e-30f ? d : std::copysign(1e-30f, d));
    }
    ray.origin = Float4::of(origin[0], origin[1], origin[2], 0);
    ray.inverse = Float4::of(inverse[0], inverse[1], inverse[2], 0);
    return ray;
}

struct Triple {
    float x, y, z;
};

inline float dot(const Triple& a, const Triple& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline Triple cross(const Triple& a, const Triple& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// Both tests are inlined by force: the search spends all its time in them.
template <class Node>
[[gnu::always_inline]] inline bool meetsBox(const PreparedRay& ray, const Node& node, float tMin,
                                            float tMax, float& enter)
{
    // The fourth values are the node's two integers: whatever they read as is never looked at.
    const Float4 t0 = (Float4::load(node.min) - ray.origin) * ray.inverse;
    const Float4 t1 = (Float4::load(node.max) - ray.origin) * ray.inverse;
    const Float4 near = min(t0, t1), far = max(t0, t1);
    enter = std::max(std::max(near[0], near[1]), std::max(near[2], tMin));
    const float leave = std::min(std::min(far[0], far[1]), std::min(far[2], tMax));
    // Rounding may make a flat box seem missed.
    return enter <= leave + std::abs(leave) * 4e-7f;
}

template <class Triangle>
[[gnu::always_inline]] inline bool meetsTriangle(const PreparedRay& ray, const Triangle& t,
                                                 float tMin, float tMax, TriangleTree::Hit& hit)
{
    // Written out: loops over three components stay loops in a plain optimised build.
    const Triple d{ray.d[0], ray.d[1], ray.d[2]}, e1{t.e1[0], t.e1[1], t.e1[2]},
        e2{t.e2[0], t.e2[1], t.e2[2]};
    const Triple p = cross(d, e2);
    const float det = dot(e1, p);
    if (det == 0)
        return false;
    const float inverse = 1 / det;
    const Triple s{ray.o[0] - t.v0[0], ray.o[1] - t.v0[1], ray.o[2] - t.v0[2]};
    const float u = dot(s, p) * inverse;
    if (!(u >= -kEdgeTolerance && u <= 1 + kEdgeTolerance))
        return false;
    const Triple q = cross(s, e1);
    const float v = dot(d, q) * inverse;
    if (!(v >= -kEdgeTolerance && u + v <= 1 + kEdgeTolerance))
        return false;
    const float at = dot(e2, q) * inverse;
    if (!(at >= tMin && at <= tMax))
        return false;
    hit.t = at;
    hit.barycentric = SbVec3f(1 - u - v, u, v);
    hit.front = det > 0;
    return true;
}

} // namespace

template <class Visit>
void TriangleTree::walk(const SbVec3f& origin, const SbVec3f& direction, float tMin, float& tMax,
                        Visit&& visit) const
{
    if (m_nodes.empty())
        return;
    const PreparedRay ray = prepare(origin, direction);
    struct Entry {
        std::uint32_t node;
        float enter;
    };
    std::array<Entry, kStackSize> stack;
    int depth = 0;
    float enter = 0;
    if (!meetsBox(ray, m_nodes[0], tMin, tMax, enter))
        return;
    std::uint32_t at = 0;
    for (;;) {
        const Node& node = m_nodes[at];
        if (node.count) {
            for (std::uint32_t i = node.first; i < node.first + node.count; ++i) {
                Hit hit;
                if (!meetsTriangle(ray, m_triangles[i], tMin, tMax, hit))
                    continue;
                hit.triangle = m_order[i];
                if (!visit(hit))
                    return;
            }
        } else {
            float e0, e1;
            const bool b0 = meetsBox(ray, m_nodes[node.first], tMin, tMax, e0);
            const bool b1 = meetsBox(ray, m_nodes[node.first + 1], tMin, tMax, e1);
            if (b0 && b1) {
                const std::uint32_t second = e0 <= e1 ? 1 : 0;
                stack[static_cast<std::size_t>(depth++)] = {node.first + second, std::max(e0, e1)};
                at = node.first + (1 - second);
                continue;
            }
            if (b0 || b1) {
                at = node.first + (b1 ? 1 : 0);
                continue;
            }
        }
        do {
            if (depth == 0)
                return;
            --depth;
        } while (stack[static_cast<std::size_t>(depth)].enter > tMax);
        at = stack[static_cast<std::size_t>(depth)].node;
    }
}

bool TriangleTree::intersect(const SbVec3f& origin, const SbVec3f& direction, float tMin,
                             float tMax, Hit& nearest) const
{
    bool found = false;
    walk(origin, direction, tMin, tMax, [&](const Hit& hit) {
        // Of two at one distance the one of the lower number, whatever the tree looks like.
        if (!found || hit.t < nearest.t || (hit.t == nearest.t && hit.triangle < nearest.triangle))
            nearest = hit;
        tMax = nearest.t;
        found = true;
        return true;
    });
    return found;
}

void TriangleTree::intersectAll(const SbVec3f& origin, const SbVec3f& direction, float tMin,
                                float tMax, HitFunction function, void* userData) const
{
    walk(origin, direction, tMin, tMax, [&](const Hit& hit) { return function(userData, hit); });
}

} // namespace kalmyr
