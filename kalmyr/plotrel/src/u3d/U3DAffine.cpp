#include "U3DAffine.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

/// Inverses of matrices that stretch more unevenly than this lose what floats can hold.
constexpr double kMaxCondition = 1e6;

double largestAxis(const U3DAffine& a)
{
    double largest = 0;
    for (int row = 0; row < 3; ++row)
        largest = std::max(largest, std::hypot(a.m[row][0], a.m[row][1], a.m[row][2]));
    return largest;
}

} // namespace

U3DAffine::U3DAffine(const SbMatrix& matrix)
{
    const double w = matrix[3][3] != 0 ? matrix[3][3] : 1;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column)
            m[row][column] = matrix[row][column] / w;
    }
}

U3DAffine operator*(const U3DAffine& a, const U3DAffine& b)
{
    U3DAffine product;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column) {
            double sum = row == 3 ? b.m[3][column] : 0;
            for (int k = 0; k < 3; ++k)
                sum += a.m[row][k] * b.m[k][column];
            product.m[row][column] = sum;
        }
    }
    return product;
}

double U3DAffine::getDeterminant() const
{
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1])
           - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0])
           + m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

bool U3DAffine::invert(U3DAffine& inverse) const
{
    const double determinant = getDeterminant();
    if (determinant == 0 || !std::isfinite(determinant))
        return false;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            // Cofactors in cyclic order have their signs already.
            const int r1 = (column + 1) % 3;
            const int r2 = (column + 2) % 3;
            const int c1 = (row + 1) % 3;
            const int c2 = (row + 2) % 3;
            inverse.m[row][column] = (m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1]) / determinant;
        }
    }
    for (int column = 0; column < 3; ++column) {
        inverse.m[3][column] = 0;
        for (int k = 0; k < 3; ++k)
            inverse.m[3][column] -= m[3][k] * inverse.m[k][column];
    }
    const double condition = largestAxis(*this) * largestAxis(inverse);
    return condition <= kMaxCondition; // false for what is no number
}

SbMatrix U3DAffine::toMatrix() const
{
    SbMatrix matrix;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column)
            matrix[row][column] = static_cast<float>(m[row][column]);
    }
    return matrix;
}

bool isFinite(const SbMatrix& matrix)
{
    const float* values = &matrix[0][0];
    return std::all_of(values, values + 16, [](float value) { return std::isfinite(value); });
}

} // namespace kalmyr::detail
