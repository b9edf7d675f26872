#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/sensors/SoTimerSensor.h>
#include <kalmyr/vrml/SoVRMLPointerSensor.h>

class SoHandleEventAction;

/// \file
/// Sensors of VRML97. Those of the pointer and of the viewer are driven by the events that the
/// scene is offered; the position of the viewer is looked at with each of them.

/// Turns dragging into a rotation about an axis.
class KALMYR_API SoVRMLCylinderSensor : public SoVRMLPointerSensor {
    SO_NODE_HEADER(SoVRMLCylinderSensor)

public:
    SoVRMLCylinderSensor();
    static void initClass();

    SoSFBool autoOffset;
    SoSFFloat diskAngle;
    SoSFBool enabled;
    SoSFFloat maxAngle;
    SoSFFloat minAngle;
    SoSFFloat offset;
    SoSFBool isActive;             ///< event out
    SoSFRotation rotation_changed; ///< event out
    SoSFVec3f trackPoint_changed;  ///< event out

protected:
    ~SoVRMLCylinderSensor() override;
    bool isEnabled() const override { return enabled.getValue(); }
    SoSFBool& active() override { return isActive; }
    void press(const Pointer& pointer) override;
    void drag(const Pointer& pointer) override;
    void release(const Pointer& pointer) override;

private:
    SbVec3f trackPoint(const SbLine& ray) const;

    bool m_isDisk = false;  ///< seen from above: turned like a disk
    float m_radius = 0;     ///< of the cylinder
    float m_height = 0;     ///< of the disk
    float m_direction = 0;  ///< of the last track point about the axis, radians
    float m_angle = 0;      ///< turned so far, offset included
    float m_lastOffset = 0; ///< what came out last
};

/// Turns dragging into a movement in a plane.
class KALMYR_API SoVRMLPlaneSensor : public SoVRMLPointerSensor {
    SO_NODE_HEADER(SoVRMLPlaneSensor)

public:
    SoVRMLPlaneSensor();
    static void initClass();

    SoSFBool autoOffset;
    SoSFBool enabled;
    SoSFVec2f maxPosition;
    SoSFVec2f minPosition;
    SoSFVec3f offset;
    SoSFBool isActive;             ///< event out
    SoSFVec3f trackPoint_changed;  ///< event out
    SoSFVec3f translation_changed; ///< event out

protected:
    ~SoVRMLPlaneSensor() override;
    bool isEnabled() const override { return enabled.getValue(); }
    SoSFBool& active() override { return isActive; }
    void press(const Pointer& pointer) override;
    void drag(const Pointer& pointer) override;
    void release(const Pointer& pointer) override;

private:
    SbVec3f m_start;       ///< where the pointer went down
    SbVec3f m_startOffset; ///< offset at that time
};

/// Tells that the viewer is inside a box.
class KALMYR_API SoVRMLProximitySensor : public SoNode {
    SO_NODE_HEADER(SoVRMLProximitySensor)

public:
    SoVRMLProximitySensor();
    static void initClass();

    SoSFVec3f center;
    SoSFVec3f size;
    SoSFBool enabled;
    SoSFBool isActive;                ///< event out
    SoSFVec3f position_changed;       ///< event out
    SoSFRotation orientation_changed; ///< event out
    SoSFTime enterTime;               ///< event out
    SoSFTime exitTime;                ///< event out

    bool affectsState() const override { return false; }
    /// Method of the event action.
    void handleEvent(SoHandleEventAction* action);

protected:
    ~SoVRMLProximitySensor() override;
};

/// Turns dragging into a rotation about a point.
class KALMYR_API SoVRMLSphereSensor : public SoVRMLPointerSensor {
    SO_NODE_HEADER(SoVRMLSphereSensor)

public:
    SoVRMLSphereSensor();
    static void initClass();

    SoSFBool autoOffset;
    SoSFBool enabled;
    SoSFRotation offset;
    SoSFBool isActive;             ///< event out
    SoSFRotation rotation_changed; ///< event out
    SoSFVec3f trackPoint_changed;  ///< event out

protected:
    ~SoVRMLSphereSensor() override;
    bool isEnabled() const override { return enabled.getValue(); }
    SoSFBool& active() override { return isActive; }
    void press(const Pointer& pointer) override;
    void drag(const Pointer& pointer) override;
    void release(const Pointer& pointer) override;

private:
    float m_radius = 0;
    SbVec3f m_start; ///< direction in which the pointer went down
};

/// A clock. It runs while something follows one of its events.
///
/// While it is active, its start and the length of its cycles are what they were at its beginning;
/// a start that is set meanwhile is none. Without `loop` it ends with the cycle under way.
class KALMYR_API SoVRMLTimeSensor : public SoNode {
    SO_NODE_HEADER(SoVRMLTimeSensor)

public:
    SoVRMLTimeSensor();
    static void initClass();

    SoSFTime cycleInterval;
    SoSFBool enabled;
    SoSFBool loop;
    SoSFTime startTime;
    SoSFTime stopTime;
    SoSFTime cycleTime;         ///< event out
    SoSFFloat fraction_changed; ///< event out
    SoSFBool isActive;          ///< event out
    SoSFTime time;              ///< event out

    bool affectsState() const override { return false; }
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;

protected:
    ~SoVRMLTimeSensor() override;
    bool noteChange(const SoNotification& notification) override;
    void listenersChanged(SoField* field) override;

private:
    bool isFollowed() const;
    void runTimer();
    void tick();
    bool begin(double now);
    void run(double now);
    void stop(double now);

    SoTimerSensor m_timer;
    double m_start = 0;      ///< of the active time
    double m_cycle = 1;      ///< seconds, while active
    double m_numCycles = 0;  ///< complete ones
    bool m_isMissed = false; ///< the present startTime came while active
};

/// Tells that its siblings are pointed at or clicked.
class KALMYR_API SoVRMLTouchSensor : public SoVRMLPointerSensor {
    SO_NODE_HEADER(SoVRMLTouchSensor)

public:
    SoVRMLTouchSensor();
    static void initClass();

    SoSFBool enabled;
    SoSFVec3f hitNormal_changed;   ///< event out
    SoSFVec3f hitPoint_changed;    ///< event out
    SoSFVec2f hitTexCoord_changed; ///< event out
    SoSFBool isActive;             ///< event out
    SoSFBool isOver;               ///< event out
    SoSFTime touchTime;            ///< event out

protected:
    ~SoVRMLTouchSensor() override;
    bool isEnabled() const override { return enabled.getValue(); }
    SoSFBool& active() override { return isActive; }
    void hover(const Pointer& pointer) override;
    void drag(const Pointer& pointer) override { hover(pointer); }
    void release(const Pointer& pointer) override;
};

/// Tells that a box can be seen.
class KALMYR_API SoVRMLVisibilitySensor : public SoNode {
    SO_NODE_HEADER(SoVRMLVisibilitySensor)

public:
    SoVRMLVisibilitySensor();
    static void initClass();

    SoSFVec3f center;
    SoSFBool enabled;
    SoSFVec3f size;
    SoSFTime enterTime; ///< event out
    SoSFTime exitTime;  ///< event out
    SoSFBool isActive;  ///< event out

    bool affectsState() const override { return false; }
    /// Method of the event action.
    void handleEvent(SoHandleEventAction* action);

protected:
    ~SoVRMLVisibilitySensor() override;
};
