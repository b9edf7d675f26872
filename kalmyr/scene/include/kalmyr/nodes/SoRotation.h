#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoTransformation.h>

/// Turns what follows about the origin.
class KALMYR_API SoRotation : public SoTransformation {
    SO_NODE_HEADER(SoRotation)

public:
    SoRotation();
    static void initClass();

    SoSFRotation rotation;

    void doAction(SoAction* action) override;

    /// From the space of what follows to the space around; ignored fields count as their neutral
    /// value.
    SbMatrix getLocalMatrix() const;

protected:
    ~SoRotation() override;
};
