#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoTransformation.h>

/// Moves what follows.
class KALMYR_API SoTranslation : public SoTransformation {
    SO_NODE_HEADER(SoTranslation)

public:
    SoTranslation();
    static void initClass();

    SoSFVec3f translation;

    void doAction(SoAction* action) override;

    /// From the space of what follows to the space around; ignored fields count as their neutral
    /// value.
    SbMatrix getLocalMatrix() const;

protected:
    ~SoTranslation() override;
};
