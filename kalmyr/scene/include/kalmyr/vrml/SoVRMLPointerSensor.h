#pragma once

#include <kalmyr/base/SbLine.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoValueFields.h>

class SoHandleEventAction;

/// Base of the sensors of the pointer, which follow the pointer over the shapes of the
/// group that holds them, and take all events from a press of the first button to its release.
///
/// Driven by the events that the scene is offered. Of several sensors above a shape those of the
/// innermost group that has any count. No type of its own.
class KALMYR_API SoVRMLPointerSensor : public SoNode {
public:
    /// Method of the event action.
    void handleEvent(SoHandleEventAction* action);
    bool affectsState() const override { return false; }

protected:
    /// In the space of the group that holds the sensor.
    struct Hit {
        SbVec3f point;
        SbVec3f normal;
        SbVec2f texCoord;
    };
    /// One event.
    struct Pointer {
        SbLine ray; ///< in the space of the group
        SbTime time;
        bool isOver = false; ///< a shape of the group
        Hit hit;             ///< when over one
    };

    SoVRMLPointerSensor() = default;
    ~SoVRMLPointerSensor() override;

    virtual bool isEnabled() const = 0;
    virtual SoSFBool& active() = 0;
    /// The pointer moves without a button down.
    virtual void hover(const Pointer&) {}
    virtual void press(const Pointer&) {}
    virtual void drag(const Pointer&) {}
    virtual void release(const Pointer&) {}

private:
    bool findHit(SoHandleEventAction* action, Pointer& pointer) const;
    void start(SoHandleEventAction* action, const Pointer& pointer);
    void follow(SoHandleEventAction* action, const Pointer& pointer);
};
