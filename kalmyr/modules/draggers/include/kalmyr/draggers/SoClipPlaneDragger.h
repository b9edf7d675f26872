#pragma once

#include <kalmyr/draggers/SoPlacedDragger.h>

/// Moves a plane along its normal by the plate, and turns it by the arrow, which shows to the side
/// that stays; with Shift square to the axis that is nearest. The ball moves the dragger about in
/// the plane.
class KALMYR_VISIBLE SoClipPlaneDragger final : public SoPlacedDragger {
    SO_KIT_HEADER(SoClipPlaneDragger)

public:
    SoClipPlaneDragger();
    static void initClass();

    SoSFPlane plane;    ///< 1 0 0 0
    SoSFVec3f location; ///< the dragger stands at the point of the plane that is nearest to it

protected:
    ~SoClipPlaneDragger() override;
    void begin(const SoDragHandle& handle, const SoDragPointer& pointer) override;
    SbVec3f getPlace() const override;
    void setPlace(const SbVec3f& place) override;
    SbVec3f getDirection() const override { return -plane.getValue().getNormal(); }
    void setDirection(const SbVec3f& value) override;

private:
    bool m_slides = false;
};
