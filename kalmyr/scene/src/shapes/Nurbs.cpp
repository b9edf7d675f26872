#include "Nurbs.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kalmyr::detail {

namespace {

using Basis = std::array<double, kMaxNurbsOrder>;

/// A segment is divided no more often than this.
constexpr int kMaxDepth = 16;
constexpr double kCoarsest = 1e-2;

SbVec3d project(const SbVec4d& p)
{
    return {p[0] / p[3], p[1] / p[3], p[2] / p[3]};
}

/// Derivative of p / w for homogeneous p and its derivative.
SbVec3d projectSlope(const SbVec4d& p, const SbVec4d& slope)
{
    SbVec3d out;
    for (int i = 0; i < 3; ++i)
        out[i] = (slope[i] - p[i] / p[3] * slope[3]) / p[3];
    return out;
}

/// How far a point lies from the segment between two others.
double distance(const SbVec3d& p, const SbVec3d& a, const SbVec3d& b)
{
    const SbVec3d ab = b - a;
    const double length2 = ab.dot(ab);
    const double t = length2 > 0 ? std::clamp((p - a).dot(ab) / length2, 0.0, 1.0) : 0;
    return (a + ab * t - p).length();
}

struct CurveDivider {
    const NurbsCurve& curve;
    double tolerance;
    std::size_t most;
    std::vector<double>& parameters;

    /// Adds the inner parameters of a segment and its end.
    void divide(double from, const SbVec3d& start, double to, const SbVec3d& end, int depth)
    {
        const double middle = (from + to) / 2;
        bool isStraight =
            depth >= kMaxDepth || parameters.size() + 1 >= most || middle <= from || middle >= to;
        SbVec3d half;
        if (!isStraight) {
            half = curve.at(middle);
            isStraight = depth > 0 && distance(half, start, end) <= tolerance
                         && distance(curve.at((from + middle) / 2), start, end) <= tolerance
                         && distance(curve.at((middle + to) / 2), start, end) <= tolerance;
        }
        if (isStraight) {
            parameters.push_back(to);
            return;
        }
        divide(from, start, middle, half, depth + 1);
        divide(middle, half, to, end, depth + 1);
    }
};

} // namespace

std::string NurbsKnots::check(int numPoints)
{
    const int numKnots = static_cast<int>(m_knots.size());
    m_numPoints = numPoints;
    m_order = numKnots - numPoints;
    if (numPoints < 2)
        return "there are fewer than 2 control points";
    if (m_order < 2 || m_order > numPoints)
        return std::to_string(numKnots) + " knots do not fit " + std::to_string(numPoints)
               + " control points";
    if (m_order > kMaxNurbsOrder)
        return "the order " + std::to_string(m_order) + " is higher than "
               + std::to_string(kMaxNurbsOrder);
    for (std::size_t i = 0; i < m_knots.size(); ++i) {
        if (!std::isfinite(m_knots[i]) || (i > 0 && m_knots[i] < m_knots[i - 1]))
            return "knot " + std::to_string(i) + " is not finite or below the one before";
    }
    if (!(getFirst() < getLast()))
        return "the knots leave no room between the first and the last";
    return {};
}

std::vector<double> NurbsKnots::getBreaks() const
{
    std::vector<double> breaks;
    for (int i = m_order - 1; i <= m_numPoints; ++i) {
        const double knot = m_knots[static_cast<std::size_t>(i)];
        if (breaks.empty() || knot > breaks.back())
            breaks.push_back(knot);
    }
    return breaks;
}

int NurbsKnots::countOf(double knot) const
{
    return static_cast<int>(std::count(m_knots.begin(), m_knots.end(), knot));
}

/// The span that a parameter belongs to; the last one that is not empty at the end.
int NurbsKnots::findSpan(double t) const
{
    const auto first = m_knots.begin() + m_order - 1, last = m_knots.begin() + m_numPoints;
    const auto above =
        t < *last ? std::upper_bound(first, last, t) : std::lower_bound(first, last, *last);
    return std::max(static_cast<int>(above - m_knots.begin()) - 1, m_order - 1);
}

int NurbsKnots::evaluate(double t, double* values, double* slopes) const
{
    t = std::clamp(t, getFirst(), getLast());
    const int span = findSpan(t);
    const int degree = m_order - 1;
    const auto knot = [&](int i) { return m_knots[static_cast<std::size_t>(i)]; };
    Basis left, right;
    Basis lower{}; // of one degree less
    values[0] = 1;
    for (int j = 1; j <= degree; ++j) {
        if (j == degree)
            std::copy_n(values, j, lower.begin());
        left[static_cast<std::size_t>(j)] = t - knot(span + 1 - j);
        right[static_cast<std::size_t>(j)] = knot(span + j) - t;
        double saved = 0;
        for (int r = 0; r < j; ++r) {
            const double l = left[static_cast<std::size_t>(j - r)];
            const double rr = right[static_cast<std::size_t>(r + 1)];
            const double part = rr + l > 0 ? values[r] / (rr + l) : 0;
            values[r] = saved + rr * part;
            saved = l * part;
        }
        values[j] = saved;
    }
    for (int r = 0; r <= degree; ++r) {
        const int i = span - degree + r;
        const double before = r > 0 ? knot(i + degree) - knot(i) : 0;
        const double after = r < degree ? knot(i + degree + 1) - knot(i + 1) : 0;
        double slope = 0;
        if (before > 0)
            slope += lower[static_cast<std::size_t>(r - 1)] / before;
        if (after > 0)
            slope -= lower[static_cast<std::size_t>(r)] / after;
        slopes[r] = degree * slope;
    }
    return span - degree;
}

SbVec3d NurbsCurve::at(double t, SbVec3d* slope) const
{
    Basis values, slopes;
    const int first = knots.evaluate(t, values.data(), slopes.data());
    SbVec4d p, d;
    for (int i = 0; i < knots.getOrder(); ++i) {
        const SbVec4d& control = points[static_cast<std::size_t>(first + i)];
        p += control * values[static_cast<std::size_t>(i)];
        d += control * slopes[static_cast<std::size_t>(i)];
    }
    if (slope)
        *slope = projectSlope(p, d);
    return project(p);
}

NurbsSurface::Sample NurbsSurface::at(double atU, double atV) const
{
    Basis nu, du, nv, dv;
    const int firstU = u.evaluate(atU, nu.data(), du.data());
    const int firstV = v.evaluate(atV, nv.data(), dv.data());
    SbVec4d p, pu, pv;
    for (int j = 0; j < v.getOrder(); ++j) {
        SbVec4d row, slope;
        const std::size_t begin =
            static_cast<std::size_t>(firstV + j) * static_cast<std::size_t>(u.getNumPoints())
            + static_cast<std::size_t>(firstU);
        for (int i = 0; i < u.getOrder(); ++i) {
            const SbVec4d& control = points[begin + static_cast<std::size_t>(i)];
            row += control * nu[static_cast<std::size_t>(i)];
            slope += control * du[static_cast<std::size_t>(i)];
        }
        p += row * nv[static_cast<std::size_t>(j)];
        pu += slope * nv[static_cast<std::size_t>(j)];
        pv += row * dv[static_cast<std::size_t>(j)];
    }
    return {project(p), projectSlope(p, pu), projectSlope(p, pv)};
}

SbVec3f volumePoint(const NurbsKnots& u, const NurbsKnots& v, const NurbsKnots& w,
                    std::span<const SbVec4d> points, const SbVec3f& at)
{
    const NurbsKnots* const knots[] = {&u, &v, &w};
    Basis values[3], slopes;
    std::size_t first[3], order[3];
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const float given = at[static_cast<int>(axis)];
        const double t = std::isfinite(given) ? given : knots[axis]->getFirst();
        first[axis] =
            static_cast<std::size_t>(knots[axis]->evaluate(t, values[axis].data(), slopes.data()));
        order[axis] = static_cast<std::size_t>(knots[axis]->getOrder());
    }
    const auto columns = static_cast<std::size_t>(u.getNumPoints());
    const auto rows = static_cast<std::size_t>(v.getNumPoints());
    SbVec4d p;
    for (std::size_t k = 0; k < order[2]; ++k) {
        for (std::size_t j = 0; j < order[1]; ++j) {
            const std::size_t row = (first[2] + k) * rows + first[1] + j;
            for (std::size_t i = 0; i < order[0]; ++i)
                p += points[row * columns + first[0] + i]
                     * (values[0][i] * values[1][j] * values[2][k]);
        }
    }
    return SbVec3f(project(p));
}

std::vector<double> curveParameters(const NurbsCurve& curve, double tolerance, std::size_t most)
{
    const std::vector<double> breaks = curve.knots.getBreaks();
    std::vector<double> parameters{breaks.front()};
    CurveDivider divider{curve, tolerance, most, parameters};
    for (std::size_t i = 0; i + 1 < breaks.size(); ++i) {
        if (curve.knots.getOrder() == 2)
            parameters.push_back(breaks[i + 1]); // straight, whatever the weights
        else
            divider.divide(breaks[i], curve.at(breaks[i]), breaks[i + 1], curve.at(breaks[i + 1]),
                           0);
    }
    return parameters;
}

double sizeOf(std::span<const SbVec4d> points)
{
    SbVec3d low, high;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const SbVec3d p = project(points[i]);
        for (int c = 0; c < 3; ++c) {
            low[c] = i ? std::min(low[c], p[c]) : p[c];
            high[c] = i ? std::max(high[c], p[c]) : p[c];
        }
    }
    const SbVec3d size = high - low;
    return std::max({size[0], size[1], size[2]});
}

double toleranceOf(float complexity)
{
    return kCoarsest * std::pow(10.0, -2.0 * std::clamp(complexity, 0.0f, 1.0f));
}

std::string checkPoints(std::span<const SbVec4d> points)
{
    for (std::size_t i = 0; i < points.size(); ++i) {
        const SbVec4d& p = points[i];
        if (!std::isfinite(p[0] + p[1] + p[2]) || !(p[3] > 0) || !std::isfinite(p[3]))
            return "control point " + std::to_string(i)
                   + " is not finite, or its weight is not above 0";
    }
    return {};
}

} // namespace kalmyr::detail
