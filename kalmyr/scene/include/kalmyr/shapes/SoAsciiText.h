#pragma once

#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoShape.h>

/// Lines of text in the font that is set, flat at z = 0. The first line stands on the x axis.
class KALMYR_API SoAsciiText : public SoShape {
    SO_NODE_HEADER(SoAsciiText)

public:
    enum Justification { LEFT = 1, RIGHT = 2, CENTER = 3 };

    SoAsciiText();
    static void initClass();

    SoMFString string;
    SoSFFloat spacing; ///< of lines, in heights of the font
    SoSFEnum justification;
    SoMFFloat width; ///< of each line in object units, 0: as the font has it

protected:
    ~SoAsciiText() override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;
    std::uint64_t stateKey(SoState* state) const override;
};
