#pragma once

#include <kalmyr/base/SoContract.h>
#include <kalmyr/elements/SoElement.h>

#include <cstdint>
#include <memory>
#include <vector>

class SoAction;

/// The traversal state: a stack of elements, pushed lazily.
///
///     const auto &material = state->get<SoMaterialElement>();
///     state->write<SoMaterialElement>().set(this, value);
///
/// push() costs an increment; an element is copied when it is first written at a new depth.
class KALMYR_API SoState {
public:
    explicit SoState(SoAction* action);
    ~SoState();
    SoState(const SoState&) = delete;
    SoState& operator=(const SoState&) = delete;

    SoAction* getAction() const { return m_action; }
    int getDepth() const { return m_depth; }

    void push() { ++m_depth; }
    void pop()
    {
        while (!m_changed.empty() && m_changed.back().depth == m_depth)
            dropChange();
        if (kalmyr::holds(m_depth > 0, "a push() for every pop()"))
            --m_depth;
    }

    template <class E>
    const E& get()
    {
        return static_cast<const E&>(top<E>());
    }
    /// The element of the present depth, for changing.
    template <class E>
    E& write()
    {
        return static_cast<E&>(writable(top<E>(), E::getStackIndex()));
    }

    /// Value id of an element by its stack index; 0 when nobody has asked for it or set it.
    std::uint64_t getValueId(int stackIndex) const
    {
        const auto i = static_cast<std::size_t>(stackIndex);
        return i < m_slots.size() && m_slots[i].top ? m_slots[i].top->getValueId() : 0;
    }

    /// Every stack index in use here is below this; for keys over the whole state.
    int getNumStackIndices() const { return static_cast<int>(m_slots.size()); }

    /// All elements back to defaults, depth 0.
    void reset();

private:
    struct Slot {
        std::unique_ptr<SoElement> bottom;
        SoElement* top = nullptr;
    };

    template <class E>
    SoElement& top()
    {
        const auto i = static_cast<std::size_t>(E::getStackIndex());
        if (i < m_slots.size() && m_slots[i].top)
            return *m_slots[i].top;
        return install(i, std::make_unique<E>());
    }
    SoElement& install(std::size_t index, std::unique_ptr<SoElement> element);
    SoElement& writable(SoElement& top, int index)
    {
        return top.m_depth == m_depth ? top : raise(top, index);
    }
    SoElement& raise(SoElement& top, int index);
    void dropChange()
    {
        SoElement*& top = m_slots[static_cast<std::size_t>(m_changed.back().index)].top;
        top = top->m_below;
        m_changed.pop_back();
    }

    SoAction* m_action;
    int m_depth = 0;
    std::vector<Slot> m_slots;
    struct Change {
        int depth;
        int index;
    };
    std::vector<Change> m_changed; ///< slots written above depth 0; depths never fall
};
