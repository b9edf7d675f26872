#pragma once

#include <kalmyr/manips/SoTransformManip.h>

/// A transform that the user turns: see SoRotateSphericalDragger.
class KALMYR_VISIBLE SoRotateManip final : public SoTransformManip {
    SO_NODE_HEADER(SoRotateManip)

public:
    SoRotateManip();
    static void initClass();

protected:
    ~SoRotateManip() override;
    void takeFromDragger() override;
    void giveToDragger() override;
    SbMatrix getOwnSpace() const override;
    SbMatrix getDraggerPlace() const override;
};
