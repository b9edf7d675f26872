#pragma once

#include <kalmyr/base/SbLine.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodekits/SoInteractionKit.h>

#include <vector>

class SoHandleEventAction;
class SoState;

/// A thing in the scene that the user takes with the left mouse button and moves.
///
/// Its shape, drawn as lines at first, moves with what the dragger says in its fields; programs and
/// connections read them. While it is held it takes all events.
class KALMYR_VISIBLE SoDragger : public SoInteractionKit {
    SO_KIT_HEADER(SoDragger)

public:
    static void initClass();

    SoSFNode drawStyle; ///< how the shape is drawn
    SoSFNode shape;     ///< what can be taken hold of

    SoSFBool isActive; ///< TRUE while the user holds it

    using Function = void(void* userData, SoDragger* dragger);
    /// When it is taken, each time that it has moved, and when it is let go. The data stay the
    /// caller's. What was added goes with the same two values.
    void addStartCallback(Function* function, void* userData = nullptr);
    void removeStartCallback(Function* function, void* userData = nullptr);
    void addMotionCallback(Function* function, void* userData = nullptr);
    void removeMotionCallback(Function* function, void* userData = nullptr);
    void addFinishCallback(Function* function, void* userData = nullptr);
    void removeFinishCallback(Function* function, void* userData = nullptr);

    /// From the space of the shape to that around the dragger.
    virtual SbMatrix getMotionMatrix() const = 0;

    bool affectsState() const override { return false; }
    void doAction(SoAction* action) override;
    /// Called by the event action.
    void handleEvent(SoHandleEventAction* action);

protected:
    SoDragger();
    ~SoDragger() override;

    /// Where the pointer is, in the space around the dragger.
    struct Pointer {
        SbLine line;   ///< from the eye into the scene
        SbVec3f ahead; ///< unit vector in which the camera looks
        bool shift;
        bool ctrl;
    };
    /// It was taken at this point of its shape.
    virtual void begin(const SbVec3f& hit, const Pointer& pointer) = 0;
    /// The pointer moved: the fields follow. Always in relation to begin(), so that errors do not
    /// add up.
    virtual void follow(const Pointer& pointer) = 0;

private:
    struct Callback {
        Function* function;
        void* userData;
        bool operator==(const Callback&) const = default;
    };
    using Callbacks = std::vector<Callback>;

    void take(SoHandleEventAction* action);
    Pointer pointerOf(SoHandleEventAction* action) const;
    void call(const Callbacks& callbacks);
    static void remove(Callbacks& from, const Callback& callback);

    Callbacks m_startCallbacks;
    Callbacks m_motionCallbacks;
    Callbacks m_finishCallbacks;
};
