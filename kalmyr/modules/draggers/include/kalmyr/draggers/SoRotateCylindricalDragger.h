#pragma once

#include <kalmyr/draggers/SoRotateAxisDragger.h>

/// Turns about its own y axis, taken at the side of a cylinder. Shift turns in steps of 15 degrees.
class KALMYR_VISIBLE SoRotateCylindricalDragger final : public SoRotateAxisDragger {
    SO_KIT_HEADER(SoRotateCylindricalDragger)

public:
    SoRotateCylindricalDragger();
    static void initClass();

protected:
    ~SoRotateCylindricalDragger() override;
};
