#pragma once

#include <kalmyr/events/SoEvent.h>

/// Something with a key or button that goes down and up.
class KALMYR_API SoButtonEvent : public SoEvent {
    SO_EVENT_HEADER(SoButtonEvent)

public:
    enum State { UP, DOWN, UNKNOWN };

    State getState() const { return m_state; }
    void setState(State state) { m_state = state; }

private:
    State m_state = UNKNOWN;
};
