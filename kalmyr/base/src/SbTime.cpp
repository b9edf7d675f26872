#include <kalmyr/base/SbTime.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ctime>

namespace {

struct Unit {
    char letter;
    std::int64_t microseconds;
    int digits;
};

constexpr Unit kUnits[] = {{'D', 86'400'000'000, 1}, {'H', 3'600'000'000, 2}, {'M', 60'000'000, 2},
                           {'S', 1'000'000, 2},      {'I', 1'000, 3},         {'U', 1, 3}};

// Spans beyond about 290,000 years do not fit the counter.
constexpr double kLongest = 9.2e12;

bool uses(const char* pattern, char letter)
{
    for (const char* p = std::strchr(pattern, '%'); p && p[1]; p = std::strchr(p + 2, '%')) {
        if (p[1] == letter) {
            return true;
        }
    }
    return false;
}

// The count of one unit, without what the next larger unit of the pattern shows.
SbString countOf(const char* pattern, const Unit& unit, std::int64_t total)
{
    const Unit* larger = nullptr;
    for (const Unit& other : kUnits) {
        larger =
            other.microseconds > unit.microseconds && uses(pattern, other.letter) ? &other : larger;
    }
    if (!larger) {
        return SbString(static_cast<long long>(total / unit.microseconds));
    }
    const bool microsOfSecond = unit.letter == 'U' && larger->letter != 'I';
    const int digits = microsOfSecond ? 6 : unit.digits;
    return SbString::format(
        "%0*lld", digits, static_cast<long long>(total % larger->microseconds / unit.microseconds));
}

std::atomic<SbTime::Source> s_source{nullptr};

double secondsOf(auto duration)
{
    return std::chrono::duration<double>(duration).count();
}

} // namespace

SbTime SbTime::getTimeOfDay()
{
    if (const Source source = s_source)
        return source();
    return SbTime(secondsOf(std::chrono::system_clock::now().time_since_epoch()));
}

SbTime SbTime::monotonic()
{
    if (const Source source = s_source)
        return source();
    return SbTime(secondsOf(std::chrono::steady_clock::now().time_since_epoch()));
}

void SbTime::setSource(Source source)
{
    s_source = source;
}

SbString SbTime::format(const char* pattern) const
{
    if (!(std::fabs(m_seconds) < kLongest)) {
        return SbString(m_seconds);
    }
    const std::int64_t total = std::llround(std::fabs(m_seconds) * 1e6);
    SbString text = m_seconds < 0 && total ? "-" : "";
    for (const char* p = pattern; *p; ++p) {
        const Unit* unit = nullptr;
        for (const Unit& u : kUnits) {
            unit = *p == '%' && p[1] == u.letter ? &u : unit;
        }
        if (unit) {
            text += countOf(pattern, *unit, total);
        } else {
            text += *p;
        }
        p += unit || (*p == '%' && p[1] == '%') ? 1 : 0;
    }
    return text;
}

SbString SbTime::formatDate(const char* pattern) const
{
    const auto seconds = static_cast<std::time_t>(std::floor(m_seconds));
    std::tm parts{};
#if defined(_WIN32)
    const bool known = localtime_s(&parts, &seconds) == 0;
#else
    const bool known = localtime_r(&seconds, &parts) != nullptr;
#endif
    char buffer[256];
    const std::size_t length = known ? std::strftime(buffer, sizeof buffer, pattern, &parts) : 0;
    return {buffer, length};
}
