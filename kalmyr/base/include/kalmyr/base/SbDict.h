#pragma once

#include <kalmyr/base/Export.h>

#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

/// A dictionary that keeps the order in which keys were first entered, so that what is written from
/// it is the same in every run.
///
/// Finding, entering and removing take constant time (removing, on average). Keys need operator==
/// and std::hash.
template <class Key, class Value>
class SbDict {
public:
    using Entry = std::pair<Key, Value>;

    int getLength() const { return static_cast<int>(m_index.size()); }
    bool isEmpty() const { return m_index.empty(); }

    /// Enters a value, or replaces the one that is there. True for a new key.
    bool enter(const Key& key, Value value)
    {
        const auto [at, isNew] = m_index.try_emplace(key, m_entries.size());
        if (isNew)
            m_entries.push_back({true, {key, std::move(value)}});
        else
            m_entries[at->second].entry.second = std::move(value);
        return isNew;
    }
    /// The value of a key, or null; valid until the next edit.
    const Value* find(const Key& key) const
    {
        const auto at = m_index.find(key);
        return at == m_index.end() ? nullptr : &m_entries[at->second].entry.second;
    }
    Value* find(const Key& key)
    {
        return const_cast<Value*>(static_cast<const SbDict&>(*this).find(key));
    }
    bool contains(const Key& key) const { return m_index.count(key) > 0; }
    /// False when there is no such key.
    bool remove(const Key& key)
    {
        const auto at = m_index.find(key);
        if (at == m_index.end())
            return false;
        m_entries[at->second] = {false, {}};
        m_index.erase(at);
        if (m_entries.size() > kMinSize && m_entries.size() > 2 * m_index.size())
            compact();
        return true;
    }
    void clear()
    {
        m_entries.clear();
        m_index.clear();
    }

    /// Calls `function(key, value)` for every entry in order; the dictionary must not change
    /// meanwhile.
    template <class Function>
    void forEach(Function&& function) const
    {
        for (const Slot& slot : m_entries)
            if (slot.used)
                function(slot.entry.first, slot.entry.second);
    }
    /// All keys in order.
    std::vector<Key> getKeys() const
    {
        std::vector<Key> keys;
        keys.reserve(m_index.size());
        forEach([&keys](const Key& key, const Value&) { keys.push_back(key); });
        return keys;
    }

private:
    struct Slot {
        bool used;
        Entry entry;
    };
    static constexpr std::size_t kMinSize = 16;

    void compact()
    {
        std::erase_if(m_entries, [](const Slot& slot) { return !slot.used; });
        for (std::size_t i = 0; i < m_entries.size(); ++i)
            m_index[m_entries[i].entry.first] = i;
    }

    std::vector<Slot> m_entries;
    std::unordered_map<Key, std::size_t> m_index;
};
