#include <kalmyr/elements/SoState.h>

#include <utility>

SoState::SoState(SoAction* action) : m_action(action) {}

SoState::~SoState()
{
    // One by one: the chain of a deep graph must not be destroyed recursively.
    for (Slot& slot : m_slots) {
        std::unique_ptr<SoElement> element = std::move(slot.bottom);
        while (element)
            element = std::exchange(element->m_next, nullptr);
    }
}

void SoState::reset()
{
    m_changed.clear();
    m_depth = 0;
    for (Slot& slot : m_slots) {
        slot.top = slot.bottom.get();
        if (slot.top)
            slot.top->reset();
    }
}

SoElement& SoState::install(std::size_t index, std::unique_ptr<SoElement> element)
{
    if (index >= m_slots.size())
        m_slots.resize(index + 1);
    Slot& slot = m_slots[index];
    slot.bottom = std::move(element);
    slot.top = slot.bottom.get();
    return *slot.top;
}

SoElement& SoState::raise(SoElement& top, int index)
{
    if (!top.m_next) {
        top.m_next = top.makeNew();
        top.m_next->m_below = &top;
    }
    SoElement& raised = *top.m_next;
    raised.m_depth = m_depth;
    raised.copyFrom(top);
    m_slots[static_cast<std::size_t>(index)].top = &raised;
    m_changed.push_back({m_depth, index});
    return raised;
}
