#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Look of a text.
class KALMYR_API SoVRMLFontStyle : public SoNode {
    SO_NODE_HEADER(SoVRMLFontStyle)

public:
    SoVRMLFontStyle();
    static void initClass();

    SoMFString family;
    SoSFBool horizontal;
    SoMFString justify;
    SoSFString language; ///< of the text, a tag like "sr": chooses forms of letters, and fonts
    SoSFBool leftToRight;
    SoSFFloat size;
    SoSFFloat spacing;
    SoSFString style;
    SoSFBool topToBottom;

protected:
    ~SoVRMLFontStyle() override;
};
