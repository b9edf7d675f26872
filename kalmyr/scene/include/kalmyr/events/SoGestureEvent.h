#pragma once

#include <kalmyr/events/SoEvent.h>

/// Two fingers moved on a touch screen or pad, together or apart. Its position is the middle
/// between them.
class KALMYR_API SoGestureEvent final : public SoEvent {
    SO_EVENT_HEADER(SoGestureEvent)

public:
    enum State { BEGIN, UPDATE, END };

    State getState() const { return m_state; }
    void setState(State state) { m_state = state; }

    /// How far the middle moved since the event before, in pixels.
    const SbVec2f& getMotion() const { return m_motion; }
    void setMotion(const SbVec2f& pixels) { m_motion = pixels; }

    /// Distance between the fingers by that of the event before: above 1 when they spread.
    float getScale() const { return m_scale; }
    /// Must be above 0; others count as 1.
    void setScale(float scale) { m_scale = scale > 0 ? scale : 1; }

private:
    State m_state = UPDATE;
    SbVec2f m_motion{0, 0};
    float m_scale = 1;
};
