#include <kalmyr/base/SoContract.h>

#include <kalmyr/base/SoDebugError.h>

#include <atomic>
#include <cstdlib>

namespace {

#ifdef NDEBUG
constexpr bool kStopsByDefault = false;
#else
constexpr bool kStopsByDefault = true;
#endif

std::atomic<bool> s_stops{kStopsByDefault};

} // namespace

bool kalmyr::setContractsStop(bool on)
{
    return s_stops.exchange(on);
}

bool kalmyr::reportBrokenContract(const char* contract, const std::source_location& where)
{
    SoDebugError::post(where.function_name(), "the caller must see to: %s", contract);
    if (s_stops)
        std::abort();
    return false;
}
