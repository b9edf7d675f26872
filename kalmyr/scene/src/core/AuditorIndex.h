#pragma once

#include <kalmyr/core/SoAuditor.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kalmyr::detail {

/// Where auditors stand in a long list of entries: open addressing over their addresses, at most
/// half full. A slot keeps the hash, so that entries are looked at for hits only.
class AuditorIndex {
public:
    using Entries = std::vector<SoAuditorList::Entry>;

    bool isEmpty() const { return m_slots.empty(); }

    /// Place of the auditor in `entries`, or -1.
    int find(const SoAuditor* auditor, const Entries& entries) const
    {
        return static_cast<int>(m_slots[findSlot(auditor, entries)].place) - 1;
    }

    /// Makes room for `count` in all; the first `filled` of `entries` are in the index.
    void reserve(std::size_t count, std::size_t filled, const Entries& entries)
    {
        if (2 * count <= m_slots.size())
            return;
        const std::size_t size = std::bit_ceil(4 * count);
        m_shift = 32 - std::countr_zero(size);
        m_slots.assign(size, {});
        for (std::size_t i = 0; i < filled; ++i)
            put(entries[i].auditor, i);
    }

    /// An auditor that is not in the index stands at `place`; there is room.
    void put(const SoAuditor* auditor, std::size_t place)
    {
        const std::uint32_t hash = hashOf(auditor);
        std::size_t i = homeOf(hash);
        while (m_slots[i].place)
            i = next(i);
        m_slots[i] = {hash, static_cast<std::uint32_t>(place) + 1};
    }

    /// The last of `entries` is about to take the place of the one at `place`, which goes.
    void moveLastTo(int place, const Entries& entries)
    {
        const auto at = static_cast<std::size_t>(place);
        const std::size_t gone = findSlot(entries[at].auditor, entries);
        if (at + 1 < entries.size())
            m_slots[findSlot(entries.back().auditor, entries)].place = m_slots[gone].place;
        erase(gone);
    }

private:
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t place = 0; ///< counting from 1; 0 in a free slot
    };

    static std::uint32_t hashOf(const SoAuditor* auditor)
    {
        // The upper half of the product depends on all bits of the address.
        constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
        return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(auditor) * kFactor
                                          >> 32);
    }
    std::size_t homeOf(std::uint32_t hash) const { return hash >> m_shift; }
    std::size_t next(std::size_t slot) const { return (slot + 1) & (m_slots.size() - 1); }

    /// The auditor's slot, or the free one where it would go.
    std::size_t findSlot(const SoAuditor* auditor, const Entries& entries) const
    {
        const std::uint32_t hash = hashOf(auditor);
        std::size_t i = homeOf(hash);
        while (m_slots[i].place
               && (m_slots[i].hash != hash || entries[m_slots[i].place - 1].auditor != auditor))
            i = next(i);
        return i;
    }

    /// Those behind move up, so that none is cut off from its home.
    void erase(std::size_t hole)
    {
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t i = next(hole); m_slots[i].place; i = next(i)) {
            if (((i - homeOf(m_slots[i].hash)) & mask) >= ((i - hole) & mask)) {
                m_slots[hole] = m_slots[i];
                hole = i;
            }
        }
        m_slots[hole] = {};
    }

    std::vector<Slot> m_slots;
    int m_shift = 0; ///< what is left of a hash is the number of a slot
};

} // namespace kalmyr::detail
