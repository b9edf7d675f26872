#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoTransformation.h>

/// Scales what follows about the origin.
class KALMYR_API SoScale : public SoTransformation {
    SO_NODE_HEADER(SoScale)

public:
    SoScale();
    static void initClass();

    SoSFVec3f scaleFactor;

    void doAction(SoAction* action) override;

    /// From the space of what follows to the space around; ignored fields count as their neutral
    /// value.
    SbMatrix getLocalMatrix() const;

protected:
    ~SoScale() override;
};
