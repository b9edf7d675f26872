#pragma once

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/draggers/SoDragHandle.h>
#include <kalmyr/draggers/SoDragPointer.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodekits/SoInteractionKit.h>

#include <functional>
#include <utility>
#include <vector>

class SoHandleEventAction;
class SoState;

/// A thing in the scene that the user takes with the left mouse button and moves.
///
/// It has handles, which light up while they are held. What the user does with them shows in the
/// fields of the dragger's class, and what a program or a connection sets in these fields shows in
/// the dragger: connections may lead either way. Each event sets only the fields that change, once.
/// While it is held the dragger takes all events; Escape gives the fields the values back that they
/// had when it was taken. What was taken stays under the pointer under any camera and any
/// transform.
class KALMYR_VISIBLE SoDragger : public SoInteractionKit {
    SO_KIT_HEADER(SoDragger)

public:
    static void initClass();

    SoSFNode setup;   ///< private; keeps the looks of the scene from the handles
    SoSFNode handles; ///< private

    SoSFBool isActive; ///< TRUE while the user holds it
    /// Length in pixels of one unit of the dragger's own space, however far away it stands and
    /// whatever scales it from outside; 0, as at first, leaves its size to the transforms around.
    SoSFFloat screenSize;

    using Function = void(void* userData, SoDragger* dragger);
    /// When it is taken, after each motion, and when it is let go, also by Escape. The data stay
    /// the caller's. What was added goes with the same two values.
    void addStartCallback(Function* function, void* userData = nullptr);
    void removeStartCallback(Function* function, void* userData = nullptr);
    void addMotionCallback(Function* function, void* userData = nullptr);
    void removeMotionCallback(Function* function, void* userData = nullptr);
    void addFinishCallback(Function* function, void* userData = nullptr);
    void removeFinishCallback(Function* function, void* userData = nullptr);

    /// From the dragger's own space to that around it.
    virtual SbMatrix getMotionMatrix() const = 0;

    /// Handles in order; their looks may be changed.
    int getNumHandles() const;
    SoDragHandle* getHandle(int index) const;
    /// The one that is held; null while none is.
    SoDragHandle* getActiveHandle() const { return m_held.get(); }
    /// From the handle's space to that around the dragger, for the camera of the state.
    SbMatrix getHandleMatrix(const SoDragHandle& handle, SoState* state) const;

    /// Lets the handles stand about a box of the dragger's own space instead of the one from -1 to
    /// 1, as long as `box` is not empty when it is asked for. Asked at every traversal.
    using Surround = std::function<SbBox3f()>;
    void setSurround(Surround surround) { m_surround = std::move(surround); }

    bool affectsState() const override { return false; }
    void doAction(SoAction* action) override;
    /// Called by the event action.
    void handleEvent(SoHandleEventAction* action);

    /// A drag with Shift held turns by multiples of this, 15 degrees.
    static constexpr float kSnapAngle = 0.26179938779914944f;

protected:
    SoDragger();
    ~SoDragger() override;

    /// It was taken at this handle.
    virtual void begin(const SoDragHandle& handle, const SoDragPointer& pointer) = 0;
    /// The pointer moved: the fields follow, always in relation to begin().
    virtual void follow(const SoDragHandle& handle, const SoDragPointer& pointer) = 0;
    /// Returns the matrix from a handle's coordinates to the dragger's own space, for those that
    /// change their form with a field.
    virtual SbMatrix getHandleSpace(const SoDragHandle&) const { return SbMatrix::identity(); }
    /// Whether the handles stand on a ball about the origin rather than on a box.
    virtual bool isRound() const { return false; }

    /// For constructors. The look of a handle is its children from the second on.
    struct Part {
        const char* name;
        int motion = SoDragHandle::NONE;
        SbVec3f axis{0, 0, 1};
        SbVec3f color{0.75f, 0.75f, 0.75f};
    };
    enum Knob { CONE, CUBE, BALL };
    static constexpr float kFaceTransparency = 0.85f;
    SoDragHandle* addKnob(const Part& part, Knob knob, const SbVec3f& position,
                          const SbVec3f& direction = {0, 1, 0}, float size = 0.1f);
    SoDragHandle* addLines(const Part& part, const std::vector<std::vector<SbVec3f>>& lines);
    /// Polygons that one sees through.
    SoDragHandle* addFaces(const Part& part, const std::vector<std::vector<SbVec3f>>& faces);
    SoDragHandle* addBall(const Part& part);
    /// A line to both sides of the origin with a knob at each end, and only towards the axis.
    void addArrow(const Part& part, Knob knob, const SbVec3f& axis, bool bothSides = true);

    /// Sets a field to what it does not say already.
    template <class Field, class Value>
    static void put(Field& field, const Value& value)
    {
        if (!(field.getValue() == value))
            field.setValue(value);
    }

private:
    struct Callback {
        Function* function;
        void* userData;
        bool operator==(const Callback&) const = default;
    };
    using Callbacks = std::vector<Callback>;

    SoDragHandle* addHandle(const Part& part, float transparency);
    SbMatrix geometryMatrix(SoState* state, const SbMatrix& motion) const;
    SbMatrix spaceOf(const SoDragHandle& handle, SoState* state) const;
    void take(SoHandleEventAction* action);
    SoDragPointer pointerOf(SoHandleEventAction* action) const;
    void letGo(SoHandleEventAction* action);
    void rest();
    void lightUp(bool on);
    void keepValues();
    void restoreValues();
    void call(const Callbacks& callbacks);
    static void remove(Callbacks& from, const Callback& callback);

    Callbacks m_startCallbacks;
    Callbacks m_motionCallbacks;
    Callbacks m_finishCallbacks;
    Surround m_surround;
    SoRef<SoDragHandle> m_held;
    SbVec3f m_hit;
    SbVec3f m_anchor;
    SbVec3f m_opposite;
    struct Before {
        SoField* field; // Of this node.
        SbString text;
        bool isDefault;
    };
    std::vector<Before> m_before; ///< fields when it was taken
};
