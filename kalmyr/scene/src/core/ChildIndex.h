#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

class SoNode;

namespace kalmyr::detail {

/// About where nodes stand in a long list of children: open addressing over their addresses, at
/// most half full.
///
/// An edit moves all behind it by one. The places that are kept are not corrected one by one: those
/// of the longer part move together, by `m_shift`; the shorter part is off by one more, and whoever
/// looks there searches the list around the place. So an edit costs no more than one entry, and a
/// search no more steps than there were edits away from both ends since.
class ChildIndex {
public:
    using Nodes = std::vector<SoNode*>;

    explicit ChildIndex(const Nodes& nodes) : m_slots(std::bit_ceil(2 * nodes.size() + 2))
    {
        m_hashShift = 64 - std::countr_zero(m_slots.size());
        for (std::size_t i = 0; i < nodes.size(); ++i)
            put(nodes[i], static_cast<std::int64_t>(i));
    }

    /// Index of the first place of `child`, or -1.
    int find(const SoNode* child, const Nodes& nodes)
    {
        Slot& slot = m_slots[slotOf(child)];
        if (!slot.node)
            return -1;
        const auto size = static_cast<std::int64_t>(nodes.size());
        if (slot.isRepeated) {
            // The first place is most often near the front.
            for (std::int64_t i = 0; i < size; ++i)
                if (nodes[static_cast<std::size_t>(i)] == child)
                    return static_cast<int>(i);
            return -1;
        }
        const std::int64_t about =
            std::clamp(slot.place + m_shift, std::int64_t{0}, std::max(size - 1, std::int64_t{0}));
        for (std::int64_t off = 0; off <= size; ++off) {
            for (const std::int64_t at : {about - off, about + off}) {
                if (at < 0 || at >= size || nodes[static_cast<std::size_t>(at)] != child)
                    continue;
                slot.place = at - m_shift;
                m_steps += off;
                return static_cast<int>(at);
            }
        }
        return -1;
    }

    /// `child` was put in at `index`; the list has `length` with it.
    void inserted(const SoNode* child, int index, int length)
    {
        moveBehind(index, length, 1);
        put(child, index - m_shift);
    }

    /// `child` was taken out at `index`; the list has `length` without it.
    void removed(const SoNode* child, int index, int length)
    {
        moveBehind(index, length, -1);
        take(child);
    }

    void replaced(const SoNode* old, const SoNode* child, int index)
    {
        take(old);
        put(child, index - m_shift);
    }

    /// Whether places are so far off, or so many entries out of use, that a new index costs less.
    bool isWorn(std::size_t length) const
    {
        return m_steps > static_cast<std::int64_t>(length) || m_count > 2 * length + kSpare;
    }

private:
    struct Slot {
        const SoNode* node = nullptr;
        std::int64_t place : 63 = 0;
        bool isRepeated : 1 = false; ///< stands, or stood once, at several places
    };
    static constexpr std::size_t kSpare = 64;

    std::size_t homeOf(const SoNode* node) const
    {
        // The upper bits of the product depend on all bits of the address.
        constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
        return static_cast<std::size_t>(reinterpret_cast<std::uintptr_t>(node) * kFactor
                                        >> m_hashShift);
    }
    std::size_t next(std::size_t slot) const { return (slot + 1) & (m_slots.size() - 1); }

    /// The node's slot, or the free one where it would go.
    std::size_t slotOf(const SoNode* node) const
    {
        std::size_t i = homeOf(node);
        while (m_slots[i].node && m_slots[i].node != node)
            i = next(i);
        return i;
    }

    void moveBehind(int index, int length, int by)
    {
        if (2 * static_cast<std::int64_t>(index) <= length)
            m_shift += by;
    }

    void put(const SoNode* node, std::int64_t place)
    {
        Slot& slot = m_slots[slotOf(node)];
        if (slot.node) {
            slot.isRepeated = true;
            return;
        }
        slot.node = node;
        slot.place = place;
        if (2 * ++m_count > m_slots.size())
            grow();
    }

    /// A repeated node keeps its entry: nobody knows whether it still has a place.
    void take(const SoNode* node)
    {
        const std::size_t at = slotOf(node);
        if (!m_slots[at].node || m_slots[at].isRepeated)
            return;
        // Those behind move up, so that none is cut off from its home.
        const std::size_t mask = m_slots.size() - 1;
        std::size_t hole = at;
        for (std::size_t i = next(hole); m_slots[i].node; i = next(i)) {
            if (((i - homeOf(m_slots[i].node)) & mask) >= ((i - hole) & mask)) {
                m_slots[hole] = m_slots[i];
                hole = i;
            }
        }
        m_slots[hole] = {};
        --m_count;
    }

    void grow()
    {
        std::vector<Slot> old(2 * m_slots.size());
        old.swap(m_slots);
        --m_hashShift;
        for (const Slot& slot : old)
            if (slot.node)
                m_slots[slotOf(slot.node)] = slot;
    }

    std::vector<Slot> m_slots;
    std::size_t m_count = 0;
    int m_hashShift = 0;      ///< what is left of a hash is the number of a slot
    std::int64_t m_shift = 0; ///< to be added to all places
    std::int64_t m_steps = 0; ///< that searches took
};

} // namespace kalmyr::detail
