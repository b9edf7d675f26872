#pragma once

#include "core/FieldText.h"

namespace kalmyr::detail {

/// Values with nodes and engines in them, as text of scene files without a header.
std::string writeNodeText(const WriteValue& write);
/// Files that the text names are looked for from the working directory and the search directories.
bool readNodeText(std::string_view text, const ReadValue& read, TextFault& fault);

/// Makes them known to the fields.
void installNodeText();

} // namespace kalmyr::detail
