#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/nodes/SoTransformation.h>

/// Puts what follows back into world space. BBOX is kept for files and has no effect here.
class KALMYR_API SoResetTransform : public SoTransformation {
    SO_NODE_HEADER(SoResetTransform)

public:
    enum ResetType { TRANSFORM = 1, BBOX = 2 };

    SoResetTransform();
    static void initClass();

    SoSFBitMask whatToReset;

    void doAction(SoAction* action) override;

protected:
    ~SoResetTransform() override;
};
