#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/fields/SoFieldMacros.h>

#include <span>
#include <vector>

class SoChildList;
class SoNode;

/// Common part of the fields that hold any number of nodes, null among them, each with a reference
/// and a listener: SoMFNode, and the parameter lists of shaders and instances.
///
/// A field may be bound to the child list of its container: the list then is the value, whichever
/// side edits it. A bound field holds no nulls. Nodes that hold the container are refused with an
/// error.
///
/// An edit of one place is told as a child list tells it, with kind, node and index: CHILD_ADDED,
/// CHILD_INSERTED, CHILD_REPLACED, CHILD_REMOVED (the notification's `field` is this one, its
/// `child` null for a null). ALL_REMOVED tells that the field is empty now or, where it is bound,
/// that the list is another; UNSPECIFIED, that several places of an unbound field changed.
/// Edits take the time of moving the entries behind the place.
/// Broken contracts (indices and counts out of range, nodes from a null pointer) change nothing and
/// post an error.
class KALMYR_API SoMNodeField : public SoMField {
public:
    /// More nodes than this are refused.
    static constexpr int kMaxNum = 1 << 28;

    static SoType getClassTypeId();
    static void initClass();

    SoMNodeField() = default;
    ~SoMNodeField() override;

    /// Makes `list` the field's value; once, in the container's constructor, before any value is
    /// set. The list belongs to the container and must outlive every use of the field. A second
    /// list and null are refused with an error.
    void bindTo(SoChildList* list);
    bool isBound() const { return m_list; }

    int getNum() const override { return static_cast<int>(getValues().size()); }
    const std::vector<SoNode*>& getValues() const;
    /// Null for an index out of range.
    SoNode* operator[](int i) const
    {
        const std::vector<SoNode*>& nodes = getValues();
        if (!kalmyr::holds(i >= 0 && i < static_cast<int>(nodes.size()), "0 <= index < getNum()"))
            return nullptr;
        return nodes[static_cast<std::size_t>(i)];
    }
    SoNode* getNode(int i) const { return (*this)[i]; }
    int getNumNodes() const { return getNum(); }
    /// Index of the first place of `node`, or -1.
    int find(const SoNode* node) const;

    /// The edits return false, and change nothing, for an index out of range or a refused node.
    bool addNode(SoNode* node) { return insertNode(node, getNum()); }
    bool insertNode(SoNode* node, int index);
    /// Removes the first place of the node, which must be in the field.
    bool removeNode(const SoNode* node) { return removeNode(find(node)); }
    bool removeNode(int index);
    bool removeAllNodes();
    bool replaceNode(int index, SoNode* node) { return set1Value(index, node); }
    bool replaceNode(const SoNode* old, SoNode* node);

    /// Makes the field hold exactly one node.
    bool setValue(SoNode* node);
    /// Replaces one node; at or beyond the end the field grows by nulls.
    bool set1Value(int index, SoNode* node);
    /// Replaces everything with one notification.
    bool setValues(std::span<SoNode* const> nodes);
    /// Replaces `nodes.size()` nodes from `start`, growing when needed, with one notification.
    bool setValues(int start, std::span<SoNode* const> nodes);
    bool setValues(int start, int num, SoNode* const* nodes)
    {
        return kalmyr::holds(num == 0 || (num > 0 && nodes), "num nodes, at least none")
               && setValues(start, {nodes, static_cast<std::size_t>(num)});
    }
    SoMNodeField& operator=(const SoMNodeField& other)
    {
        copyFrom(other);
        return *this;
    }

    /// A bound field only shrinks: new entries would be null.
    void setNum(int num) override;
    void deleteValues(int start, int count = -1) override;
    /// Does nothing in a bound field.
    void insertSpace(int start, int count) override;
    bool replaceValues(int start, int removed, const SoMField& source, int from,
                       int count) override;

    bool isSame(const SoField& other) const override;
    void copyFrom(const SoField& other) override;
    void copyWith(SoNodeCopier& copier, const SoField& other) override;
    bool readValue(SoFieldReader& in) override;
    /// A single null stands in brackets: a lone NULL is no node at all.
    void writeValue(SoFieldWriter& out) const override;
    bool read1Value(int index, SoFieldReader& in) override;
    void write1Value(int index, SoFieldWriter& out) const override;

protected:
    /// A bound field is as its list is.
    bool mayFollow() const override { return !m_list; }
    bool readList(SoFieldReader& in) override;

private:
    bool acceptsAll(std::span<SoNode* const> nodes) const;
    void hold(SoNode* node);
    void letGo(SoNode* node);
    void tell(SoNotification::Kind kind, SoNode* node, int index);
    /// Puts `nodes` in the place of `count` ones of an unbound field.
    bool exchange(int start, int count, std::span<SoNode* const> nodes);
    bool assign(std::span<SoNode* const> nodes);

    std::vector<SoNode*> m_nodes;  ///< with references; empty in a bound field
    SoChildList* m_list = nullptr; // Not owned; the container's.
};
