#pragma once

#include <kalmyr/base/SbNameHash.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>

#include <bit>
#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

namespace kalmyr::detail {

/// The nodes of a file by their names. A name that is given again stands for the later node.
class DefinitionTable {
public:
    struct Definition {
        std::string_view name; ///< points into the text
        SoRef<SoNode> node;    ///< null for a node that was skipped
        bool open = false;     ///< its body is being read
    };

    void clear()
    {
        m_slots.clear();
        m_definitions.clear();
    }

    /// Null when there is none. Stays where it is until clear().
    Definition* find(std::string_view name)
    {
        if (m_slots.empty())
            return nullptr;
        const std::uint32_t place = m_slots[findSlot(name, hashOf(name))].place;
        return place ? &m_definitions[place - 1] : nullptr;
    }
    const Definition* find(std::string_view name) const
    {
        return const_cast<DefinitionTable*>(this)->find(name);
    }

    /// The same; made where there is none.
    Definition& get(std::string_view name)
    {
        if (2 * (m_definitions.size() + 1) > m_slots.size())
            grow();
        const std::uint32_t hash = hashOf(name);
        Slot& slot = m_slots[findSlot(name, hash)];
        if (!slot.place) {
            m_definitions.push_back({name, {}, false});
            slot = {hash, static_cast<std::uint32_t>(m_definitions.size())};
        }
        return m_definitions[slot.place - 1];
    }

private:
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t place = 0; ///< counting from 1; 0 in a free slot
    };
    static constexpr std::size_t kFirstSize = 256;

    static std::uint32_t hashOf(std::string_view name)
    {
        return static_cast<std::uint32_t>(hashName(name));
    }

    /// The slot of that name, or the free one where it would go.
    std::size_t findSlot(std::string_view name, std::uint32_t hash) const
    {
        const std::size_t mask = m_slots.size() - 1;
        std::size_t i = hash & mask;
        while (m_slots[i].place
               && (m_slots[i].hash != hash || m_definitions[m_slots[i].place - 1].name != name))
            i = (i + 1) & mask;
        return i;
    }

    void grow()
    {
        std::vector<Slot> old(m_slots.empty() ? kFirstSize : 2 * m_slots.size());
        old.swap(m_slots);
        const std::size_t mask = m_slots.size() - 1;
        for (const Slot& slot : old) {
            std::size_t i = slot.hash & mask;
            while (slot.place && m_slots[i].place)
                i = (i + 1) & mask;
            if (slot.place)
                m_slots[i] = slot;
        }
    }

    std::deque<Definition> m_definitions; ///< in order; none ever moves
    std::vector<Slot> m_slots;            ///< at most half full
};

} // namespace kalmyr::detail
