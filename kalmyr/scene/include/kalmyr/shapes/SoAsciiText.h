#pragma once

#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

/// Lines of text. Its values are kept; nothing is drawn.
class KALMYR_API SoAsciiText : public SoShape {
    SO_NODE_HEADER(SoAsciiText)

public:
    enum Justification { LEFT = 1, RIGHT = 2, CENTER = 3 };

    SoAsciiText();
    static void initClass();

    SoMFString string;
    SoSFFloat spacing; ///< of lines, in heights of the font
    SoSFEnum justification;
    SoMFFloat width; ///< of each line, 0: as the font has it

protected:
    ~SoAsciiText() override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;
};
