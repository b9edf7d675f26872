#pragma once

#include <kalmyr/base/SbMatrix.h>

namespace kalmyr::detail {

/// An affine matrix of doubles for row vectors: three axes, and in row 3 the translation.
struct U3DAffine {
    double m[4][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}};

    U3DAffine() = default;
    /// The affine part of the matrix.
    explicit U3DAffine(const SbMatrix& matrix);

    /// `a` happens first.
    friend U3DAffine operator*(const U3DAffine& a, const U3DAffine& b);
    /// False, and the result is of no use, for a matrix that has none, or none that would be exact
    /// enough to bring anything back.
    bool invert(U3DAffine& inverse) const;
    double getDeterminant() const;
    SbMatrix toMatrix() const;
};

/// Whether all values are numbers within the range of floats.
bool isFinite(const SbMatrix& matrix);

} // namespace kalmyr::detail
