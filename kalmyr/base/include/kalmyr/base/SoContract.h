#pragma once

#include <kalmyr/base/Export.h>

#include <source_location>

namespace kalmyr {

/// Reports a broken contract; see holds(). Always false.
KALMYRBASE_API bool reportBrokenContract(const char* contract, const std::source_location& where);

/// The soft assertion of every public function: checks what its caller has to see to. True when
/// the condition holds.
///
/// When it does not, a debug build stops the program; a release build posts an SoDebugError with
/// the function's name, and the function returns a safe value and changes nothing:
///
///     if (!kalmyr::holds(index >= 0, "index >= 0"))
///         return;
[[nodiscard]] inline bool holds(bool condition, const char* contract,
                                const std::source_location& where = std::source_location::current())
{
    if (condition) [[likely]]
        return true;
    return reportBrokenContract(contract, where);
}

/// Whether a broken contract stops the program; returns what it was. The default depends on how
/// the library was built: on in debug builds.
KALMYRBASE_API bool setContractsStop(bool on);

} // namespace kalmyr
