#pragma once

#include <kalmyr/base/SbTime.h>

/// Tells single steps, such as those of keys and the wheel, that follow each other so fast that
/// they are one gesture.
class Burst {
public:
    /// Steps further apart than this are gestures of their own.
    static constexpr double kSeconds = 1;

    /// Counts a step; true when it begins a burst.
    bool step()
    {
        const SbTime now = SbTime::monotonic();
        const bool isFirst = !m_isOpen || (now - m_last).getValue() >= kSeconds;
        m_last = now;
        m_isOpen = true;
        return isFirst;
    }
    bool isOpen() const { return m_isOpen; }
    void end() { m_isOpen = false; }

private:
    bool m_isOpen = false;
    SbTime m_last;
};
