#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoTransformation.h>

class SoState;

/// Scales what follows about the origin to a constant size on the screen: a unit at the origin's
/// depth, seen square to the line of sight, is `pixels` pixels long.
///
/// Follows the camera in every action that traverses one; without a camera, and where the origin is
/// behind the eye, it does nothing. The scales of the transformations above do not count; where
/// they are uneven, the mean size is as wanted.
class KALMYR_API SoPixelScale : public SoTransformation {
    SO_NODE_HEADER(SoPixelScale)

public:
    SoPixelScale();
    static void initClass();

    SoSFFloat pixels; ///< 0 or less, or not a number: no scale

    void doAction(SoAction* action) override;

    /// The factor under the present view; 1 where it does nothing.
    float getFactor(SoState* state) const;

protected:
    ~SoPixelScale() override;
};
