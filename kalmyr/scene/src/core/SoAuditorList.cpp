#include <kalmyr/core/SoAuditor.h>

#include <kalmyr/core/SoNotification.h>

#include "AuditorIndex.h"

#include <vector>

struct SoAuditorList::Many {
    std::vector<Entry> entries;
    kalmyr::detail::AuditorIndex index; ///< filled beyond kIndexThreshold

    int find(const SoAuditor* auditor) const
    {
        if (!index.isEmpty())
            return index.find(auditor, entries);
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
    return static_cast<int>(m_many->entries.size());
}

const SoAuditorList::Entry& SoAuditorList::entryOfMany(int i) const
{
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
    }
    auto& entries = m_many->entries;
    if (const int at = m_many->find(auditor); at >= 0) {
        ++entries[static_cast<std::size_t>(at)].multiplicity;
        return;
    }
    entries.push_back({auditor, type, 1});
    if (!m_many->index.isEmpty())
        m_many->index.addLast(entries);
    else if (countMany() > kIndexThreshold)
        m_many->index.rebuild(entries);
}

void SoAuditorList::removeFromMany(SoAuditor* auditor)
{
    auto& entries = m_many->entries;
    const int at = m_many->find(auditor);
    if (at < 0 || --entries[static_cast<std::size_t>(at)].multiplicity > 0)
        return;
    if (!m_many->index.isEmpty())
        m_many->index.moveLastTo(at, entries);
    entries[static_cast<std::size_t>(at)] = entries.back();
    entries.pop_back();
    if (entries.empty()) {
        freeMany();
        m_one = {};
    }
}

void SoAuditorList::notifyMany(SoNotification& notification) const
{
    // Walks must not edit the graph, and what runs on one only queues itself, so the list stands
    // still here; counting down keeps a list that shrinks all the same within its bounds.
    for (auto i = m_many->entries.size(); m_many && i-- > 0;)
        if (i < m_many->entries.size())
            m_many->entries[i].auditor->auditedChanged(notification);
}

void SoAuditorList::announceDeath()
{
    // One by one from the live list: an auditor told may take others out with it.
    while (m_many) {
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
