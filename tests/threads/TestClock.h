#pragma once

#include <kalmyr/base/SbTime.h>

#include <atomic>

/// A clock that stands still until a test moves it, for all threads, while it lives.
class TestClock {
public:
    TestClock()
    {
        SbTime::setSource([] { return SbTime(s_seconds); });
    }
    ~TestClock() { SbTime::setSource(nullptr); }
    TestClock(const TestClock&) = delete;
    TestClock& operator=(const TestClock&) = delete;

    static void advance(double seconds) { s_seconds = s_seconds + seconds; }

private:
    static inline std::atomic<double> s_seconds{1e6};
};
