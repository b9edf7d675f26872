#include "Polar.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kalmyr::detail {

namespace {

using Row = std::array<double, 3>;

// Rows of float matrices that are meant to be square to each other are off by about this much.
constexpr double kSquareTolerance = 4e-7;
// Scale factors smaller than this part of the largest carry no direction any more.
constexpr double kSingularRatio = 1e-7;
constexpr int kMaxSweeps = 32;

double dot(const Row& a, const Row& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Row cross(const Row& a, const Row& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Row scaled(const Row& a, double f)
{
    return {a[0] * f, a[1] * f, a[2] * f};
}

bool isDiagonal(const Mat3d& m)
{
    const auto small = [&m](int i, int j) {
        return std::fabs(m[i][j]) <= kSquareTolerance * std::sqrt(std::fabs(m[i][i] * m[j][j]));
    };
    return small(0, 1) && small(0, 2) && small(1, 2);
}

// One Jacobi rotation: makes m[p][q] zero and turns the rows of `vectors` along.
void rotateAway(Mat3d& m, Mat3d& vectors, int p, int q)
{
    if (m[p][q] == 0) {
        return;
    }
    const double theta = (m[q][q] - m[p][p]) / (2 * m[p][q]);
    const double t = (theta >= 0 ? 1 : -1) / (std::fabs(theta) + std::sqrt(theta * theta + 1));
    const double c = 1 / std::sqrt(t * t + 1);
    const double s = t * c;
    for (int k = 0; k < 3; ++k) {
        const double a = m[k][p];
        const double b = m[k][q];
        m[k][p] = c * a - s * b;
        m[k][q] = s * a + c * b;
    }
    for (int k = 0; k < 3; ++k) {
        const double a = m[p][k];
        const double b = m[q][k];
        m[p][k] = c * a - s * b;
        m[q][k] = s * a + c * b;
        const double u = vectors[p][k];
        const double v = vectors[q][k];
        vectors[p][k] = c * u - s * v;
        vectors[q][k] = s * u + c * v;
    }
}

// Eigenvectors of a symmetric matrix as the rows of a proper rotation.
Mat3d eigenvectors(Mat3d m)
{
    Mat3d v{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    if (isDiagonal(m)) {
        return v;
    }
    for (int sweep = 0; sweep < kMaxSweeps; ++sweep) {
        const double off = std::fabs(m[0][1]) + std::fabs(m[0][2]) + std::fabs(m[1][2]);
        if (!(off > 1e-18 * (std::fabs(m[0][0]) + std::fabs(m[1][1]) + std::fabs(m[2][2])))) {
            break;
        }
        rotateAway(m, v, 0, 1);
        rotateAway(m, v, 0, 2);
        rotateAway(m, v, 1, 2);
    }
    return v;
}

Row anySquareTo(const Row& a)
{
    const Row ax{std::fabs(a[0]), std::fabs(a[1]), std::fabs(a[2])};
    const int least = static_cast<int>(std::min_element(ax.begin(), ax.end()) - ax.begin());
    Row unit{0, 0, 0};
    unit[least] = 1;
    const Row r = cross(a, unit);
    return scaled(r, 1 / std::sqrt(dot(r, r)));
}

// Makes the rows unit and square to each other, the longest first; rows without a direction are
// made up.
void orthonormalize(Mat3d& w, const std::array<double, 3>& scale)
{
    std::array<int, 3> order{0, 1, 2};
    std::stable_sort(order.begin(), order.end(),
                     [&scale](int i, int j) { return scale[i] > scale[j]; });
    const double limit = scale[order[0]] * kSingularRatio;
    if (!(limit > 0)) {
        w = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
        return;
    }
    Row& first = w[order[0]];
    Row& second = w[order[1]];
    Row& third = w[order[2]];
    first = scaled(first, 1 / std::sqrt(dot(first, first)));
    const double along = dot(first, second);
    for (int k = 0; k < 3; ++k) {
        second[k] -= along * first[k];
    }
    const double left = std::sqrt(dot(second, second));
    second = scale[order[1]] > limit && left > 0 ? scaled(second, 1 / left) : anySquareTo(first);
    const Row normal = cross(first, second);
    const bool evenOrder = (order[1] - order[0] + 3) % 3 == 1;
    const double proper = evenOrder ? 1 : -1;
    const double side = scale[order[2]] > limit ? (dot(normal, third) < 0 ? -1 : 1) : proper;
    third = scaled(normal, side);
}

// Undoes the mirroring of `w` by negative scale factors, so that the rotation turns as little as
// possible.
void unmirror(Mat3d& w, std::array<double, 3>& scale, const Mat3d& orientation)
{
    const Row along{dot(orientation[0], w[0]), dot(orientation[1], w[1]),
                    dot(orientation[2], w[2])};
    const int least =
        static_cast<int>(std::min_element(along.begin(), along.end()) - along.begin());
    // One factor or all three: the trace of the rotation is what remains of the sum.
    const bool all =
        -(along[0] + along[1] + along[2]) > along[0] + along[1] + along[2] - 2 * along[least];
    for (int i = 0; i < 3; ++i) {
        if (all || i == least) {
            w[i] = scaled(w[i], -1);
            scale[i] = -scale[i];
        }
    }
}

Mat3d transposed(const Mat3d& m)
{
    Mat3d r;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            r[i][j] = m[j][i];
        }
    }
    return r;
}

} // namespace

Polar polarDecompose(const Mat3d& a)
{
    Polar result;
    result.orientation = eigenvectors(multiply(a, transposed(a)));
    // a = vT s v r, hence v a = s (v r): the rows of v a have the lengths s.
    Mat3d w = multiply(result.orientation, a);
    for (int i = 0; i < 3; ++i) {
        result.scale[i] = std::sqrt(dot(w[i], w[i]));
    }
    orthonormalize(w, result.scale);
    if (determinant(w) < 0) {
        unmirror(w, result.scale, result.orientation);
    }
    result.rotation = multiply(transposed(result.orientation), w);
    return result;
}

double determinant(const Mat3d& m)
{
    return dot(m[0], cross(m[1], m[2]));
}

Mat3d multiply(const Mat3d& a, const Mat3d& b)
{
    Mat3d r;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            r[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
        }
    }
    return r;
}

} // namespace kalmyr::detail
