#include "mirabo/tree/RecentChanges.h"

void RecentChanges::begin()
{
    m_entries.clear();
    m_begin = m_clock.elapsed();
}

bool RecentChanges::isNews(const SoNode* node)
{
    const qint64 now = m_clock.elapsed();
    const bool isBeginning = now - m_begin < m_quietTime;
    std::erase_if(m_entries, [&](const Entry& entry) { return now - entry.time >= m_quietTime; });
    for (Entry& entry : m_entries)
        if (entry.node == node) {
            entry.time = now;
            return false;
        }
    m_entries.push_back({node, now});
    return !isBeginning;
}

void RecentChanges::forget(const SoNode* node)
{
    std::erase_if(m_entries, [node](const Entry& entry) { return entry.node == node; });
}
