#include "mirabo/tree/DisabledPlaces.h"

#include <algorithm>

namespace mirabo {

std::shared_ptr<const SavedLinks> DisabledPlaces::find(const SoNode* node) const
{
    const auto found = m_nodes.find(node);
    return found == m_nodes.end() ? nullptr : found->second.saved;
}

std::shared_ptr<const void> DisabledPlaces::claim(const SoNode* node) const
{
    const auto found = m_nodes.find(node);
    return found == m_nodes.end() ? nullptr : found->second.claim;
}

std::vector<DisabledPlaces::Place> DisabledPlaces::below(const SoNode* parent) const
{
    std::vector<Place> places;
    const auto [first, last] = m_byParent.equal_range(parent);
    for (auto at = first; at != last; ++at)
        for (const ParentLink& link : m_nodes.at(at->second).saved->links)
            if (link.parent.get() == parent)
                places.push_back({link.index, at->second});
    std::stable_sort(places.begin(), places.end(),
                     [](const Place& a, const Place& b) { return a.index < b.index; });
    return places;
}

std::vector<const SoNode*> DisabledPlaces::parents() const
{
    std::vector<const SoNode*> nodes;
    for (const auto& [parent, node] : m_byParent)
        if (nodes.empty() || nodes.back() != parent) // equal keys stand together
            nodes.push_back(parent);
    return nodes;
}

void DisabledPlaces::add(std::shared_ptr<const SavedLinks> saved)
{
    SoNode* node = saved->node.get();
    remove(node);
    const SoNode* last = nullptr; // places of one parent stand together
    for (const ParentLink& link : saved->links) {
        if (link.parent.get() != last)
            m_byParent.emplace(link.parent.get(), node);
        last = link.parent.get();
    }
    m_nodes.emplace(node, Record{std::move(saved), std::make_shared<const char>()});
}

void DisabledPlaces::remove(const SoNode* node)
{
    const auto found = m_nodes.find(node);
    if (found == m_nodes.end())
        return;
    const std::shared_ptr<const SavedLinks> saved = found->second.saved; // dies last
    m_nodes.erase(found);
    for (const ParentLink& link : saved->links) {
        auto [at, last] = m_byParent.equal_range(link.parent.get());
        while (at != last)
            at = at->second == node ? m_byParent.erase(at) : std::next(at);
    }
}

void DisabledPlaces::clear()
{
    m_byParent.clear();
    std::exchange(m_nodes, {}).clear();
}

} // namespace mirabo
