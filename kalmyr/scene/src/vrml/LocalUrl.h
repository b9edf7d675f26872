#pragma once

#include <kalmyr/base/SbString.h>

namespace kalmyr::detail {

/// The file name that a url stands for: without "file:", and then with %XX turned into bytes. Empty
/// for urls of other schemes.
SbString localFileName(const SbString& url);

} // namespace kalmyr::detail
