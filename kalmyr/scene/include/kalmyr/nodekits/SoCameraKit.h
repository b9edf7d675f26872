#pragma once

#include <kalmyr/nodekits/SoBaseKit.h>

/// A camera; a perspective camera from the beginning.
class KALMYR_API SoCameraKit : public SoBaseKit {
    SO_KIT_HEADER(SoCameraKit)

public:
    SoCameraKit();
    static void initClass();

    SoSFNode camera;

protected:
    ~SoCameraKit() override;
};
