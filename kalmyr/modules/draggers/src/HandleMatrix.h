#pragma once

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbMatrix.h>

class SoGroup;
class SoState;

namespace kalmyr::detail {

/// World length of a pixel at a point of the world, for the camera of the state; 0 before any.
float pixelSize(SoState* state, const SbVec3f& place);

/// From the box -1 to 1 to another one, with a margin around it; or evenly to a ball about the
/// origin that the box lies in.
void fitBox(const SbBox3f& box, bool isRound, SbMatrix& matrix);

/// Of a knob in a space: at a place, its y axis along the image of a direction, its unit of one
/// length in all directions.
SbMatrix knobMatrix(const SbMatrix& toSpace, const SbVec3f& position, const SbVec3f& direction,
                    float size);

/// Adds what shields handles from the looks around them.
void fillSetup(SoGroup* group);

} // namespace kalmyr::detail
