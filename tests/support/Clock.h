#pragma once

#include <kalmyr/base/SbTime.h>

#include <atomic>

namespace support {

/// Stops the toolkit's clocks while it lives; only advance() moves them. They begin at the real
/// time. One at a time.
class Clock {
public:
    Clock()
    {
        s_now = SbTime::getTimeOfDay().getValue();
        SbTime::setSource([] { return SbTime(s_now.load()); });
    }
    ~Clock() { SbTime::setSource(nullptr); }
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;

    static void advance(double seconds) { s_now = s_now + seconds; }

private:
    static inline std::atomic<double> s_now{0};
};

/// The toolkit's clocks run a second ahead whenever they are looked at, so that all work takes
/// long. Not beside a Clock.
class SlowWork {
public:
    SlowWork()
    {
        s_now = SbTime::getTimeOfDay().getValue();
        SbTime::setSource([] { return SbTime(s_now = s_now + 1); });
    }
    ~SlowWork() { SbTime::setSource(nullptr); }
    SlowWork(const SlowWork&) = delete;
    SlowWork& operator=(const SlowWork&) = delete;

private:
    static inline std::atomic<double> s_now{0};
};

} // namespace support
