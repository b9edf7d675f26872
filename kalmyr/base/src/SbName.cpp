#include <kalmyr/base/SbName.h>

#include <kalmyr/base/SbNameHash.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

/// All names of the process: open addressing over slots that only ever go from null to an entry, so
/// that readers need no lock. A table that fills up is replaced by a larger one and kept, since a
/// reader may still be in it; together the old ones are smaller than the last.
class SbNameTable {
public:
    using Entry = SbName::Entry;

    static SbNameTable& instance()
    {
        // Never destroyed: names are used until the very end of the process.
        static auto* const table = new SbNameTable;
        return *table;
    }

    const Entry* find(std::string_view text, std::size_t hash) const
    {
        const Slots& slots = *m_slots.load(std::memory_order_acquire);
        return slots.find(text, hash);
    }

    const Entry* findOrAdd(std::string_view text, std::size_t hash)
    {
        if (const Entry* known = find(text, hash)) {
            return known;
        }
        const std::lock_guard lock(m_mutex);
        if (const Entry* known = find(text, hash)) {
            return known;
        }
        if (m_count * 2 >= m_generations.back()->size()) {
            grow();
        }
        const Entry* entry = makeEntry(text, hash);
        m_generations.back()->put(entry);
        ++m_count;
        return entry;
    }

private:
    class Slots {
    public:
        explicit Slots(std::size_t size)
            : m_mask(size - 1), m_entries(new std::atomic<const Entry*>[size]())
        {
        }

        std::size_t size() const { return m_mask + 1; }

        const Entry* find(std::string_view text, std::size_t hash) const
        {
            for (std::size_t i = hash & m_mask;; i = (i + 1) & m_mask) {
                const Entry* entry = m_entries[i].load(std::memory_order_acquire);
                if (!entry) {
                    return nullptr;
                }
                if (entry->hash == hash && entry->length == text.size()
                    && std::memcmp(entry->text(), text.data(), text.size()) == 0) {
                    return entry;
                }
            }
        }

        void put(const Entry* entry)
        {
            std::size_t i = entry->hash & m_mask;
            while (m_entries[i].load(std::memory_order_relaxed)) {
                i = (i + 1) & m_mask;
            }
            m_entries[i].store(entry, std::memory_order_release);
        }

        const Entry* at(std::size_t i) const
        {
            return m_entries[i].load(std::memory_order_relaxed);
        }

    private:
        std::size_t m_mask;
        std::unique_ptr<std::atomic<const Entry*>[]> m_entries;
    };

    static constexpr std::size_t kFirstSize = 4096;
    static constexpr std::size_t kBlockSize = 1 << 16;

    SbNameTable()
    {
        m_generations.push_back(std::make_unique<Slots>(kFirstSize));
        m_slots.store(m_generations.back().get(), std::memory_order_release);
    }

    void grow()
    {
        const Slots& old = *m_generations.back();
        auto larger = std::make_unique<Slots>(old.size() * 2);
        for (std::size_t i = 0; i < old.size(); ++i) {
            if (const Entry* entry = old.at(i)) {
                larger->put(entry);
            }
        }
        m_generations.push_back(std::move(larger));
        m_slots.store(m_generations.back().get(), std::memory_order_release);
    }

    const Entry* makeEntry(std::string_view text, std::size_t hash)
    {
        auto* entry = new (allocate(sizeof(Entry) + text.size() + 1))
            Entry{hash, static_cast<std::uint32_t>(text.size())};
        char* to = reinterpret_cast<char*>(entry + 1);
        std::memcpy(to, text.data(), text.size());
        to[text.size()] = '\0';
        return entry;
    }

    void* allocate(std::size_t bytes)
    {
        bytes = (bytes + alignof(Entry) - 1) & ~(alignof(Entry) - 1);
        if (bytes > m_left) {
            m_left = bytes > kBlockSize ? bytes : kBlockSize;
            m_blocks.push_back(std::make_unique<char[]>(m_left));
            m_next = m_blocks.back().get();
        }
        void* r = m_next;
        m_next += bytes;
        m_left -= bytes;
        return r;
    }

    std::atomic<const Slots*> m_slots;
    std::mutex m_mutex;
    std::size_t m_count = 0;
    std::vector<std::unique_ptr<Slots>> m_generations;
    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_next = nullptr;
    std::size_t m_left = 0;
};

const SbName::Entry* SbName::intern(std::string_view text)
{
    return text.empty() ? nullptr
                        : SbNameTable::instance().findOrAdd(text, kalmyr::detail::hashName(text));
}

const SbName::Entry* SbName::lookUp(std::string_view text)
{
    return text.empty() ? nullptr
                        : SbNameTable::instance().find(text, kalmyr::detail::hashName(text));
}
