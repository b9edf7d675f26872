#pragma once

#include <kalmyr/events/SoEvent.h>

/// The mouse wheel was turned.
class KALMYR_API SoMouseWheelEvent final : public SoEvent {
    SO_EVENT_HEADER(SoMouseWheelEvent)

public:
    /// The delta that a usual wheel reports for one notch.
    static constexpr int kNotch = 120;

    /// Positive when turned away from the user; kNotch per notch.
    int getDelta() const { return m_delta; }
    void setDelta(int delta) { m_delta = delta; }

private:
    int m_delta = 0;
};
