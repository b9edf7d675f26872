#include "MatrixParts.h"

#include "RotationParts.h"

#include <kalmyr/base/SbVec.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double kDegree = std::numbers::pi / 180;
constexpr const rotations::EulerOrder& kOrder = rotations::kEulerOrders[0];

/// Scale, shear and the turned axes, of three rows. False for rows that lie in a plane.
bool splitRows(const SbVec3d (&rows)[3], double* scale, double* shear, SbVec3d (&axes)[3])
{
    // What is left of a row is noise when it is this small a part of it.
    constexpr double kFlat = 1e-6;
    axes[0] = rows[0];
    scale[0] = axes[0].normalize();
    const double xy = rows[1].dot(axes[0]);
    axes[1] = rows[1] - axes[0] * xy;
    scale[1] = axes[1].normalize();
    const double xz = rows[2].dot(axes[0]);
    const double yz = rows[2].dot(axes[1]);
    const SbVec3d rest = rows[2] - axes[0] * xz - axes[1] * yz;
    axes[2] = axes[0].cross(axes[1]);
    scale[2] = rest.dot(axes[2]);
    for (int i = 0; i < 3; ++i)
        if (!(std::fabs(scale[i]) > kFlat * rows[i].length()))
            return false;
    shear[0] = xy / scale[1];
    shear[1] = xz / scale[2];
    shear[2] = yz / scale[2];
    return true;
}

// What floats leave of a zero.
constexpr double kAngleNoise = 2e-5;
constexpr double kShearNoise = 5e-7;

double withoutNoise(double number, double noise)
{
    return std::fabs(number) < noise ? 0 : number;
}

bool isFinite(const SbMatrix& matrix)
{
    return std::all_of(matrix[0], matrix[0] + 16,
                       [](float number) { return std::isfinite(number); });
}

QString problemOf(const SbMatrix& matrix)
{
    if (!isFinite(matrix))
        return "It has numbers that are not finite.";
    if (!matrix.isAffine())
        return "It is projective: its last column is not 0 0 0 1.";
    return {};
}

} // namespace

MatrixParts MatrixParts::split(const SbMatrix& matrix)
{
    MatrixParts parts;
    parts.problem = problemOf(matrix);
    if (!parts.problem.isEmpty())
        return parts;
    double* numbers = parts.numbers.data();
    SbVec3d rows[3], axes[3];
    for (int i = 0; i < 3; ++i) {
        rows[i] = SbVec3d(matrix[i][0], matrix[i][1], matrix[i][2]);
        numbers[kTranslation + i] = matrix[3][i];
    }
    if (!splitRows(rows, numbers + kScale, numbers + kShear, axes)) {
        parts.problem = "It flattens space: a scale of 0 leaves no direction for the rotation.";
        return parts;
    }
    rotations::Matrix turned;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            turned[row][column] = axes[column][row];
    rotations::splitEuler(kOrder, turned, numbers + kRotation);
    for (int i = 0; i < 3; ++i) {
        numbers[kRotation + i] = withoutNoise(numbers[kRotation + i] / kDegree, kAngleNoise);
        numbers[kShear + i] = withoutNoise(numbers[kShear + i], kShearNoise);
    }
    for (const double decimals : {1e3, 1e5, 1e7}) {
        Numbers round = parts.numbers;
        for (std::size_t i = kRotation; i < round.size(); ++i)
            round[i] =
                static_cast<float>(std::round(round[i] * decimals) / decimals + 0.0); // no -0
        if (make(round) == matrix) {
            parts.numbers = round;
            break;
        }
    }
    return parts;
}

SbMatrix MatrixParts::make(const Numbers& numbers)
{
    double angles[3];
    for (int i = 0; i < 3; ++i)
        angles[i] = numbers[static_cast<std::size_t>(kRotation + i)] * kDegree;
    rotations::Matrix turned;
    rotations::makeEuler(kOrder, angles, turned);
    const auto [xy, xz, yz] = std::array{numbers[kShear], numbers[kShear + 1], numbers[kShear + 2]};
    const double shears[3][3] = {{1, 0, 0}, {xy, 1, 0}, {xz, yz, 1}};
    SbMatrix matrix;
    for (int row = 0; row < 3; ++row) {
        const auto at = static_cast<std::size_t>(row);
        for (int column = 0; column < 3; ++column) {
            double sum = 0;
            for (int i = 0; i < 3; ++i)
                sum += shears[row][i] * turned[column][i];
            matrix[row][column] = static_cast<float>(numbers[kScale + at] * sum);
        }
        matrix[3][row] = static_cast<float>(numbers[kTranslation + at]);
    }
    return matrix;
}

SbMatrix MatrixParts::make(const Numbers& numbers, int changed, const SbMatrix& present)
{
    SbMatrix matrix = make(numbers);
    if (changed < kRotation) {
        const float moved = matrix[3][changed];
        matrix = present;
        matrix[3][changed] = moved;
    } else {
        std::copy_n(present[3], 3, matrix[3]);
    }
    return matrix;
}
