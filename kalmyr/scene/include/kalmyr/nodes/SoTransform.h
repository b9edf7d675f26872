#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoTransformation.h>

/// Scales along any axes, turns, and moves, all about a centre.
class KALMYR_API SoTransform : public SoTransformation {
    SO_NODE_HEADER(SoTransform)

public:
    SoTransform();
    static void initClass();

    SoSFVec3f translation;
    SoSFRotation rotation;
    SoSFVec3f scaleFactor;
    SoSFRotation scaleOrientation; ///< axes of the scaling
    SoSFVec3f center;              ///< fixed point of rotation and scaling

    void doAction(SoAction* action) override;

    /// From the space of what follows to the space around; ignored fields count as their neutral
    /// value.
    SbMatrix getLocalMatrix() const;

    /// Sets the fields so that the local matrix becomes `matrix`; the centre stays as it is.
    /// False, and nothing changed, for a projective matrix.
    bool setMatrix(const SbMatrix& matrix);
    /// Moves the centre without changing the local matrix.
    void recenter(const SbVec3f& newCenter);

protected:
    ~SoTransform() override;
};
