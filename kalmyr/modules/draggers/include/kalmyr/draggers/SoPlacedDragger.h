#pragma once

#include <kalmyr/draggers/SoDragger.h>

/// Base of draggers that stand at a place and show in a direction, as lights do: one handle moves
/// the place, one turns the direction about it.
class KALMYR_VISIBLE SoPlacedDragger : public SoDragger {
    SO_KIT_HEADER(SoPlacedDragger)

public:
    static void initClass();

    /// Turns -z into the direction and moves the origin to the place.
    SbMatrix getMotionMatrix() const override;

protected:
    SoPlacedDragger();
    ~SoPlacedDragger() override;
    void begin(const SoDragHandle& handle, const SoDragPointer& pointer) override;
    void follow(const SoDragHandle& handle, const SoDragPointer& pointer) override;
    bool isRound() const override { return true; }

    virtual SbVec3f getPlace() const = 0;
    virtual void setPlace(const SbVec3f& place) = 0;
    /// Of any length but 0, at its least -z.
    virtual SbVec3f getDirection() const { return {0, 0, -1}; }
    /// The direction keeps its length.
    virtual void setDirection(const SbVec3f&) {}
    /// For motion OTHER.
    virtual void followOther(const SoDragHandle&, const SoDragPointer&) {}

    const SbVec3f& placeBefore() const { return m_place; }
    const SbVec3f& directionBefore() const { return m_direction; }

private:
    SbVec3f m_place; ///< when it was taken
    SbVec3f m_direction;
};
