#include "rendering/RenderListCache.h"

#include <algorithm>

namespace kalmyr::detail {

RenderListCache::~RenderListCache()
{
    for (auto& [key, list] : m_lists) {
        list->m_cache = nullptr;
    }
}

RenderList* RenderListCache::findOld(const SoNode* node, std::uint64_t stateKey) const
{
    const auto found = m_lists.find(Key{node, stateKey});
    return found != m_lists.end() ? found->second : nullptr;
}

RenderList* RenderListCache::find(const SoNode* node, std::uint64_t changeId,
                                  std::uint64_t stateKey) const
{
    RenderList* const list = findOld(node, stateKey);
    return list && list->m_changeId == changeId ? list : nullptr;
}

void RenderListCache::add(RenderList& list, const SoNode* node, std::uint64_t changeId,
                          std::uint64_t stateKey)
{
    RenderList*& slot = m_lists[Key{node, stateKey}];
    if (slot) {
        slot->m_cache = nullptr;
    } else {
        ++m_seen[node].lists;
    }
    slot = &list;
    list.m_cache = this;
    list.m_node = node;
    list.m_stateKey = stateKey;
    list.m_changeId = changeId;
}

void RenderListCache::forget(RenderList& list)
{
    m_lists.erase(Key{list.m_node, list.m_stateKey});
    if (const auto found = m_seen.find(list.m_node); found != m_seen.end()) {
        --found->second.lists;
    }
    list.m_cache = nullptr;
}

const RenderListCache::Seen* RenderListCache::seen(const SoNode* node) const
{
    const auto found = m_seen.find(node);
    return found != m_seen.end() ? &found->second : nullptr;
}

void RenderListCache::note(const SoNode* node, std::uint64_t changeId, std::uint64_t frame,
                           bool viewDependent)
{
    Seen& seen = m_seen[node];
    if (seen.changeId != changeId) {
        seen.since = frame;
    }
    seen.changeId = changeId;
    seen.frame = frame;
    seen.viewDependent = viewDependent;
}

void RenderListCache::sweep(std::uint64_t frame)
{
    if (m_seen.size() < m_sweepAt) {
        return;
    }
    std::erase_if(m_seen, [frame](const auto& entry) {
        return entry.second.lists == 0 && entry.second.frame + kKeptFrames < frame;
    });
    m_sweepAt = std::max(kSweepThreshold, 2 * m_seen.size());
}

} // namespace kalmyr::detail
