#pragma once

class SoField;
class SoFieldContainer;
class SoNode;
class SoType;

namespace kalmyr::detail {

/// Whether fields of that type hold nodes. Fields of containers, paths and engines do not: they
/// make no node the ancestor of another.
bool isNodeField(SoType type);

/// Whether the text of such fields has nodes or engines in it.
bool hasObjectsInText(SoType type);

/// The node `child` when a node-valued field of `holder` holds it, else null. `child` is only
/// compared.
SoNode* findInNodeFields(const SoNode* holder, const SoNode* child);

/// The first field of `holder` that holds `child`, with its index there, or null.
const SoField* findNodeField(const SoNode* holder, const SoNode* child, int& index);

/// Whether `node` may be `holder` or one of its ancestors; false where a glance rules that out:
/// nothing is above the holder, or nothing below the node.
bool mayBeAtOrAbove(const SoNode* node, const SoNode* holder);

/// A place in the row of what a container holds: first its children, then what is in its fields.
struct HeldPlace {
    const SoFieldContainer* holder;
    int child = 0;
    int field = 0;
    int value = 0;
};

/// Returns the node at that place or the next one, moving the place on; null at the end.
const SoFieldContainer* nextHeld(HeldPlace& place);

} // namespace kalmyr::detail
