#pragma once

#include <kalmyr/nodekits/SoBaseKit.h>

/// A light with a place of its own and, if wanted, something to be seen there.
///
/// The light, directional from the beginning, lights what follows the kit; the transform moves
/// light and icon only.
class KALMYR_API SoLightKit : public SoBaseKit {
    SO_KIT_HEADER(SoLightKit)

public:
    SoLightKit();
    static void initClass();

    SoSFNode transformGroup; ///< private
    SoSFNode transform;
    SoSFNode light;
    SoSFNode iconSeparator; ///< private
    SoSFNode icon;

protected:
    ~SoLightKit() override;
};
