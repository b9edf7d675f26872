#pragma once

#include "core/WalkMarks.h"

#include <array>
#include <cstddef>
#include <cstdint>

class SoNode;

namespace kalmyr::detail {

/// From which nodes walks may go up in one step, because the last one that came by there told
/// nobody between: a few of each thread, the latest ones.
///
/// Each node from the lower end of a shortcut to the upper one has one parent and nobody else that
/// listens, and none above the lower end must hear of everything. When that changes, and when
/// somebody asks for an id or begins to listen, all walks go the whole way again: see
/// SoNotification::repeatWalks().
class WalkShortcuts {
public:
    /// The upper end, or null. `stamp` is that of the last walk that came by at `from`, since when
    /// nothing has called for whole walks.
    static SoNode* find(SoNode* from, std::uint64_t stamp)
    {
        SoFieldContainer& container = asContainer(from);
        if (!WalkMarks::has(container, WalkMarks::kHasShortcut)) [[likely]]
            return nullptr;
        const Shortcut& known = t_shortcuts[placeOf(from)];
        if (known.from == from && known.stamp == stamp)
            return known.top;
        WalkMarks::set(container, WalkMarks::kHasShortcut, false);
        return nullptr;
    }
    static void put(SoNode* from, std::uint64_t stamp, SoNode* top)
    {
        t_shortcuts[placeOf(from)] = {from, top, stamp};
        WalkMarks::set(asContainer(from), WalkMarks::kHasShortcut);
    }

private:
    struct Shortcut {
        const SoNode* from;
        SoNode* top;
        std::uint64_t stamp;
    };
    static constexpr int kBits = 8;

    static SoFieldContainer& asContainer(SoNode* node);
    static std::size_t placeOf(const SoNode* node)
    {
        // The upper bits of the product depend on all bits of the address.
        constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
        return static_cast<std::size_t>(reinterpret_cast<std::uintptr_t>(node) * kFactor
                                        >> (64 - kBits));
    }

    static constinit thread_local std::array<Shortcut, std::size_t{1} << kBits> t_shortcuts;
};

} // namespace kalmyr::detail
