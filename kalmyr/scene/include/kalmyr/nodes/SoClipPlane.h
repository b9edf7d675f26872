#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Cuts away what follows on the far side of a plane in object space.
class KALMYR_API SoClipPlane : public SoNode {
    SO_NODE_HEADER(SoClipPlane)

public:
    SoClipPlane();
    static void initClass();

    SoSFPlane plane; ///< the side that its normal points to stays
    SoSFBool on;

protected:
    ~SoClipPlane() override;
};
