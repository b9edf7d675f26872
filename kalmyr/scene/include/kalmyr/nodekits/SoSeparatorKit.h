#pragma once

#include <kalmyr/nodekits/SoBaseKit.h>

/// A separator with the usual properties in a fixed order, and a list of kits below it.
class KALMYR_API SoSeparatorKit : public SoBaseKit {
    SO_KIT_HEADER(SoSeparatorKit)

public:
    SoSeparatorKit();
    static void initClass();

    SoSFNode topSeparator; ///< private
    SoSFNode pickStyle;
    SoSFNode appearance; ///< SoAppearanceKit
    SoSFNode transform;
    SoSFNode texture2Transform;
    SoSFNode childList; ///< of kits

protected:
    ~SoSeparatorKit() override;
};
