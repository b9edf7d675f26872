#pragma once

#include <kalmyr/base/SbRotation.h>

#include <QStringList>

/// The ways to write a rotation as numbers, computed in double.
namespace rotations {

enum class Parts {
    AxisAngle, ///< axis x y z, angle
    Euler,     ///< the angles about x, y and z
    Quaternion ///< x y z w
};

/// The order in which the three turns happen, each about an axis that stays fixed.
struct EulerOrder {
    int first, second, third; ///< 0 x, 1 y, 2 z
    const char* name;
};
inline constexpr EulerOrder kEulerOrders[] = {{0, 1, 2, "XYZ"}, {0, 2, 1, "XZY"}, {1, 0, 2, "YXZ"},
                                              {1, 2, 0, "YZX"}, {2, 0, 1, "ZXY"}, {2, 1, 0, "ZYX"}};

struct Notation {
    Parts parts = Parts::AxisAngle;
    int order = 0; ///< of Euler angles, an index of kEulerOrders
    bool isInDegrees = true;
};

int numberCount(Parts parts);
/// Whether a number is an angle.
bool isAngle(Parts parts, int component);

/// The rotation that numbers stand for. False, and nothing, for an axis or a quaternion without a
/// direction and for numbers that are not finite.
bool make(const Notation& notation, const double* numbers, SbRotation& rotation);
/// A rotation for column vectors.
using Matrix = double[3][3];
/// The angles, in radians, about x, y and z that turn as the matrix does.
void splitEuler(const EulerOrder& order, const Matrix& matrix, double* angles);
void makeEuler(const EulerOrder& order, const double* angles, Matrix& matrix);

/// The numbers of a rotation: round ones, as floats, where they make the same bits.
void split(const Notation& notation, const SbRotation& rotation, double* numbers);

} // namespace rotations
