#pragma once

#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/nodes/SoFont.h>

/// Font of the texts that follow, by family and style.
class KALMYR_API SoFontStyle : public SoFont {
    SO_NODE_HEADER(SoFontStyle)

public:
    enum Family { SERIF, SANS, TYPEWRITER };
    enum Style { NONE = 0, BOLD = 1, ITALIC = 2 };

    SoFontStyle();
    static void initClass();
    void doAction(SoAction* action) override;

    SoSFEnum family;
    SoSFBitMask style;

protected:
    ~SoFontStyle() override;
};
