#pragma once

#include <kalmyr/base/SbString.h>

#include <optional>

/// The search directories of SoInput and its files in memory, for all threads.
namespace kalmyr::detail {

/// The first place of a name: as it stands in memory, beside `folder`, as it stands, in the search
/// directories; then the same with "%20" and such turned into what they stand for. Empty when there
/// is no such file that can be read.
SbString lookUp(const SbString& name, const SbString& folder);
/// Whether there is something of that name beside `folder`, be it a folder or a file that cannot be
/// read.
bool isThere(const SbString& name, const SbString& folder);

/// The text of a file in memory.
std::optional<SbString> memoryFile(const SbString& name);

} // namespace kalmyr::detail
