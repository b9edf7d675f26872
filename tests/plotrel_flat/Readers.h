#pragma once

#include "Canvas.h"

#include <map>
#include <string>

namespace flat {

/// Strict readers, written from the descriptions of the formats: they throw std::runtime_error at
/// the first thing that is not as it should be.
Page readCgm(const std::string& bytes);
Page readEmf(const std::string& bytes);
Page readHpgl(const std::string& text);

/// How often each record stands in an EMF, by its type.
std::map<unsigned, int> countEmfRecords(const std::string& bytes);

} // namespace flat
