#pragma once

#include <kalmyr/base/SbTime.h>

#include <string>

namespace kalmyr::detail {

/// `D:20260131235959Z`, in UTC.
std::string pdfDate(SbTime time);

} // namespace kalmyr::detail
