#pragma once

#include <kalmyr/manips/SoTransformManip.h>

/// A transform that the user scales: see SoScale3Dragger.
class KALMYR_VISIBLE SoScaleManip final : public SoTransformManip {
    SO_NODE_HEADER(SoScaleManip)

public:
    SoScaleManip();
    static void initClass();

protected:
    ~SoScaleManip() override;
    void takeFromDragger() override;
    void giveToDragger() override;
    SbMatrix getOwnSpace() const override;
    SbMatrix getDraggerPlace() const override;
};
