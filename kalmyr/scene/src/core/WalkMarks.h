#pragma once

#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoNotification.h>

#include <cstdint>

namespace kalmyr::detail {

/// Marks of notification walks in the flags of the containers that they come by. There are
/// objects of this class nowhere: it derives for the access to the flags.
class WalkMarks : SoFieldContainer {
public:
    /// Observers know that the container keeps changes to itself.
    static constexpr std::uint8_t kToldOfSilence = 0x80;
    /// Of a node: shortcuts rely on who holds it.
    static constexpr std::uint8_t kPassed = 0x40;
    /// Of a node: a shortcut may begin here.
    static constexpr std::uint8_t kHasShortcut = 0x20;
    /// Of a node: a walk has asked it, or is about to ask it, whether it must hear everything.
    static constexpr std::uint8_t kAsked = 0x10;
    /// Of a node: see ChildChanges.
    static constexpr std::uint8_t kWatchesChildren = 0x08;

    static bool has(const SoFieldContainer& container, std::uint8_t mark)
    {
        return (container.*(&WalkMarks::m_nodeFlags) & mark) != 0;
    }
    static void set(SoFieldContainer& container, std::uint8_t mark, bool on = true)
    {
        std::uint8_t& flags = container.*(&WalkMarks::m_nodeFlags);
        flags = static_cast<std::uint8_t>(on ? flags | mark : flags & ~mark);
    }
};

/// To be called when the holders of the container have changed: no walk takes a shortcut that
/// relies on them.
inline void endShortcuts(SoFieldContainer& container)
{
    if (!WalkMarks::has(container, WalkMarks::kPassed))
        return;
    WalkMarks::set(container, WalkMarks::kPassed, false);
    SoNotification::repeatWalks();
}

} // namespace kalmyr::detail
