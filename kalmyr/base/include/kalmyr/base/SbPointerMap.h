#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

/// Values by the addresses of objects, in one array: for tables that grow large, whose entries
/// stay. The objects are not looked at.
///
/// Finding and adding take constant time and allocate nothing but the array.
template <class T, class Value>
class SbPointerMap {
public:
    std::size_t size() const { return m_count; }

    void clear()
    {
        m_slots.clear();
        m_count = 0;
    }

    /// The value of a key, or null; valid until the next key is added.
    const Value* find(const T* key) const
    {
        if (m_slots.empty())
            return nullptr;
        const Slot& slot = m_slots[findSlot(key)];
        return slot.key ? &slot.value : nullptr;
    }
    Value* find(const T* key) { return const_cast<Value*>(std::as_const(*this).find(key)); }

    /// The value of a key, which must not be null; a default one is made for a new key. Valid until
    /// the next key is added.
    Value& operator[](const T* key)
    {
        if (2 * (m_count + 1) > m_slots.size())
            grow();
        Slot& slot = m_slots[findSlot(key)];
        if (!slot.key) {
            slot.key = key;
            ++m_count;
        }
        return slot.value;
    }

private:
    struct Slot {
        const T* key = nullptr;
        Value value{};
    };
    static constexpr std::size_t kFirstSize = 16;

    std::size_t findSlot(const T* key) const
    {
        // The upper bits of the product depend on all bits of the address. Objects that were made
        // one after the other get slots in a row, so that they share lines of the cache.
        constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
        constexpr int kRowShift = 8;
        constexpr int kObjectShift = 5;
        constexpr std::size_t kRow = std::size_t{1} << (kRowShift - kObjectShift);
        const auto address = reinterpret_cast<std::uintptr_t>(key);
        std::size_t i =
            (static_cast<std::size_t>((address >> kRowShift) * kFactor >> m_shift) & ~(kRow - 1))
            + (address >> kObjectShift) % kRow;
        while (m_slots[i].key && m_slots[i].key != key)
            i = (i + 1) & (m_slots.size() - 1);
        return i;
    }

    void grow()
    {
        std::vector<Slot> old(m_slots.empty() ? kFirstSize : 2 * m_slots.size());
        old.swap(m_slots);
        m_shift = 64 - std::countr_zero(m_slots.size());
        for (Slot& slot : old)
            if (slot.key)
                m_slots[findSlot(slot.key)] = std::move(slot);
    }

    std::vector<Slot> m_slots; ///< at most half full
    std::size_t m_count = 0;
    int m_shift = 0; ///< what is left of a hash is the number of a slot
};
