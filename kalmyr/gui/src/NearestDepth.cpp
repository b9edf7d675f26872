#include "NearestDepth.h"

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/shapes/SoGeometry.h>
#include <kalmyr/shapes/SoShape.h>

#include <algorithm>
#include <array>
#include <limits>
#include <span>

namespace {

constexpr float kNothing = std::numeric_limits<float>::max();

/// The sides of the view as half spaces of the space of the eye, which all go through the eye.
class Sides {
public:
    explicit Sides(const SbVec2f& tangents)
        : m_normals{SbVec3f(1, 0, -tangents[0]), SbVec3f(-1, 0, -tangents[0]),
                    SbVec3f(0, 1, -tangents[1]), SbVec3f(0, -1, -tangents[1]), SbVec3f(0, 0, -1)}
    {
    }

    /// Lower bound of the depth at which something of a box is seen; kNothing when it is out of
    /// view.
    float depthOf(const SbBox3f& box, const SbMatrix& toEye) const
    {
        std::array<SbVec3f, 8> corners;
        float depth = kNothing;
        for (int i = 0; i < 8; ++i) {
            corners[static_cast<std::size_t>(i)] = toEye.point(box.getCorner(i));
            depth = std::min(depth, -corners[static_cast<std::size_t>(i)][2]);
        }
        const bool isOutside =
            std::any_of(m_normals.begin(), m_normals.end(), [&](const SbVec3f& normal) {
                return std::all_of(corners.begin(), corners.end(),
                                   [&](const SbVec3f& c) { return normal.dot(c) < 0; });
            });
        return isOutside ? kNothing : std::max(depth, 0.0f);
    }

    /// The depth at which a convex figure of up to three corners is seen.
    float depthOf(std::span<const SbVec3f> corners) const
    {
        std::array<SbVec3f, kMaxCorners> figure, cut;
        std::copy(corners.begin(), corners.end(), figure.begin());
        std::size_t count = corners.size();
        for (const SbVec3f& normal : m_normals) {
            count = clip(std::span(figure.data(), count), normal, cut);
            figure.swap(cut);
            if (count == 0)
                return kNothing;
        }
        float depth = kNothing;
        for (std::size_t i = 0; i < count; ++i)
            depth = std::min(depth, -figure[i][2]);
        return depth;
    }

private:
    static constexpr std::size_t kMaxCorners = 16;

    static std::size_t clip(std::span<const SbVec3f> figure, const SbVec3f& normal,
                            std::array<SbVec3f, kMaxCorners>& out)
    {
        std::size_t count = 0;
        for (std::size_t i = 0; i < figure.size(); ++i) {
            const SbVec3f& a = figure[i];
            const SbVec3f& b = figure[(i + 1) % figure.size()];
            const float da = normal.dot(a);
            const float db = normal.dot(b);
            if (da >= 0)
                out[count++] = a;
            if ((da < 0) != (db < 0) && figure.size() > 1)
                out[count++] = a + (b - a) * (da / (da - db));
        }
        return count;
    }

    std::array<SbVec3f, 5> m_normals;
};

/// Goes where a thick ray would go.
class Search final : public SoRayPickAction {
public:
    Search(NearestDepth& owner, const NearestDepth::View& view)
        : SoRayPickAction(view.region), m_owner(owner), m_view(view), m_sides(view.tangents)
    {
        const SbMatrix toWorld = view.worldToEye.inverse();
        setRay(toWorld.point(SbVec3f(0, 0, 0)), toWorld.direction(SbVec3f(0, 0, -1)));
        setHooked(true);
    }

    float nearest = kNothing;

protected:
    bool mayHitWorldBox(const SbBox3f& box) const override
    {
        return m_sides.depthOf(box, m_view.worldToEye) < nearest;
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
        const SbMatrix toEye = SoModelMatrixElement::get(getState()) * m_view.worldToEye;
        SbBox3f box;
        SbVec3f center;
        shape.computeBBox(getState(), box, center);
        if (box.isEmpty())
            return;
        const float depth = m_sides.depthOf(box, toEye);
        if (depth >= nearest)
            return;
        if (depth >= m_view.enough) {
            nearest = depth;
            return;
        }
        const SoRef<SoGeometry> geometry = shape.getGeometry(getState());
        if (!geometry)
            return;
        const NearestDepth::Runs& runs = m_owner.runsOf(*geometry);
        look<3>(*geometry, geometry->triangles, runs.triangles, toEye);
        look<2>(*geometry, geometry->lines, runs.lines, toEye);
        look<1>(*geometry, geometry->points, runs.points, toEye);
    }

    template <std::size_t N>
    void look(const SoGeometry& geometry, const std::vector<std::uint32_t>& indices,
              const std::vector<SbBox3f>& runs, const SbMatrix& toEye)
    {
        constexpr std::size_t step = N * NearestDepth::kRunLength;
        for (std::size_t run = 0; run < runs.size(); ++run) {
            if (m_sides.depthOf(runs[run], toEye) >= nearest)
                continue;
            const std::size_t end = std::min((run + 1) * step, indices.size());
            for (std::size_t i = run * step; i + N <= end; i += N) {
                std::array<SbVec3f, N> corners;
                for (std::size_t c = 0; c < N; ++c)
                    corners[c] = toEye.point(geometry.positions[indices[i + c]]);
                nearest = std::min(nearest, m_sides.depthOf(corners));
            }
        }
    }

    NearestDepth& m_owner;
    const NearestDepth::View& m_view;
    const Sides m_sides;
};

std::vector<SbBox3f> boxesOf(const SoGeometry& geometry, const std::vector<std::uint32_t>& indices,
                             std::size_t corners)
{
    const std::size_t step = corners * NearestDepth::kRunLength;
    std::vector<SbBox3f> boxes((indices.size() + step - 1) / step);
    for (std::size_t i = 0; i < indices.size(); ++i)
        boxes[i / step].extendBy(geometry.positions[indices[i]]);
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
