#include <kalmyr/shapes/TriangleTree.h>

#include "Float4.h"

#include <array>
#include <cmath>
#include <limits>

namespace kalmyr {

using detail::Float4;

namespace {

constexpr int kBins = 16;
constexpr int kFewBins = 8;
constexpr std::uint32_t kFewTriangles = 32;
constexpr std::uint32_t kMaxLeaf = 4;
/// Beyond this depth nodes are halved by count, so that the stack of a search has a bound.
constexpr int kMaxSahDepth = 48;
constexpr int kStackSize = 96;
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

/// The box of one triangle; its number stands in the fourth place of lo.
struct Ref {
    Float4 lo, hi;
    std::uint32_t number() const { return std::bit_cast<std::uint32_t>(lo[3]); }
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

/// A run of triangles that becomes a node, and what is known of it.
struct Run {
    std::uint32_t node = 0, begin = 0, end = 0;
    int depth = 0;
    Box box;
    Box centers; ///< of twice the middles of the boxes

    std::uint32_t count() const { return end - begin; }
    void add(const Ref& ref)
    {
        box.add(ref.lo, ref.hi);
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

} // namespace

struct TriangleTree::Builder {
    TriangleTree& tree;
    std::vector<Ref> refs;

    void collect(std::span<const SbVec3f> positions, std::span<const std::uint32_t> triangles);
    void build();
    void fillTriangles(std::span<const SbVec3f> positions,
                       std::span<const std::uint32_t> triangles);

private:
    Split findSplit(const Run& run) const;
    void divide(const Run& run, const Split& split, Run& left, Run& right);
    bool makeLeafOrSplit(const Run& run, Split& split);
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
        ref.lo[3] = std::bit_cast<float>(i);
        ref.hi[3] = 0;
        refs.push_back(ref);
    }
}

/// The cheapest division along the longest axis; the others are hardly ever better.
Split TriangleTree::Builder::findSplit(const Run& run) const
{
    const Binning binning(run.centers, run.longestAxis(), run.count());
    if (!binning.isUsable())
        return {};
    const auto bins = static_cast<std::size_t>(binning.count);
    std::array<Box, kBins> boxes;
    std::array<std::uint32_t, kBins> counts{};
    for (std::uint32_t i = run.begin; i < run.end; ++i) {
        const auto bin = static_cast<std::size_t>(binning.binOf(refs[i]));
        ++counts[bin];
        boxes[bin].add(refs[i].lo, refs[i].hi);
    }
    std::array<float, kBins> rightCost;
    Box side;
    std::uint32_t number = 0;
    for (std::size_t b = bins - 1; b > 0; --b) {
        side.add(boxes[b]);
        number += counts[b];
        rightCost[b] = number ? side.halfArea() * static_cast<float>(number) : kHuge;
    }
    Split best;
    side = {};
    number = 0;
    for (std::size_t b = 1; b < bins; ++b) {
        side.add(boxes[b - 1]);
        number += counts[b - 1];
        if (!number || number == run.count())
            continue;
        const float cost = side.halfArea() * static_cast<float>(number) + rightCost[b];
        if (cost < best.cost)
            best = {cost, binning.axis, static_cast<int>(b)};
    }
    return best;
}

void TriangleTree::Builder::divide(const Run& run, const Split& split, Run& left, Run& right)
{
    std::uint32_t i = run.begin, j = run.end;
    if (split.axis < 0) {
        // Nothing tells them apart: half of them each.
        const std::uint32_t middle = i + run.count() / 2;
        for (; i < middle; ++i)
            left.add(refs[i]);
        for (std::uint32_t k = middle; k < run.end; ++k)
            right.add(refs[k]);
    } else {
        const Binning binning(run.centers, split.axis, run.count());
        while (i < j) {
            if (binning.binOf(refs[i]) < split.bin) {
                left.add(refs[i++]);
            } else {
                right.add(refs[i]);
                std::swap(refs[i], refs[--j]);
            }
        }
    }
    left.begin = run.begin;
    left.end = right.begin = i;
    right.end = run.end;
    left.depth = right.depth = run.depth + 1;
}

bool TriangleTree::Builder::makeLeafOrSplit(const Run& run, Split& split)
{
    Node& node = tree.m_nodes[run.node];
    for (int k = 0; k < 3; ++k) {
        node.min[k] = run.box.lo[k];
        node.max[k] = run.box.hi[k];
    }
    // Comparing the costs of so few would take longer than it ever saves.
    const bool isLeaf = run.count() <= kMaxLeaf;
    if (!isLeaf && run.depth < kMaxSahDepth)
        split = findSplit(run);
    node.first = isLeaf ? run.begin : static_cast<std::uint32_t>(tree.m_nodes.size());
    node.count = isLeaf ? run.count() : 0;
    return isLeaf;
}

void TriangleTree::Builder::build()
{
    const auto total = static_cast<std::uint32_t>(refs.size());
    tree.m_nodes.reserve(total * 2UL / 3 + 2);
    tree.m_nodes.emplace_back();
    std::vector<Run> open(1);
    open[0].end = total;
    for (const Ref& ref : refs)
        open[0].add(ref);
    while (!open.empty()) {
        const Run run = open.back();
        open.pop_back();
        Split split;
        if (makeLeafOrSplit(run, split))
            continue;
        Run left, right;
        left.node = static_cast<std::uint32_t>(tree.m_nodes.size());
        right.node = left.node + 1;
        tree.m_nodes.resize(tree.m_nodes.size() + 2);
        divide(run, split, left, right);
        open.push_back(right);
        open.push_back(left);
    }
    tree.m_nodes.shrink_to_fit();
}

void TriangleTree::Builder::fillTriangles(std::span<const SbVec3f> positions,
                                          std::span<const std::uint32_t> triangles)
{
    tree.m_order.resize(refs.size());
    tree.m_triangles.resize(refs.size());
    for (std::size_t i = 0; i < refs.size(); ++i) {
        const std::uint32_t number = refs[i].number();
        const SbVec3f& a = positions[triangles[number * 3UL]];
        const SbVec3f e1 = positions[triangles[number * 3UL + 1]] - a;
        const SbVec3f e2 = positions[triangles[number * 3UL + 2]] - a;
        Triangle& t = tree.m_triangles[i];
        for (int k = 0; k < 3; ++k) {
            t.v0[k] = a[k];
            t.e1[k] = e1[k];
            t.e2[k] = e2[k];
        }
        tree.m_order[i] = number;
    }
}

TriangleTree::TriangleTree(std::span<const SbVec3f> positions,
                           std::span<const std::uint32_t> triangles)
{
    Builder builder{*this, {}};
    builder.collect(positions, triangles);
    if (builder.refs.empty())
        return;
    builder.build();
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
