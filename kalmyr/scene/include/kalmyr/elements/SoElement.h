#pragma once

#include <kalmyr/base/Export.h>

#include <cstdint>
#include <memory>

class SoNode;

/// One property of the traversal state (material, model matrix, ...).
///
/// Elements are copied lazily when first written below a separator. Each knows the node that set
/// it last and an id of its value: equal ids mean equal values, so caches compare ids.
class KALMYR_API SoElement {
public:
    virtual ~SoElement() = default;

    /// The node that set the value; null for the default.
    const SoNode* getNode() const { return m_node; }
    /// Id of the present value; 0 for the default.
    std::uint64_t getValueId() const { return m_valueId; }

    /// A new default element of the same class.
    virtual std::unique_ptr<SoElement> makeNew() const = 0;
    /// Takes over the value of the element below in the stack.
    virtual void copyFrom(const SoElement& below) = 0;
    /// Back to the default value.
    virtual void reset() = 0;

    /// Records the setter; the value id becomes that of the node's present state, or a new one
    /// when the value comes from no node. A node that sets other values from visit to visit, though
    /// it has not changed, tells them apart by mixValueId().
    void setBy(const SoNode* node);
    /// For values accumulated over several nodes (matrices, lights): mixes the node's id in.
    void accumulatedBy(const SoNode* node);
    /// Mixes in the id of another element that the value was computed from.
    void mixValueId(std::uint64_t id);

    /// Combines two ids into one that is not 0; the order matters.
    static std::uint64_t mix(std::uint64_t a, std::uint64_t b);

    /// A unique index for each element class, in order of first use.
    static int newStackIndex();

protected:
    const SoNode* m_node = nullptr;
    std::uint64_t m_valueId = 0;

private:
    friend class SoState;
    int m_depth = 0;
    std::unique_ptr<SoElement> m_next; ///< storage for the element above, kept for reuse
    SoElement* m_below = nullptr;
};

/// Base of concrete elements: `Derived` is copyable, default-constructed to the default value.
///
/// The concrete class declares `static int getStackIndex();` and defines it in a source file as
/// `int SoXElement::getStackIndex() { static const int i = newStackIndex(); return i; }` so that
/// every library sees one index.
template <class Derived>
class SoElementOf : public SoElement {
public:
    std::unique_ptr<SoElement> makeNew() const override { return std::make_unique<Derived>(); }
    void copyFrom(const SoElement& below) override
    {
        static_cast<Derived&>(*this).value() = static_cast<const Derived&>(below).value();
        m_node = below.getNode();
        m_valueId = below.getValueId();
    }
    void reset() override
    {
        static_cast<Derived&>(*this).value() = {};
        m_node = nullptr;
        m_valueId = 0;
    }
};

/// An element that is one plain value V: `struct SoXElement final : SoValueElement<SoXElement, V>`.
template <class Derived, class V>
class SoValueElement : public SoElementOf<Derived> {
public:
    V& value() { return m_value; }
    const V& value() const { return m_value; }
    const V& get() const { return m_value; }
    void set(const SoNode* node, const V& v)
    {
        m_value = v;
        this->setBy(node);
    }

private:
    V m_value{};
};
