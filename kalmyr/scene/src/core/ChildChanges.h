#pragma once

#include <kalmyr/core/SoNotification.h>

#include <cstdint>
#include <vector>

class SoNode;

namespace kalmyr::detail {

/// Notes which children of a node changed, for those who keep something of each child and want to
/// look only at what changed since.
///
/// A bounded number of changes is kept for each watched node; nodes that nobody watches pay for one
/// test of a flag. From any thread.
class ChildChanges {
public:
    enum Kind : std::uint8_t {
        CHANGED,  ///< the child, or something below it
        INSERTED, ///< at the index
        REMOVED,  ///< from the index
        REPLACED  ///< at the index
    };
    struct Change {
        std::uint64_t stamp;
        const SoNode* child; ///< of CHANGED; only to be compared
        int index;           ///< of the other kinds, when the change was made
        Kind kind;
    };

    /// Notes the changes of children of the node from now on, until it dies.
    static void watch(SoNode& node);
    /// Adds the changes after the node had that change id, in order. False when they are not known:
    /// the node itself changed otherwise, there were too many, or it was not watched.
    static bool since(const SoNode& node, std::uint64_t changeId, std::vector<Change>& changes);

    /// A change of a watched node, or of something below it, comes by.
    static void note(const SoNode& node, const SoNotification& notification);
    static void forget(const SoNode& node);
};

} // namespace kalmyr::detail
