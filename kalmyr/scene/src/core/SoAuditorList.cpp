#include <kalmyr/core/SoAuditor.h>

#include <kalmyr/core/SoNotification.h>

SoAuditorList::~SoAuditorList() = default;

int SoAuditorList::getLength() const
{
    if (m_many)
        return static_cast<int>(m_many->entries.size());
    return m_one.auditor ? 1 : 0;
}

const SoAuditorList::Entry& SoAuditorList::operator[](int i) const
{
    return m_many ? m_many->entries[static_cast<std::size_t>(i)] : m_one;
}

int SoAuditorList::find(SoAuditor* auditor) const
{
    if (!m_many)
        return m_one.auditor == auditor ? 0 : -1;
    if (!m_many->index.empty()) {
        const auto at = m_many->index.find(auditor);
        return at == m_many->index.end() ? -1 : at->second;
    }
    // The latest come and go most.
    for (auto i = m_many->entries.size(); i-- > 0;)
        if (m_many->entries[i].auditor == auditor)
            return static_cast<int>(i);
    return -1;
}

void SoAuditorList::append(SoAuditor* auditor, SoAuditor::Type type)
{
    if (!m_many && !m_one.auditor) {
        m_one = {auditor, type, 1};
        return;
    }
    if (const int at = find(auditor); at >= 0) {
        ++(m_many ? m_many->entries[static_cast<std::size_t>(at)] : m_one).multiplicity;
        return;
    }
    if (!m_many) {
        m_many = std::make_unique<Many>();
        m_many->entries.push_back(m_one);
    }
    auto& entries = m_many->entries;
    entries.push_back({auditor, type, 1});
    const auto count = static_cast<int>(entries.size());
    if (!m_many->index.empty())
        m_many->index.emplace(auditor, count - 1);
    else if (count > kIndexThreshold)
        for (int i = 0; i < count; ++i)
            m_many->index.emplace(entries[static_cast<std::size_t>(i)].auditor, i);
}

void SoAuditorList::remove(SoAuditor* auditor)
{
    const int at = auditor ? find(auditor) : -1;
    if (at < 0)
        return;
    Entry& entry = m_many ? m_many->entries[static_cast<std::size_t>(at)] : m_one;
    if (--entry.multiplicity > 0)
        return;
    if (!m_many) {
        m_one = {};
        return;
    }
    auto& entries = m_many->entries;
    if (!m_many->index.empty()) {
        m_many->index.erase(auditor);
        if (entries.back().auditor != auditor)
            m_many->index[entries.back().auditor] = at;
    }
    entry = entries.back();
    entries.pop_back();
    if (entries.empty()) {
        m_many.reset();
        m_one = {};
    }
}

void SoAuditorList::notify(SoNotification& notification) const
{
    if (!m_many) {
        if (m_one.auditor)
            m_one.auditor->auditedChanged(notification);
        return;
    }
    // Walks must not edit the graph, and what runs on one only queues itself, so the list stands
    // still here; counting down keeps a list that shrinks all the same within its bounds.
    for (auto i = m_many->entries.size(); m_many && i-- > 0;)
        if (i < m_many->entries.size())
            m_many->entries[i].auditor->auditedChanged(notification);
}

void SoAuditorList::announceDeath()
{
    if (!m_many) {
        SoAuditor* one = m_one.auditor;
        m_one = {};
        if (one)
            one->auditedDying();
        return;
    }
    // One by one from the live list: an auditor told may take others out with it.
    while (m_many && !m_many->entries.empty()) {
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
