#pragma once

#include <kalmyr/base/SbString.h>

class SoField;
class SoNode;

namespace kalmyr::detail {

/// A relative url as it reads in a file of `folder`, so that it leads where it leads from `origin`.
/// Unchanged when nothing is there, or when the file was taken along to the folder.
SbString relocated(const SbString& url, const SbString& origin, const SbString& folder);

/// The folder that the urls in a field of a node start from; null for fields that hold none.
const SbString* originOf(const SoNode* node, const SoField* field);

} // namespace kalmyr::detail
