#pragma once

#include <kalmyr/nodekits/SoBaseKit.h>

/// Base of kits that the user moves: geometry of their own below a separator.
///
/// Derived kits hang their parts below "geomSeparator".
class KALMYR_API SoInteractionKit : public SoBaseKit {
    SO_KIT_HEADER(SoInteractionKit)

public:
    SoInteractionKit();
    static void initClass();

    SoSFNode topSeparator;  ///< private
    SoSFNode geomSeparator; ///< private

protected:
    ~SoInteractionKit() override;
};
