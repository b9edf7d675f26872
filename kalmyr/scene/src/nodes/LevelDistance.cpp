#include "nodes/LevelDistance.h"

#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>

namespace kalmyr::detail {

float eyeDistance(SoState* state, const SbVec3f& point)
{
    const SbMatrix& toWorld = SoModelMatrixElement::get(state);
    const SbVec3f eye = SoViewElement::get(state).volume.getProjectionPoint();
    bool isInvertible = true;
    const SbMatrix toObject = toWorld.inverse(&isInvertible);
    return isInvertible ? (toObject.point(eye) - point).length()
                        : (eye - toWorld.point(point)).length();
}

} // namespace kalmyr::detail
