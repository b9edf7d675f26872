#include "NurbsBuilder.h"

#include "TrimmedGrid.h"
#include "VertexKeys.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <unordered_map>

namespace kalmyr::detail {

namespace {

constexpr int kMaxSegments = 1024;
constexpr std::size_t kMaxSamples = 400'000;

double distance(const SbVec3d& p, const SbVec3d& a, const SbVec3d& b)
{
    const SbVec3d ab = b - a;
    const double length2 = ab.dot(ab);
    const double t = length2 > 0 ? std::clamp((p - a).dot(ab) / length2, 0.0, 1.0) : 0;
    return (a + ab * t - p).length();
}

/// Chooses how often the patches between knots are divided.
class Divider {
public:
    Divider(const NurbsSurface& surface, double tolerance, const int (&segments)[2])
        : m_surface(surface), m_tolerance(tolerance)
    {
        m_breaks[0] = surface.u.getBreaks();
        m_breaks[1] = surface.v.getBreaks();
        for (int axis = 0; axis < 2; ++axis) {
            if (segments[axis] > 0)
                spread(axis, segments[axis]);
            else
                bend(axis);
        }
        if (segments[0] <= 0 && segments[1] <= 0)
            twist();
        for (int axis = 0; axis < 2; ++axis) {
            if (segments[axis] <= 0)
                turn(axis);
        }
        limit();
    }

    const std::vector<double>& getBreaks(int axis) const { return m_breaks[axis]; }

    /// Lines across the whole surface, and the patch that follows each of them.
    std::vector<double> getLines(int axis, std::vector<std::uint32_t>& patches) const
    {
        std::vector<double> lines;
        for (std::size_t i = 0; i + 1 < m_breaks[axis].size(); ++i) {
            const double from = m_breaks[axis][i], to = m_breaks[axis][i + 1];
            for (int k = 0; k < m_counts[axis][i]; ++k) {
                const double line = from + (to - from) * k / m_counts[axis][i];
                if (lines.empty() || line > lines.back()) {
                    lines.push_back(line);
                    patches.push_back(static_cast<std::uint32_t>(i));
                }
            }
        }
        lines.push_back(m_breaks[axis].back());
        return lines;
    }

private:
    const NurbsKnots& knots(int axis) const { return axis == 0 ? m_surface.u : m_surface.v; }
    SbVec3d at(int axis, double along, double across) const
    {
        return m_surface.at(axis == 0 ? along : across, axis == 0 ? across : along).point;
    }

    /// Places across the lines of an axis to look at: within and between the patches there.
    std::vector<double> samples(int axis) const
    {
        const std::vector<double>& across = m_breaks[1 - axis];
        std::vector<double> all{across.front()};
        for (std::size_t i = 0; i + 1 < across.size(); ++i) {
            for (int k = 1; k <= 4; ++k)
                all.push_back(across[i] + (across[i + 1] - across[i]) * k / 4);
        }
        const std::size_t most =
            std::max<std::size_t>(3, kMaxSamples / (9 * m_breaks[axis].size()));
        if (all.size() <= most)
            return all;
        std::vector<double> some;
        for (std::size_t i = 0; i < most; ++i)
            some.push_back(all[i * (all.size() - 1) / (most - 1)]);
        return some;
    }

    /// A number of segments over all patches by their size, at least one in each.
    void spread(int axis, int segments)
    {
        const std::vector<double>& breaks = m_breaks[axis];
        for (std::size_t i = 0; i + 1 < breaks.size(); ++i) {
            const double share = (breaks[i + 1] - breaks[i]) / (breaks.back() - breaks.front());
            m_counts[axis].push_back(static_cast<int>(
                std::clamp(std::round(share * segments), 1.0, double(kMaxSegments))));
        }
    }

    /// How far lines along an axis bend.
    void bend(int axis)
    {
        m_counts[axis].assign(m_breaks[axis].size() - 1, 1);
        if (knots(axis).getOrder() == 2)
            return;
        const std::vector<double> across = samples(axis);
        for (std::size_t i = 0; i + 1 < m_breaks[axis].size(); ++i) {
            const double from = m_breaks[axis][i], to = m_breaks[axis][i + 1];
            double whole = 0, quarter = 0;
            for (const double c : across) {
                SbVec3d p[9];
                for (int k = 0; k < 9; ++k)
                    p[k] = at(axis, from + (to - from) * k / 8, c);
                for (int k = 1; k < 8; ++k)
                    whole = std::max(whole, distance(p[k], p[0], p[8]));
                for (int k = 0; k < 8; k += 2)
                    quarter = std::max(quarter, distance(p[k + 1], p[k], p[k + 2]));
            }
            // The distance falls with the square of the number.
            if (whole > m_tolerance)
                m_counts[axis][i] = static_cast<int>(std::clamp(
                    std::ceil(4 * std::sqrt(quarter / m_tolerance)), 2.0, double(kMaxSegments)));
        }
    }

    /// A patch whose sides are straight may be twisted: two triangles are a fold of it.
    void twist()
    {
        for (std::size_t j = 0; j + 1 < m_breaks[1].size(); ++j) {
            for (std::size_t i = 0; i + 1 < m_breaks[0].size(); ++i) {
                const SbVec3d fold = (at(0, m_breaks[0][i], m_breaks[1][j])
                                      - at(0, m_breaks[0][i + 1], m_breaks[1][j])
                                      - at(0, m_breaks[0][i], m_breaks[1][j + 1])
                                      + at(0, m_breaks[0][i + 1], m_breaks[1][j + 1]))
                                     * 0.25;
                int& nu = m_counts[0][i];
                int& nv = m_counts[1][j];
                const double more = std::sqrt(fold.length() / (m_tolerance * nu * nv));
                if (more > 1) {
                    nu = static_cast<int>(std::min(std::ceil(nu * more), double(kMaxSegments)));
                    nv = static_cast<int>(std::min(std::ceil(nv * more), double(kMaxSegments)));
                }
            }
        }
    }

    /// Normals turn along lines that are straight, too, where a surface is twisted: from vertex to
    /// vertex no further than twice as far as along an arc over the whole surface.
    void turn(int axis)
    {
        const double size = sizeOf(m_surface.points);
        const double most = 6 * std::sqrt(2 * m_tolerance / size);
        if (!(size > 0) || !(most > 0))
            return;
        const std::vector<double> across = samples(axis);
        for (std::size_t i = 0; i + 1 < m_breaks[axis].size(); ++i) {
            const double from = m_breaks[axis][i], to = m_breaks[axis][i + 1];
            double angle = 0;
            for (const double c : across)
                angle = std::max(angle, turnBetween(axis, from, to, c));
            const double count = std::min(std::ceil(angle / most), double(kMaxSegments));
            m_counts[axis][i] = std::max(m_counts[axis][i], static_cast<int>(count));
        }
    }

    /// Returns how far the normal turns along a line of a patch, radians.
    double turnBetween(int axis, double from, double to, double across) const
    {
        constexpr int kSteps = 5;
        SbVec3d last;
        double sum = 0;
        for (int k = 0; k < kSteps; ++k) { // within the patch: the ends may be poles or creases
            const double along = from + (to - from) * (k + 0.5) / kSteps;
            const NurbsSurface::Sample s =
                m_surface.at(axis == 0 ? along : across, axis == 0 ? across : along);
            const SbVec3d normal = s.alongU.cross(s.alongV);
            if (last.length() > 0 && normal.length() > 0)
                sum += std::atan2(last.cross(normal).length(), last.dot(normal));
            last = normal;
        }
        return sum * kSteps / (kSteps - 1);
    }

    void limit()
    {
        const auto total = [this](int axis) {
            return std::accumulate(m_counts[axis].begin(), m_counts[axis].end(), 0.0);
        };
        // The work of a vertex grows with both orders.
        const double work = std::max(1.0, m_surface.u.getOrder() * m_surface.v.getOrder() / 64.0);
        const double share =
            std::sqrt(double(kMaxSurfaceVertices) / work / std::max(1.0, total(0) * total(1)));
        if (share >= 1)
            return;
        for (auto& counts : m_counts) {
            for (int& count : counts)
                count = std::max(1, static_cast<int>(count * share));
        }
    }

    const NurbsSurface& m_surface;
    double m_tolerance;
    std::vector<double> m_breaks[2];
    std::vector<int> m_counts[2];
};

/// Evaluates the vertices of a grid. At a crease there is one for each side.
class SurfaceWriter {
public:
    SurfaceWriter(const NurbsSurfaceInput& input, const Divider& divider, SoGeometry& geometry)
        : m_input(input), m_geometry(geometry)
    {
        for (int axis = 0; axis < 2; ++axis) {
            const NurbsKnots& knots = axis == 0 ? input.surface.u : input.surface.v;
            m_breaks[axis] = divider.getBreaks(axis);
            m_first[axis] = knots.getFirst();
            m_size[axis] = knots.getLast() - knots.getFirst();
            for (std::size_t i = 1; i + 1 < m_breaks[axis].size(); ++i)
                m_isCrease[axis].push_back(isCrease(axis, m_breaks[axis][i]));
        }
    }

    /// `at` from 0 to 1; `patch` tells the side of creases.
    std::uint32_t vertex(std::uint32_t number, const SbVec2d& at, const std::uint32_t (&patch)[2])
    {
        double t[2];
        std::uint64_t side = 0;
        double inner[2];
        for (int axis = 0; axis < 2; ++axis) {
            t[axis] = m_first[axis] + m_size[axis] * at[axis];
            inner[axis] = t[axis];
            const double low = m_breaks[axis][patch[axis]], high = m_breaks[axis][patch[axis] + 1];
            const double step = (high - low) * 1e-7;
            // Numbers that were brought to 0 to 1 and back are not quite the same.
            const double slack = 1e-13 * m_size[axis] + 1e-15 * std::abs(m_first[axis]);
            const bool isLow = std::abs(t[axis] - low) <= slack;
            const bool isHigh = std::abs(t[axis] - high) <= slack;
            if (isLow || isHigh) {
                t[axis] = isLow ? low : high;
                inner[axis] = isLow ? low + step : high - step;
            }
            const std::size_t border = patch[axis] + (isHigh ? 1u : 0u);
            if ((isLow || isHigh) && border > 0 && border + 1 < m_breaks[axis].size()
                && m_isCrease[axis][border - 1])
                side |= (isLow ? 1ull : 2ull) << (2 * axis);
        }
        const auto [found, isNew] =
            m_known.try_emplace(std::uint64_t(number) << 4 | side,
                                static_cast<std::uint32_t>(m_geometry.positions.size()));
        if (isNew)
            write(t, inner, at);
        return found->second;
    }

private:
    /// Derivatives differ from one side of a knot to the other where it comes as often as the
    /// degree.
    bool isCrease(int axis, double knot) const
    {
        const NurbsSurface& s = m_input.surface;
        const NurbsKnots& along = axis == 0 ? s.u : s.v;
        const NurbsKnots& across = axis == 0 ? s.v : s.u;
        if (along.countOf(knot) < along.getOrder() - 1)
            return false;
        // Many a circle is made of arcs that meet so, and smoothly.
        const double step = (along.getLast() - along.getFirst()) * 1e-7;
        for (int k = 0; k <= 4; ++k) {
            const double c = across.getFirst() + (across.getLast() - across.getFirst()) * k / 4;
            const SbVec3d before =
                normalAt(axis == 0 ? knot - step : c, axis == 0 ? c : knot - step);
            const SbVec3d after =
                normalAt(axis == 0 ? knot + step : c, axis == 0 ? c : knot + step);
            if (before.dot(after) < 0.9999 && before.length() > 0 && after.length() > 0)
                return true;
        }
        return false;
    }

    SbVec3d normalAt(double u, double v) const { return normalOf(m_input.surface.at(u, v)); }

    /// Zero where the surface has none.
    static SbVec3d normalOf(const NurbsSurface::Sample& s)
    {
        SbVec3d normal = s.alongU.cross(s.alongV);
        const double whole = s.alongU.length() * s.alongV.length();
        if (!(normal.length() > 1e-9 * whole) || !(whole > 0))
            return {};
        normal.normalize();
        return normal;
    }

    void write(const double (&t)[2], const double (&inner)[2], const SbVec2d& at)
    {
        const NurbsSurface::Sample sample = m_input.surface.at(t[0], t[1]);
        m_geometry.positions.emplace_back(sample.point);
        const bool isInside = inner[0] == t[0] && inner[1] == t[1];
        SbVec3d normal = isInside ? normalOf(sample) : normalAt(inner[0], inner[1]);
        // At a pole one of the derivatives is 0: that of a place next to it serves.
        for (double step = 1e-5; normal.length() == 0 && step < 0.2; step *= 10)
            normal = normalAt(t[0] + (at[0] < 0.5 ? step : -step) * m_size[0],
                              t[1] + (at[1] < 0.5 ? step : -step) * m_size[1]);
        if (normal.length() == 0)
            normal = SbVec3d(0, 0, 1);
        m_geometry.normals.emplace_back(m_input.clockwise ? -normal : normal);
        if (!m_input.makesTexCoords)
            return;
        const NurbsSurface* texture = m_input.texCoords;
        if (!texture) {
            m_geometry.texCoords.emplace_back(static_cast<float>(at[0]), static_cast<float>(at[1]));
            return;
        }
        const SbVec3d c = texture->at(t[0], t[1]).point;
        m_geometry.texCoords.emplace_back(static_cast<float>(c[0]), static_cast<float>(c[1]));
    }

    const NurbsSurfaceInput& m_input;
    SoGeometry& m_geometry;
    std::vector<double> m_breaks[2];
    std::vector<char> m_isCrease[2]; ///< of inner breaks
    double m_first[2], m_size[2];
    std::unordered_map<std::uint64_t, std::uint32_t> m_known;
};

/// Evenly spread ones, and the knots.
std::vector<double> evenParameters(const NurbsCurve& curve, int segments)
{
    std::vector<double> parameters = curve.knots.getBreaks();
    const double from = parameters.front(), to = parameters.back();
    const int count = std::min(segments, static_cast<int>(kMaxCurvePoints));
    for (int i = 1; i < count; ++i)
        parameters.push_back(from + (to - from) * i / count);
    std::sort(parameters.begin(), parameters.end());
    parameters.erase(std::unique(parameters.begin(), parameters.end()), parameters.end());
    return parameters;
}

std::vector<double> toUnit(const std::vector<double>& lines)
{
    std::vector<double> unit;
    for (const double line : lines)
        unit.push_back((line - lines.front()) / (lines.back() - lines.front()));
    unit.back() = 1;
    return unit;
}

} // namespace

void warnOfNurbs(const SoNode* node, const std::string& reason)
{
    SoDebugError::postWarning(node->getTypeId().getName().getString(), "\"%s\": %s; not drawn",
                              node->getName().getString(), reason.c_str());
}

namespace {

/// Whether the control points of the state are homogeneous.
bool isRationalState(SoState* state)
{
    const SoNode* node = state->get<SoHomogeneousElement>().getNode();
    return node && node == state->get<SoCoordinateElement>().getNode();
}

std::size_t countPoints(SoState* state)
{
    return isRationalState(state) ? state->get<SoHomogeneousElement>().value().size()
                                  : state->get<SoCoordinateElement>().value().size();
}

} // namespace

std::string controlPoints(SoState* state, std::span<const std::int32_t> indices, std::size_t count,
                          std::vector<SbVec4d>& points)
{
    const auto& coordinates = state->get<SoCoordinateElement>();
    const auto& homogeneous = state->get<SoHomogeneousElement>();
    const bool isRational = isRationalState(state);
    const std::size_t given = countPoints(state);
    const std::size_t listed = indices.empty() ? given : indices.size();
    if (listed < count)
        return "there are " + std::to_string(listed) + " control points where "
               + std::to_string(count) + " are needed";
    points.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::int64_t at = indices.empty() ? static_cast<std::int64_t>(i) : indices[i];
        if (at < 0 || static_cast<std::size_t>(at) >= given)
            return "coordIndex[" + std::to_string(i) + "] is " + std::to_string(at)
                   + ", out of the range of " + std::to_string(given) + " points";
        const auto place = static_cast<std::size_t>(at);
        if (isRational) {
            const SbVec4f& p = homogeneous.value()[place];
            points.emplace_back(p[0], p[1], p[2], p[3]);
        } else {
            const SbVec3f& p = coordinates.value()[place];
            points.emplace_back(p[0], p[1], p[2], 1.0);
        }
    }
    return checkPoints(points);
}

std::vector<std::vector<SbVec2d>> outlinesOf(const std::vector<SoProfilePiece>& pieces)
{
    std::vector<std::vector<SbVec2d>> outlines;
    for (const SoProfilePiece& piece : pieces) {
        if (piece.beginsAnew || outlines.empty())
            outlines.emplace_back();
        for (const SbVec2d& p : *piece.points) {
            if (outlines.back().empty() || outlines.back().back() != p)
                outlines.back().push_back(p);
        }
    }
    for (auto& outline : outlines) {
        while (outline.size() > 1 && outline.back() == outline.front())
            outline.pop_back();
    }
    std::erase_if(outlines, [](const auto& outline) { return outline.size() < 3; });
    return outlines;
}

std::string makeProfileLine(NurbsCurve&& curve, std::span<const float> knots, float complexity,
                            std::vector<SbVec2d>& line)
{
    if (curve.points.empty() && knots.empty())
        return {}; // nothing given yet
    const std::string fault = curve.knots.set(knots, static_cast<int>(curve.points.size()));
    if (!fault.empty())
        return fault;
    // Finer than surfaces are divided: an outline may go round a small part of one.
    const double tolerance = 0.25 * toleranceOf(complexity) * sizeOf(curve.points);
    for (const double t : curveParameters(curve, tolerance, kMaxCurvePoints)) {
        const SbVec3d p = curve.at(t);
        line.emplace_back(p[0], p[1]);
    }
    return {};
}

void buildNurbsCurve(const NurbsCurve& curve, double tolerance, SoGeometry& geometry, int segments)
{
    for (const double t : segments > 0 ? evenParameters(curve, segments)
                                       : curveParameters(curve, tolerance, kMaxCurvePoints)) {
        const auto number = static_cast<std::uint32_t>(geometry.positions.size());
        geometry.positions.emplace_back(curve.at(t));
        if (number > 0)
            geometry.lines.insert(geometry.lines.end(), {number - 1, number});
    }
    geometry.solid = false;
}

void buildNurbsSurface(const NurbsSurfaceInput& input, SoGeometry& geometry)
{
    // Half for the lines, half for what lies between them.
    const Divider divider(input.surface, std::max(input.tolerance / 2, 1e-30), input.segments);
    std::vector<std::uint32_t> patches[2];
    const std::vector<double> u = divider.getLines(0, patches[0]);
    const std::vector<double> v = divider.getLines(1, patches[1]);
    TrimmedGrid grid(toUnit(u), toUnit(v));
    std::vector<std::vector<SbVec2d>> outlines = input.outlines;
    for (auto& outline : outlines) {
        for (SbVec2d& p : outline)
            p = SbVec2d((p[0] - u.front()) / (u.back() - u.front()),
                        (p[1] - v.front()) / (v.back() - v.front()));
    }
    if (!grid.cut(outlines))
        return warnOfNurbs(input.node, "the trimming outlines have more than "
                                           + std::to_string(TrimmedGrid::kMaxCorners)
                                           + " corners, or cross each other nearly everywhere");
    SurfaceWriter writer(input, divider, geometry);
    const std::size_t columns = u.size() - 1;
    const auto numPatches = static_cast<std::uint32_t>(divider.getBreaks(0).size() - 1);
    for (std::size_t t = 0; t < grid.getCells().size(); ++t) {
        const std::uint32_t cell = grid.getCells()[t];
        const std::uint32_t patch[2] = {patches[0][cell % columns], patches[1][cell / columns]};
        std::uint32_t corner[3];
        for (std::size_t k = 0; k < 3; ++k) {
            const std::uint32_t number = grid.getTriangles()[3 * t + k];
            corner[k] = writer.vertex(number, grid.getVertices()[number], patch);
        }
        const auto& p = geometry.positions;
        // At a pole corners fall together.
        if (p[corner[0]] == p[corner[1]] || p[corner[1]] == p[corner[2]]
            || p[corner[2]] == p[corner[0]])
            continue;
        if (input.clockwise)
            std::swap(corner[1], corner[2]);
        geometry.triangles.insert(geometry.triangles.end(), corner, corner + 3);
        geometry.triangleFaces.push_back(
            static_cast<std::int32_t>(patch[1] * numPatches + patch[0]));
    }
    geometry.solid = input.solid;
    geometry.twoSided = !input.solid;
}

void buildCurveOfState(const SoNode* node, SoState* state, std::span<const std::int32_t> indices,
                       int numPoints, std::span<const float> knots, SoGeometry& geometry)
{
    NurbsCurve curve;
    if (countPoints(state) == 0 || (numPoints == 0 && knots.empty()))
        return; // nothing given yet
    std::string fault = curve.knots.set(knots, numPoints);
    if (fault.empty())
        fault = controlPoints(state, indices, static_cast<std::size_t>(numPoints), curve.points);
    if (!fault.empty())
        return warnOfNurbs(node, fault);
    buildNurbsCurve(curve, toleranceOf(SoComplexityElement::get(state)) * sizeOf(curve.points),
                    geometry);
}

namespace {

/// The surface over the texture coordinates of the state.
std::string textureSurface(SoState* state, const SurfaceFields& fields, NurbsSurface& surface)
{
    std::string fault = surface.u.set(fields.s, fields.numS);
    if (fault.empty())
        fault = surface.v.set(fields.t, fields.numT);
    if (!fault.empty())
        return "texture: " + fault;
    const auto given = state->get<SoTextureCoordinateElement>().value();
    const auto count =
        static_cast<std::size_t>(fields.numS) * static_cast<std::size_t>(fields.numT);
    const auto& indices = fields.textureIndices;
    if ((indices.empty() ? given.size() : indices.size()) < count)
        return "texture: there are fewer than " + std::to_string(count) + " control points";
    for (std::size_t i = 0; i < count; ++i) {
        const std::int64_t at = indices.empty() ? static_cast<std::int64_t>(i) : indices[i];
        if (at < 0 || static_cast<std::size_t>(at) >= given.size())
            return "textureCoordIndex[" + std::to_string(i) + "] is " + std::to_string(at)
                   + ", out of the range of " + std::to_string(given.size()) + " values";
        const SbVec2f& p = given[static_cast<std::size_t>(at)];
        surface.points.emplace_back(p[0], p[1], 0.0, 1.0);
    }
    return checkPoints(surface.points);
}

} // namespace

void buildSurfaceOfState(const SoNode* node, SoState* state, const SurfaceFields& fields,
                         SoGeometry& geometry)
{
    if (countPoints(state) == 0
        || (fields.numU == 0 && fields.numV == 0 && fields.u.empty() && fields.v.empty()))
        return; // nothing given yet
    NurbsSurfaceInput input;
    input.node = node;
    std::string fault = input.surface.u.set(fields.u, fields.numU);
    if (fault.empty())
        fault = input.surface.v.set(fields.v, fields.numV);
    if (fault.empty())
        fault = controlPoints(state, fields.indices,
                              static_cast<std::size_t>(fields.numU)
                                  * static_cast<std::size_t>(fields.numV),
                              input.surface.points);
    NurbsSurface texture;
    input.makesTexCoords = SoLookExtrasElement::isTextured(state);
    if (fault.empty() && input.makesTexCoords && fields.numS > 0) {
        fault = textureSurface(state, fields, texture);
        input.texCoords = &texture;
    }
    if (!fault.empty())
        return warnOfNurbs(node, fault);
    input.tolerance = toleranceOf(SoComplexityElement::get(state)) * sizeOf(input.surface.points);
    input.outlines = outlinesOf(state->get<SoProfileElement>().value());
    const SoShapeHintsValues& hints = SoShapeHintsElement::get(state);
    input.clockwise = hints.vertexOrdering == SoShapeHintsValues::CLOCKWISE;
    input.solid = hints.shapeType == SoShapeHintsValues::SOLID
                  && hints.vertexOrdering != SoShapeHintsValues::UNKNOWN_ORDERING;
    buildNurbsSurface(input, geometry);
}

std::uint64_t nurbsKey(SoState* state, bool isSurface)
{
    std::uint64_t key = addToKey(0, state->get<SoCoordinateElement>().getValueId());
    key = addToKey(key, state->getValueId(SoComplexityElement::getStackIndex()));
    if (!isSurface)
        return key;
    key = addToKey(key, state->getValueId(SoProfileElement::getStackIndex()));
    key = addToKey(key, state->getValueId(SoShapeHintsElement::getStackIndex()));
    if (SoLookExtrasElement::isTextured(state))
        key = addToKey(key + 1, state->get<SoTextureCoordinateElement>().getValueId());
    return key;
}

} // namespace kalmyr::detail
