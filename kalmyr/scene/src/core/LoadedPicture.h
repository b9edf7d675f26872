#pragma once

#include <kalmyr/base/SbImage.h>
#include <kalmyr/base/SbString.h>

namespace kalmyr::detail {

/// The picture of a file that a node names, read when first asked for; `loadedName` and `loaded`
/// are the node's, and stand for the latest file. A fault is posted once and gives a null image.
/// `directory` is where relative names are looked for besides.
const SbImage& loadPicture(const SbString& name, const SbString& directory, const char* what,
                           SbString& loadedName, SbImage& loaded);

} // namespace kalmyr::detail
