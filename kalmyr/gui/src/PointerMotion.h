#pragma once

#include <kalmyr/base/SbTime.h>
#include <kalmyr/base/SbVec.h>

#include <deque>
#include <optional>

/// How fast a pointer moves while a button is down.
class PointerMotion {
public:
    void begin(const SbTime& time, const SbVec2f& at) { m_samples = {{time, at}}; }

    void add(const SbTime& time, const SbVec2f& at)
    {
        m_samples.push_back({time, at});
        while (m_samples.size() > 2 && m_samples.front().time + SbTime(kMemory) < time)
            m_samples.pop_front();
    }

    /// A second, in the units of the positions. None for a pointer that had come to rest, or for
    /// one that moved too briefly to tell.
    std::optional<SbVec2f> speedAt(const SbTime& now) const
    {
        if (m_samples.size() < 2 || m_samples.back().time + SbTime(kRest) < now)
            return std::nullopt;
        const double span = (m_samples.back().time - m_samples.front().time).getValue();
        if (!(span >= kLeastSpan))
            return std::nullopt;
        return (m_samples.back().at - m_samples.front().at) / static_cast<float>(span);
    }

private:
    static constexpr double kMemory = 0.1; // seconds
    static constexpr double kRest = 0.05;
    static constexpr double kLeastSpan = 0.01;

    struct Sample {
        SbTime time;
        SbVec2f at;
    };
    std::deque<Sample> m_samples;
};
