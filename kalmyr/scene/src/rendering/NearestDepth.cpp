#include "rendering/NearestDepth.h"

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/shapes/SoGeometry.h>
#include <kalmyr/shapes/SoShape.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

namespace kalmyr::detail {

namespace {

constexpr float kNothing = std::numeric_limits<float>::max();

/// The view in some space: its sides, which all go through the eye, and the depth before it, as
/// linear functions of places. Inside, all of them are positive.
class Sides {
public:
    /// `toEye` leads from that space to the eye's; both are affine.
    Sides(const SbVec2f& tangents, const SbMatrix& toEye)
    {
        const SbVec3f normals[kNumSides] = {
            SbVec3f(0, 0, -1), SbVec3f(1, 0, -tangents[0]), SbVec3f(-1, 0, -tangents[0]),
            SbVec3f(0, 1, -tangents[1]), SbVec3f(0, -1, -tangents[1])};
        for (std::size_t i = 0; i < kNumSides; ++i) {
            for (int row = 0; row < 3; ++row)
                m_sides[i].normal[row] = SbVec3f(toEye[row]).dot(normals[i]);
            m_sides[i].offset = SbVec3f(toEye[3]).dot(normals[i]);
        }
        for (std::size_t i = 1; i < kNumSides; ++i) {
            const float tangent = -normals[i][2];
            m_aside[i - 1].normal = m_sides[i].normal / tangent - m_sides[0].normal;
            m_aside[i - 1].offset = m_sides[i].offset / tangent - m_sides[0].offset;
        }
    }

    /// Lower bound of the depth at which something of a box is seen; kNothing when it is out of
    /// view.
    float depthOf(const SbBox3f& box) const
    {
        const SbVec3f center = box.getCenter();
        const SbVec3f half = box.getSize() / 2;
        for (const Side& side : m_sides)
            if (side.at(center) + side.reach(half) < 0)
                return kNothing;
        // A box aside of the line of sight comes into view only at some depth.
        float depth = std::max(m_sides[0].at(center) - m_sides[0].reach(half), 0.0f);
        for (const Side& aside : m_aside)
            depth = std::max(depth, -aside.at(center) - aside.reach(half));
        return depth;
    }

    /// The depth at which a convex figure of up to three corners is seen.
    float depthOf(std::span<const SbVec3f> corners) const
    {
        std::array<SbVec3f, kMaxCorners> figure, cut;
        std::copy(corners.begin(), corners.end(), figure.begin());
        std::size_t count = corners.size();
        for (const Side& side : m_sides) {
            count = clip(std::span(figure.data(), count), side, cut);
            figure.swap(cut);
            if (count == 0)
                return kNothing;
        }
        float depth = kNothing;
        for (std::size_t i = 0; i < count; ++i)
            depth = std::min(depth, m_sides[0].at(figure[i]));
        return depth;
    }

private:
    static constexpr std::size_t kNumSides = 5;
    static constexpr std::size_t kMaxCorners = 16;

    struct Side {
        SbVec3f normal;
        float offset = 0;

        float at(const SbVec3f& place) const { return normal.dot(place) + offset; }
        /// How much more it can be than at the centre of a box of that half size.
        float reach(const SbVec3f& half) const
        {
            return std::abs(normal[0]) * half[0] + std::abs(normal[1]) * half[1]
                   + std::abs(normal[2]) * half[2];
        }
    };

    static std::size_t clip(std::span<const SbVec3f> figure, const Side& side,
                            std::array<SbVec3f, kMaxCorners>& out)
    {
        std::size_t count = 0;
        for (std::size_t i = 0; i < figure.size(); ++i) {
            const SbVec3f& a = figure[i];
            const SbVec3f& b = figure[(i + 1) % figure.size()];
            const float da = side.at(a);
            const float db = side.at(b);
            if (da >= 0)
                out[count++] = a;
            if ((da < 0) != (db < 0) && figure.size() > 1)
                out[count++] = a + (b - a) * (da / (da - db));
        }
        return count;
    }

    std::array<Side, kNumSides> m_sides; ///< the depth first
    /// Distance from the line of sight, against the direction of each side, by the tangent: where
    /// it is -d a place comes into view at the depth d.
    std::array<Side, kNumSides - 1> m_aside;
};

/// Goes where a thick ray would go.
class Search final : public SoRayPickAction {
public:
    Search(NearestDepth& owner, const NearestDepth::View& view)
        : SoRayPickAction(view.region),
          m_owner(owner),
          m_view(view),
          m_inWorld(view.tangents, view.worldToEye)
    {
        const SbMatrix toWorld = view.worldToEye.inverse();
        setRay(toWorld.point(SbVec3f(0, 0, 0)), toWorld.direction(SbVec3f(0, 0, -1)));
        setHooked(true);
    }

    float nearest = kNothing;

protected:
    bool mayHitWorldBox(const SbBox3f& box) const override
    {
        return m_inWorld.depthOf(box) < nearest;
    }

    bool beforeNode(SoNode* node) override
    {
        if (!node->isOfType(SoShape::getClassTypeId()))
            return true;
        if (SoDrawStyleElement::get(getState()).style != SoDrawStyleValues::INVISIBLE)
            look(*static_cast<SoShape*>(node));
        return false;
    }

private:
    void look(SoShape& shape)
    {
        const Sides sides(m_view.tangents,
                          SoModelMatrixElement::get(getState()) * m_view.worldToEye);
        SbBox3f box;
        SbVec3f center;
        shape.computeBBox(getState(), box, center);
        if (box.isEmpty())
            return;
        const float depth = sides.depthOf(box);
        if (depth >= nearest)
            return;
        if (depth >= m_view.enough) {
            nearest = depth;
            return;
        }
        if (m_view.asBoxes) {
            lookAtEdges(box, sides);
            return;
        }
        const SoRef<SoGeometry> geometry = shape.getGeometry(getState());
        if (!geometry)
            return;
        const NearestDepth::Runs& runs = m_owner.runsOf(*geometry);
        look<3>(*geometry, geometry->triangles, runs.triangles, sides);
        look<2>(*geometry, geometry->lines, runs.lines, sides);
        look<1>(*geometry, geometry->points, runs.points, sides);
    }

    void lookAtEdges(const SbBox3f& box, const Sides& sides)
    {
        for (int corner = 0; corner < 8; ++corner) {
            for (const int axis : {1, 2, 4}) {
                if (corner & axis)
                    continue;
                const SbVec3f edge[] = {box.getCorner(corner), box.getCorner(corner | axis)};
                nearest = std::min(nearest, sides.depthOf(edge));
            }
        }
    }

    using Found = std::vector<std::pair<float, std::size_t>>;

    /// The boxes from `first` to `last` that may hold something nearer, nearest first.
    Found candidates(const std::vector<SbBox3f>& boxes, std::size_t first, std::size_t last,
                     const Sides& sides) const
    {
        Found found;
        for (std::size_t i = first; i < std::min(last, boxes.size()); ++i)
            if (const float depth = sides.depthOf(boxes[i]); depth < nearest)
                found.emplace_back(depth, i);
        std::sort(found.begin(), found.end());
        return found;
    }

    template <std::size_t N>
    void look(const SoGeometry& geometry, const std::vector<std::uint32_t>& indices,
              const NearestDepth::Boxes& boxes, const Sides& sides)
    {
        constexpr std::size_t length = NearestDepth::kRunLength;
        for (const auto& [groupDepth, group] :
             candidates(boxes.groups, 0, boxes.groups.size(), sides)) {
            if (groupDepth >= nearest)
                return;
            for (const auto& [depth, run] :
                 candidates(boxes.runs, group * length, (group + 1) * length, sides)) {
                if (depth >= nearest)
                    break;
                lookAtRun<N>(geometry, indices, run, sides);
            }
        }
    }

    template <std::size_t N>
    void lookAtRun(const SoGeometry& geometry, const std::vector<std::uint32_t>& indices,
                   std::size_t run, const Sides& sides)
    {
        constexpr std::size_t step = N * NearestDepth::kRunLength;
        const std::size_t end = std::min((run + 1) * step, indices.size());
        for (std::size_t i = run * step; i + N <= end; i += N) {
            std::array<SbVec3f, N> corners;
            for (std::size_t c = 0; c < N; ++c)
                corners[c] = geometry.positions[indices[i + c]];
            nearest = std::min(nearest, sides.depthOf(corners));
        }
    }

    NearestDepth& m_owner;
    const NearestDepth::View& m_view;
    const Sides m_inWorld;
};

NearestDepth::Boxes boxesOf(const SoGeometry& geometry, const std::vector<std::uint32_t>& indices,
                            std::size_t corners)
{
    constexpr std::size_t length = NearestDepth::kRunLength;
    const std::size_t step = corners * length;
    NearestDepth::Boxes boxes;
    boxes.runs.resize((indices.size() + step - 1) / step);
    for (std::size_t i = 0; i < indices.size(); ++i)
        boxes.runs[i / step].extendBy(geometry.positions[indices[i]]);
    boxes.groups.resize((boxes.runs.size() + length - 1) / length);
    for (std::size_t i = 0; i < boxes.runs.size(); ++i)
        boxes.groups[i / length].extendBy(boxes.runs[i]);
    return boxes;
}

} // namespace

float NearestDepth::measure(SoNode* root, const View& view)
{
    Search search(*this, view);
    search.apply(root);
    return search.nearest;
}

const NearestDepth::Runs& NearestDepth::runsOf(const SoGeometry& geometry)
{
    if (m_runs.size() >= kMaxKept && !m_runs.contains(geometry.getId()))
        m_runs.clear();
    const auto [found, isNew] = m_runs.try_emplace(geometry.getId());
    if (isNew)
        found->second = {boxesOf(geometry, geometry.triangles, 3),
                         boxesOf(geometry, geometry.lines, 2),
                         boxesOf(geometry, geometry.points, 1)};
    return found->second;
}

} // namespace kalmyr::detail
