#pragma once

#include <kalmyr/nodekits/SoBaseKit.h>

/// Holds the look of shapes in one node: material, light model, drawing style, texture and font.
///
/// Nothing is there at first; what is there affects what follows the kit.
class KALMYR_API SoAppearanceKit : public SoBaseKit {
    SO_KIT_HEADER(SoAppearanceKit)

public:
    SoAppearanceKit();
    static void initClass();

    SoSFNode lightModel;
    SoSFNode environment;
    SoSFNode drawStyle;
    SoSFNode material;
    SoSFNode complexity;
    SoSFNode texture2;
    SoSFNode font;

protected:
    ~SoAppearanceKit() override;
};
