#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoTransformation.h>

/// Transforms what follows by any matrix.
class KALMYR_API SoMatrixTransform : public SoTransformation {
    SO_NODE_HEADER(SoMatrixTransform)

public:
    SoMatrixTransform();
    static void initClass();

    SoSFMatrix matrix;

    void doAction(SoAction* action) override;

    /// From the space of what follows to the space around; ignored fields count as their neutral
    /// value.
    SbMatrix getLocalMatrix() const;

protected:
    ~SoMatrixTransform() override;
};
