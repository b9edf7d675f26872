#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/fields/SoFieldMacros.h>

class SoNode;

/// Holds one node, or none.
///
/// Keeps a reference on it and listens to it: a change at or below the node is a change of the
/// field's container. A node that holds the container, however far up, is refused with an error.
class KALMYR_API SoSFNode final : public SoSField {
    SO_FIELD_HEADER(SoSFNode)

    SoSFNode() = default;
    ~SoSFNode() override;

    /// The node, or null.
    SoNode* getValue() const
    {
        evaluate();
        return m_node;
    }
    operator SoNode*() const { return getValue(); }
    SoNode* operator->() const { return getValue(); }

    /// Sets and notifies, also when it is the same node (intended: a set is an event). Null is
    /// allowed.
    void setValue(SoNode* node);
    SoSFNode& operator=(SoNode* node)
    {
        setValue(node);
        return *this;
    }
    SoSFNode& operator=(const SoSFNode& other)
    {
        copyFrom(other);
        return *this;
    }
    /// Sets without notification, and the default flag stays: for constructors.
    void initValue(SoNode* node);

    bool isSame(const SoField& other) const override;
    void copyFrom(const SoField& other) override;
    void copyWith(SoNodeCopier& copier, const SoField& other) override;
    /// "NULL" or a node.
    bool readValue(SoFieldReader& in) override;
    void writeValue(SoFieldWriter& out) const override;

private:
    SoNode* m_node = nullptr; // Holds a reference.
};
