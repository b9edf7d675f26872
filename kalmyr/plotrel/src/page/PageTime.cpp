#include "PageTime.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace kalmyr::detail {

std::string pdfDate(SbTime time)
{
    using namespace std::chrono;
    // Years of four digits.
    const double seconds = std::clamp(std::floor(time.getValue()), 0.0, 253402300799.0);
    const sys_seconds moment{std::chrono::seconds(static_cast<long long>(seconds))};
    const auto day = floor<days>(moment);
    const year_month_day date(day);
    const hh_mm_ss clock(moment - day);
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "D:%04d%02u%02u%02d%02d%02dZ", int(date.year()),
                  unsigned(date.month()), unsigned(date.day()), int(clock.hours().count()),
                  int(clock.minutes().count()), int(clock.seconds().count()));
    return text.data();
}

} // namespace kalmyr::detail
