#pragma once

#include <kalmyr/manips/SoTransformManip.h>

/// A transform that the user moves: see SoTranslate3Dragger.
class KALMYR_VISIBLE SoTranslateManip final : public SoTransformManip {
    SO_NODE_HEADER(SoTranslateManip)

public:
    SoTranslateManip();
    static void initClass();

protected:
    ~SoTranslateManip() override;
    void takeFromDragger() override;
    void giveToDragger() override;
    SbMatrix getOwnSpace() const override;
    SbMatrix getDraggerPlace() const override;
};
