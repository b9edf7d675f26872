#include "mirabo/tree/NodeIndex.h"

#include "mirabo/tree/SoTreeViewItem.h"

#include <cstdint>

namespace mirabo {

namespace {

constexpr std::size_t kFirstSize = 64;

} // namespace

std::size_t NodeIndex::home(const SoNode* node) const
{
    const auto bits = reinterpret_cast<std::uintptr_t>(node);
    const auto mixed = static_cast<std::uint64_t>(bits >> 4) * 0x9E3779B97F4A7C15ull;
    return static_cast<std::size_t>(mixed >> 20) & (m_slots.size() - 1);
}

std::size_t NodeIndex::find(const SoNode* node) const
{
    std::size_t at = home(node);
    while (m_slots[at].node && m_slots[at].node != node)
        at = (at + 1) & (m_slots.size() - 1);
    return at;
}

void NodeIndex::prefetch(const SoNode* node) const
{
    if (!m_slots.empty())
        __builtin_prefetch(&m_slots[home(node)], 1);
}

void NodeIndex::grow()
{
    std::vector<Slot> old(m_slots.empty() ? kFirstSize : m_slots.size() * 2);
    old.swap(m_slots);
    for (const Slot& slot : old)
        if (slot.node)
            m_slots[find(slot.node)] = slot;
}

void NodeIndex::add(SoTreeViewItem* item)
{
    if (3 * (m_nodes + 1) > 2 * m_slots.size())
        grow();
    ++m_items;
    Slot& slot = m_slots[find(item->m_node)];
    item->m_nextOccurrence = nullptr;
    if (!slot.node) {
        slot = {item->m_node, item};
        item->m_previousOccurrence = item;
        ++m_nodes;
        return;
    }
    SoTreeViewItem* last = slot.first->m_previousOccurrence;
    last->m_nextOccurrence = item;
    item->m_previousOccurrence = last;
    slot.first->m_previousOccurrence = item;
}

void NodeIndex::remove(SoTreeViewItem* item)
{
    if (m_discarding)
        return;
    --m_items;
    SoTreeViewItem* next = item->m_nextOccurrence;
    SoTreeViewItem* previous = item->m_previousOccurrence;
    const std::size_t at = find(item->m_node);
    Slot& slot = m_slots[at];
    if (slot.first == item && !next) {
        erase(at);
        return;
    }
    if (next)
        next->m_previousOccurrence = previous;
    else
        slot.first->m_previousOccurrence = previous;
    if (slot.first == item)
        slot.first = next;
    else
        previous->m_nextOccurrence = next;
}

std::vector<SoTreeViewItem*> NodeIndex::take(const SoNode* node)
{
    std::vector<SoTreeViewItem*> items = itemsOf(node);
    if (!items.empty())
        erase(find(node));
    m_items -= items.size();
    return items;
}

void NodeIndex::erase(std::size_t at)
{
    --m_nodes;
    const std::size_t mask = m_slots.size() - 1;
    // Entries that were pushed beyond the freed slot move back, so that no search ends too early.
    for (std::size_t i = (at + 1) & mask; m_slots[i].node; i = (i + 1) & mask) {
        const std::size_t distance = (i - home(m_slots[i].node)) & mask;
        if (distance < ((i - at) & mask))
            continue;
        m_slots[at] = m_slots[i];
        at = i;
    }
    m_slots[at] = Slot();
}

SoTreeViewItem* NodeIndex::firstOf(const SoNode* node) const
{
    return m_slots.empty() || !node ? nullptr : m_slots[find(node)].first;
}

std::vector<SoTreeViewItem*> NodeIndex::itemsOf(const SoNode* node) const
{
    std::vector<SoTreeViewItem*> items;
    for (SoTreeViewItem* item = firstOf(node); item; item = item->m_nextOccurrence)
        items.push_back(item);
    return items;
}

void NodeIndex::beginDiscard()
{
    m_slots.clear();
    m_nodes = 0;
    m_items = 0;
    m_discarding = true;
}

} // namespace mirabo
