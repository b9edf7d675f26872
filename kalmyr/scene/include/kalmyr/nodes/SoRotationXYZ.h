#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoTransformation.h>

/// Turns what follows about one of the main axes.
class KALMYR_API SoRotationXYZ : public SoTransformation {
    SO_NODE_HEADER(SoRotationXYZ)

public:
    enum Axis { X = 0, Y = 1, Z = 2 };

    SoRotationXYZ();
    static void initClass();

    SoSFEnum axis;
    SoSFFloat angle; ///< radians, right-handed

    void doAction(SoAction* action) override;

    /// From the space of what follows to the space around; ignored fields count as their neutral
    /// value.
    SbMatrix getLocalMatrix() const;
    /// Axis and angle as a rotation.
    SbRotation getRotation() const;

protected:
    ~SoRotationXYZ() override;
};
