#include <kalmyr/core/SoAuditor.h>

#include <kalmyr/core/SoNotification.h>

#include "AuditorIndex.h"
#include "core/CacheLock.h"

#include <vector>

/// Most lists that grow long are never asked before they die: a graph that is built or read only
/// appends. So what is appended to a long list is looked up when somebody asks, not before, and
/// building runs through memory in order.
struct SoAuditorList::Many {
    std::vector<Entry> entries;
    std::size_t settled = 0;            ///< so many are distinct; those behind may be among them
    kalmyr::detail::AuditorIndex index; ///< of the settled ones, filled beyond kIndexThreshold

    void append(SoAuditor* auditor, SoAuditor::Type type)
    {
        if (entries.back().auditor == auditor) {
            ++entries.back().multiplicity;
        } else if (entries.size() > kIndexThreshold || !index.isEmpty()) {
            entries.push_back({auditor, type, 1});
        } else if (const int at = findInShort(auditor); at >= 0) {
            ++entries[static_cast<std::size_t>(at)].multiplicity;
        } else {
            entries.push_back({auditor, type, 1});
            settled = entries.size();
        }
    }

    void settle()
    {
        if (settled == entries.size())
            return;
        index.reserve(entries.size(), settled, entries);
        const std::size_t end = entries.size();
        for (std::size_t i = settled; i < end; ++i)
            settle(entries[i]);
        entries.resize(settled);
    }

    /// Of a settled list.
    int find(const SoAuditor* auditor) const
    {
        return index.isEmpty() ? findInShort(auditor) : index.find(auditor, entries);
    }

private:
    void settle(const Entry& entry)
    {
        if (const int at = index.find(entry.auditor, entries); at >= 0) {
            entries[static_cast<std::size_t>(at)].multiplicity += entry.multiplicity;
            return;
        }
        entries[settled] = entry;
        index.put(entry.auditor, settled++);
    }

    int findInShort(const SoAuditor* auditor) const
    {
        // The latest come and go most.
        for (auto i = entries.size(); i-- > 0;)
            if (entries[i].auditor == auditor)
                return static_cast<int>(i);
        return -1;
    }
};

void SoAuditorList::freeMany()
{
    delete m_many;
    m_many = nullptr;
}

int SoAuditorList::countMany() const
{
    const kalmyr::detail::CacheLock lock; // threads that read the graph ask
    m_many->settle();
    return static_cast<int>(m_many->entries.size());
}

const SoAuditorList::Entry& SoAuditorList::entryOfMany(int i) const
{
    static const Entry none;
    const kalmyr::detail::CacheLock lock;
    if (m_many)
        m_many->settle();
    const int length = m_many ? static_cast<int>(m_many->entries.size()) : 0;
    if (!kalmyr::holds(i >= 0 && i < length, "0 <= index < getLength()"))
        return none;
    return m_many->entries[static_cast<std::size_t>(i)];
}

void SoAuditorList::appendFurther(SoAuditor* auditor, SoAuditor::Type type)
{
    if (!m_many) {
        if (m_one.auditor == auditor) {
            ++m_one.multiplicity;
            return;
        }
        m_many = new Many;
        m_many->entries.push_back(m_one);
        m_many->settled = 1;
    }
    m_many->append(auditor, type);
}

void SoAuditorList::removeFromMany(SoAuditor* auditor)
{
    auto& entries = m_many->entries;
    m_many->settle();
    const int at = m_many->find(auditor);
    if (at < 0 || --entries[static_cast<std::size_t>(at)].multiplicity > 0)
        return;
    if (!m_many->index.isEmpty())
        m_many->index.moveLastTo(at, entries);
    entries[static_cast<std::size_t>(at)] = entries.back();
    entries.pop_back();
    m_many->settled = entries.size();
    if (entries.empty()) {
        freeMany();
        m_one = {};
    }
}

bool SoAuditorList::notifyMany(SoNotification& notification) const
{
    bool anyListens = false;
    m_many->settle();
    // Walks must not edit the graph, and what runs on one only queues itself, so the list stands
    // still here; counting down keeps a list that shrinks all the same within its bounds.
    for (auto i = m_many->entries.size(); m_many && i-- > 0;) {
        if (i >= m_many->entries.size())
            continue;
        anyListens = anyListens || !holds(m_many->entries[i].type);
        m_many->entries[i].auditor->auditedChanged(notification);
    }
    return anyListens;
}

void SoAuditorList::announceDeath()
{
    // One by one from the live list: an auditor told may take others out with it.
    while (m_many) {
        m_many->settle();
        SoAuditor* last = m_many->entries.back().auditor;
        m_many->entries.back().multiplicity = 1;
        remove(last);
        last->auditedDying();
    }
    if (SoAuditor* one = m_one.auditor) {
        m_one = {};
        one->auditedDying();
    }
}
