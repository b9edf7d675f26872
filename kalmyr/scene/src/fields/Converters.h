#pragma once

namespace kalmyr::detail {

/// Registers how connected fields of different types convert; see SoFieldConverter.
void initConverters();

} // namespace kalmyr::detail
