#pragma once

#include <kalmyr/draggers/SoDragger.h>

/// Base of draggers that move, turn or scale as a transform does. Handles of any motion work in any
/// of them, as far as the class has the field; a class says which ones it has.
class KALMYR_VISIBLE SoMotionDragger : public SoDragger {
    SO_KIT_HEADER(SoMotionDragger)

public:
    static void initClass();

    SbMatrix getMotionMatrix() const override;

protected:
    SoMotionDragger();
    ~SoMotionDragger() override;
    void begin(const SoDragHandle& handle, const SoDragPointer& pointer) override;
    void follow(const SoDragHandle& handle, const SoDragPointer& pointer) override;

    /// For constructors: fields of the class. Limits of which the lower one is above the upper one
    /// do not hold.
    void useTranslation(SoSFVec3f& value, SoSFVec3f& low, SoSFVec3f& high);
    void useRotation(SoSFRotation& value) { m_rotation = &value; }
    void useAngleLimits(SoSFFloat& low, SoSFFloat& high);
    void useScale(SoSFVec3f& value, SoSFFloat& low, SoSFFloat& high);
    void useCenter(SoSFVec3f& center, SoSFRotation& scaleOrientation);

private:
    struct Values {
        SbVec3f translation;
        SbRotation rotation;
        SbVec3f scale{1, 1, 1};
        SbRotation axes; ///< of the scale
        SbVec3f center;

        SbMatrix matrix() const;
        SbVec3f fixedPoint() const { return center + translation; }
        SbVec3f scaleAxis(int i) const;
    };
    Values values() const;
    void put(const Values& values);

    bool moved(const SoDragHandle& handle, const SoDragPointer& pointer, SbVec3f& by) const;
    bool snapped(const SoDragPointer& pointer, const SbVec3f* axes, int numAxes, SbVec3f& by) const;
    bool turned(const SoDragHandle& handle, const SoDragPointer& pointer, SbRotation& by);
    bool turnedAbout(const SoDragHandle& handle, const SoDragPointer& pointer, SbRotation& by);
    bool turnedFreely(const SoDragPointer& pointer, SbRotation& by) const;
    bool scaled(const SoDragHandle& handle, const SoDragPointer& pointer, Values& to) const;
    bool scaledEvenly(const SoDragPointer& pointer, Values& to) const;
    bool scaledAlong(const SoDragPointer& pointer, int axis, Values& to) const;
    bool scaledInPlane(const SoDragPointer& pointer, int normal, Values& to) const;
    float limitedFactor(float factor, float scale) const;
    SbVec3f fixedPoint(const SoDragPointer& pointer) const;
    SbVec3f inStart(const SbVec3f& axis) const;

    Values m_start;
    float m_angle = 0; ///< about the axis since it was taken; beyond half a turn as well

    SoSFVec3f* m_translation = nullptr; // These are fields of this node.
    SoSFVec3f* m_minTranslation = nullptr;
    SoSFVec3f* m_maxTranslation = nullptr;
    SoSFRotation* m_rotation = nullptr;
    SoSFFloat* m_minAngle = nullptr;
    SoSFFloat* m_maxAngle = nullptr;
    SoSFVec3f* m_scale = nullptr;
    SoSFFloat* m_minScale = nullptr;
    SoSFFloat* m_maxScale = nullptr;
    SoSFVec3f* m_center = nullptr;
    SoSFRotation* m_scaleOrientation = nullptr;
};
