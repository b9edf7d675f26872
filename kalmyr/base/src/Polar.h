#pragma once

#include <array>

namespace kalmyr::detail {

using Mat3d = std::array<std::array<double, 3>, 3>;

/// A 3x3 matrix a (for row vectors) as transpose(orientation) * diag(scale) * orientation *
/// rotation, where orientation and rotation are proper rotations.
struct Polar {
    Mat3d orientation;
    std::array<double, 3> scale;
    Mat3d rotation;
};

/// Singular matrices are fine. Mirroring ones get the negative scale factors that leave the
/// smallest rotation. The orientation is the identity when the rows of `a` are square to each
/// other.
Polar polarDecompose(const Mat3d& a);

double determinant(const Mat3d& m);
Mat3d multiply(const Mat3d& a, const Mat3d& b);

} // namespace kalmyr::detail
