#pragma once

#include <kalmyr/base/SbName.h>
#include <kalmyr/elements/SoState.h>

/// Font of the texts that follow.
struct SoFontValues {
    enum Family { SERIF = 0, SANS = 1, TYPEWRITER = 2 };
    enum Style { NONE = 0, BOLD = 1, ITALIC = 2 };
    SbName name; ///< of a font of the system; empty: any of the family
    Family family = SERIF;
    int style = NONE; ///< BOLD and ITALIC as bits
    float size = 10;  ///< height of a line in object units
    SbName language;  ///< of the text, a tag like "sr"; empty: not known
};
class KALMYR_API SoFontElement final : public SoValueElement<SoFontElement, SoFontValues> {
public:
    static int getStackIndex();
    static const SoFontValues& get(SoState* state) { return state->get<SoFontElement>().value(); }
};
