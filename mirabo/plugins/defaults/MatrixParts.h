#pragma once

#include <kalmyr/base/SbMatrix.h>

#include <QString>

#include <array>

/// A matrix as what it does, one after the other: scale, shear, rotation, translation.
struct MatrixParts {
    /// Translation x y z; angles about x, y and z in degrees, in this order; scale x y z; shear:
    /// how far x goes with y, x with z, y with z.
    using Numbers = std::array<double, 12>;
    static constexpr int kTranslation = 0, kRotation = 3, kScale = 6, kShear = 9;

    Numbers numbers{};
    /// Why the matrix cannot be written so; empty when it can.
    QString problem;

    /// Round numbers, where they make the same bits. A matrix that mirrors has a negative scale z.
    static MatrixParts split(const SbMatrix& matrix);
    static SbMatrix make(const Numbers& numbers);
    /// Changes one number and leaves the bits of what it has no part in.
    static SbMatrix make(const Numbers& numbers, int changed, const SbMatrix& present);
};
