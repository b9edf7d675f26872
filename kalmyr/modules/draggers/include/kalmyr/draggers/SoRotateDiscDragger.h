#pragma once

#include <kalmyr/draggers/SoRotateAxisDragger.h>

/// Turns about its own z axis, taken at the rim of a disc. Shift turns in steps of 15 degrees.
class KALMYR_VISIBLE SoRotateDiscDragger final : public SoRotateAxisDragger {
    SO_KIT_HEADER(SoRotateDiscDragger)

public:
    SoRotateDiscDragger();
    static void initClass();

protected:
    ~SoRotateDiscDragger() override;
};
