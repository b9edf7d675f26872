#pragma once

#include <kalmyr/base/SbVec.h>

#include <span>
#include <string>
#include <vector>

/// \file
/// Curves and surfaces from control points and knots, after L. Piegl and W. Tiller, "The NURBS
/// Book", 2nd edition, chapters 2 to 4: basis functions by the recursion of Cox and de Boor (A2.2
/// and A2.3), homogeneous control points, derivatives by the quotient rule (4.3 and 4.5).

namespace kalmyr::detail {

/// Higher orders are refused: nobody draws them, and their cost grows with the square.
constexpr int kMaxNurbsOrder = 32;

/// A knot vector that fits its control points.
class NurbsKnots {
public:
    /// Empty when the knots can be used, else what is wrong with them. There are as many knots as
    /// points and the order together.
    template <class Number>
    std::string set(std::span<const Number> knots, int numPoints)
    {
        m_knots.assign(knots.begin(), knots.end());
        return check(numPoints);
    }

    int getOrder() const { return m_order; }
    int getNumPoints() const { return m_numPoints; }
    double getFirst() const { return m_knots[static_cast<std::size_t>(m_order - 1)]; }
    double getLast() const { return m_knots[static_cast<std::size_t>(m_numPoints)]; }
    /// The different knots from first to last.
    std::vector<double> getBreaks() const;

    /// How often a knot comes.
    int countOf(double knot) const;

    /// Values and derivatives of the basis functions that are not 0 at `t`, as many as the order;
    /// returns the number of the first one.
    int evaluate(double t, double* values, double* slopes) const;

private:
    std::string check(int numPoints);
    int findSpan(double t) const;

    std::vector<double> m_knots;
    int m_order = 0;
    int m_numPoints = 0;
};

/// A curve; each point is x w, y w, z w, w.
struct NurbsCurve {
    NurbsKnots knots;
    std::vector<SbVec4d> points;

    SbVec3d at(double t, SbVec3d* slope = nullptr) const;
};

/// A surface; the points of one v follow each other.
struct NurbsSurface {
    struct Sample {
        SbVec3d point, alongU, alongV;
    };
    NurbsKnots u, v;
    std::vector<SbVec4d> points;

    Sample at(double u, double v) const;
};

/// A place in a lattice of control points, those of one w after another, each row by row along u.
/// Parameters beyond the knots are taken to the nearest.
SbVec3f volumePoint(const NurbsKnots& u, const NurbsKnots& v, const NurbsKnots& w,
                    std::span<const SbVec4d> points, const SbVec3f& at);

/// Parameters at which a curve may be taken so that straight lines between stay within `tolerance`
/// of it; no more than `most`.
std::vector<double> curveParameters(const NurbsCurve& curve, double tolerance, std::size_t most);

/// Largest side of the box around the projected points.
double sizeOf(std::span<const SbVec4d> points);

/// Share of the size that may be lost at a complexity of 0 to 1.
double toleranceOf(float complexity);

/// Empty when all numbers are finite and all weights above 0.
std::string checkPoints(std::span<const SbVec4d> points);

} // namespace kalmyr::detail
