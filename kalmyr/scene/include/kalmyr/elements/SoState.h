#pragma once

#include <kalmyr/elements/SoElement.h>

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
    explicit SoState(SoAction *action);
    ~SoState();
    SoState(const SoState &) = delete;
    SoState &operator=(const SoState &) = delete;

    SoAction *getAction() const { return m_action; }
    int getDepth() const { return m_depth; }

    void push();
    void pop();

    template <class E> const E &get()
    {
        return static_cast<const E &>(top<E>());
    }
    /// The element of the present depth, for changing.
    template <class E> E &write()
    {
        return static_cast<E &>(writable(top<E>(), E::getStackIndex()));
    }

    /// All elements back to defaults, depth 0.
    void reset();

private:
    struct Slot {
        std::unique_ptr<SoElement> bottom;
        SoElement *top = nullptr;
    };

    template <class E> SoElement &top()
    {
        const auto i = static_cast<std::size_t>(E::getStackIndex());
        if (i < m_slots.size() && m_slots[i].top) return *m_slots[i].top;
        return install(i, std::make_unique<E>());
    }
    SoElement &install(std::size_t index, std::unique_ptr<SoElement> element);
    SoElement &writable(SoElement &top, int index);

    SoAction *m_action;
    int m_depth = 0;
    std::vector<Slot> m_slots;
    std::vector<int> m_changed;           ///< slots written, by depth
    std::vector<std::size_t> m_frames;    ///< where each depth begins in m_changed
};
