#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>

#include <compare>

/// A point in time (seconds since the start of 1970, UTC) or a span of time, in seconds as a
/// double.
class SbTime {
public:
    constexpr SbTime() = default;
    explicit constexpr SbTime(double seconds) : m_seconds(seconds) {}
    constexpr SbTime(long seconds, long microseconds)
        : m_seconds(static_cast<double>(seconds) + static_cast<double>(microseconds) * 1e-6)
    {
    }

    static constexpr SbTime zero() { return SbTime(); }
    KALMYRBASE_API static SbTime getTimeOfDay();
    /// Seconds of a clock that never jumps; its zero is arbitrary. For measuring spans.
    KALMYRBASE_API static SbTime monotonic();

    /// Where getTimeOfDay() and monotonic() take the time from; null: the system's clocks, as at
    /// the start. Sensors, engines, navigation and double clicks then follow that clock, for tests
    /// and for recording frame by frame. May be called from any thread by the toolkit.
    using Source = SbTime (*)();
    KALMYRBASE_API static void setSource(Source source);

    void setToTimeOfDay() { *this = getTimeOfDay(); }
    constexpr void setValue(double seconds) { m_seconds = seconds; }
    constexpr void setMsecValue(double milliseconds) { m_seconds = milliseconds * 1e-3; }
    constexpr double getValue() const { return m_seconds; }
    constexpr double getMsecValue() const { return m_seconds * 1e3; }

    /// A span as text: %D days, %H hours, %M minutes, %S seconds, %I milliseconds, %U microseconds,
    /// %% a percent sign. The largest unit in the pattern counts everything, each other one what
    /// the next larger unit of the pattern leaves, with leading zeros.
    KALMYRBASE_API SbString format(const char* pattern = "%S.%I") const;
    /// A point in time as local date and time, by a strftime pattern.
    KALMYRBASE_API SbString formatDate(const char* pattern = "%Y-%m-%d %H:%M:%S") const;

    constexpr SbTime& operator+=(SbTime o)
    {
        m_seconds += o.m_seconds;
        return *this;
    }
    constexpr SbTime& operator-=(SbTime o)
    {
        m_seconds -= o.m_seconds;
        return *this;
    }
    friend constexpr SbTime operator+(SbTime a, SbTime b) { return a += b; }
    friend constexpr SbTime operator-(SbTime a, SbTime b) { return a -= b; }
    friend constexpr SbTime operator-(SbTime a) { return SbTime(-a.m_seconds); }
    friend constexpr SbTime operator*(SbTime a, double f) { return SbTime(a.m_seconds * f); }
    friend constexpr SbTime operator*(double f, SbTime a) { return SbTime(a.m_seconds * f); }
    friend constexpr SbTime operator/(SbTime a, double f) { return SbTime(a.m_seconds / f); }
    friend constexpr double operator/(SbTime a, SbTime b) { return a.m_seconds / b.m_seconds; }
    friend constexpr bool operator==(SbTime a, SbTime b) { return a.m_seconds == b.m_seconds; }
    friend constexpr std::partial_ordering operator<=>(SbTime a, SbTime b)
    {
        return a.m_seconds <=> b.m_seconds;
    }

private:
    double m_seconds = 0;
};
