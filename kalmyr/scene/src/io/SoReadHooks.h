#pragma once

namespace kalmyr::detail {

/// What is done with nodes that refer to other files, right after they were read.
void installReadHooks();

} // namespace kalmyr::detail
