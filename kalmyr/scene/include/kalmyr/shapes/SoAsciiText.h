#pragma once

#include <kalmyr/shapes/SoTextShape.h>

/// Lines of text in the font that is set, flat at z = 0.
class KALMYR_API SoAsciiText : public SoTextShape {
    SO_NODE_HEADER(SoAsciiText)

public:
    SoAsciiText();
    static void initClass();

    SoMFFloat width; ///< of each line in object units, 0: as the font has it

protected:
    ~SoAsciiText() override;
    void fillLayout(SoState* state, kalmyr::detail::TextLayout& text) const override;
    void buildGeometry(SoState* state, SoGeometry& geometry) override;
};
