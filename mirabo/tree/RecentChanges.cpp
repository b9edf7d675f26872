#include "mirabo/tree/RecentChanges.h"

#include <kalmyr/base/SbTime.h>

void RecentChanges::begin()
{
    m_entries.clear();
    m_begin = SbTime::monotonic().getValue();
}

bool RecentChanges::isNews(const SoNode* node)
{
    const double now = SbTime::monotonic().getValue();
    const auto isOver = [&](double since) { return 1000 * (now - since) >= m_quietTime; };
    const bool isBeginning = !isOver(m_begin);
    std::erase_if(m_entries, [&](const Entry& entry) { return isOver(entry.time); });
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
