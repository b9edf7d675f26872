#pragma once

#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

/// Lines of text, flat at z = 0, in the look that `fontStyle` describes.
class KALMYR_API SoVRMLText : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLText)

public:
    SoVRMLText();
    static void initClass();

    SoSFNode fontStyle;
    SoMFFloat length;
    SoSFFloat maxExtent;
    SoMFString string;

protected:
    ~SoVRMLText() override;

    void buildGeometry(SoState* state, SoGeometry& geometry) override;
};
