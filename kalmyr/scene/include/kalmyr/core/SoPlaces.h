#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SoRef.h>

#include <cstddef>
#include <vector>

class SoNode;
class SoPath;

// Finds the places of a node from the node upwards: the cost grows with the number of nodes that hold
// it, as a child or in a field, not with the size of the graph. Places below fields count, whether or
// not actions go there.

namespace kalmyr {

/// Whether `node`, which is not null, is `root` or stands below it. `root` is only compared.
KALMYR_API bool isBelow(const SoNode* root, const SoNode* node);

/// The same, returning that root; null when it is not.
KALMYR_API SoNode* findAbove(SoNode* node, const SoNode* root);

/// Paths from `root` to every place of `node`, at most `limit` of them, in no particular order.
KALMYR_API std::vector<SoRef<SoPath>> findPlaces(SoNode* root, SoNode* node, std::size_t limit);

} // namespace kalmyr
