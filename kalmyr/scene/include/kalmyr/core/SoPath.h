#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoBase.h>

#include <vector>

class SoChildList;
class SoNode;

/// A way down through the graph: the head node, then child indices. Holds a reference on every
/// node it names.
///
/// It follows edits of the graph: indices change with the places of the nodes, and where a node is
/// taken away from the one above it the path ends. SoLightPath costs less and follows when asked.
///
/// Null nodes, and indices out of range, are broken contracts: nothing changes, an error is posted.
class KALMYR_API SoPath final : public SoBase, private SoAuditor {
public:
    static SoType getClassTypeId();
    static void initClass();
    SoType getTypeId() const override;

    SoPath() = default;
    explicit SoPath(SoNode* head);

    /// Null makes the path empty.
    void setHead(SoNode* head);
    /// Appends a child of the tail by its index in the tail's (internal) children, or -1 when the
    /// node is reached by a field. To an empty path it appends the head.
    void append(SoNode* node, int index);
    void append(int childIndex);
    /// Keeps the first `length` nodes, 0 <= length <= getLength().
    void truncate(int length);
    /// Takes the tail off; the path must not be empty.
    void pop() { truncate(getLength() - 1); }

    int getLength() const { return static_cast<int>(m_nodes.size()); }
    bool isEmpty() const { return m_nodes.empty(); }
    SoNode* getHead() const { return m_nodes.empty() ? nullptr : m_nodes.front(); }
    SoNode* getTail() const { return m_nodes.empty() ? nullptr : m_nodes.back(); }
    /// Null for an index out of range.
    SoNode* getNode(int i) const
    {
        if (!kalmyr::holds(i >= 0 && i < getLength(), "0 <= index < getLength()"))
            return nullptr;
        return m_nodes[static_cast<std::size_t>(i)];
    }
    SoNode* getNodeFromTail(int i) const { return getNode(getLength() - 1 - i); }
    /// Index of node i in its parent on the path; -1 for the head and nodes reached by a field.
    int getIndex(int i) const
    {
        if (!kalmyr::holds(i >= 0 && i < getLength(), "0 <= index < getLength()"))
            return -1;
        return m_indices[static_cast<std::size_t>(i)];
    }
    int getIndexFromTail(int i) const { return getIndex(getLength() - 1 - i); }

    bool containsNode(const SoNode* node) const;
    bool containsPath(const SoPath* path) const;
    /// A new path (reference count 0) of `numNodes` nodes from that one on, or of all from there
    /// for 0 or a number that reaches beyond the tail; 0 <= startFromNodeIndex <= getLength().
    SoPath* copy(int startFromNodeIndex = 0, int numNodes = 0) const;

    friend bool operator==(const SoPath& a, const SoPath& b)
    {
        return a.m_nodes == b.m_nodes && a.m_indices == b.m_indices;
    }

private:
    friend class SoChildList;
    ~SoPath() override;

    void listen(bool on, int level);
    /// Level of the node whose place in the list the path names; 0 when there is none.
    int levelIn(const SoChildList& list) const;
    void childInserted(const SoChildList& list, int index);
    void childRemoved(const SoChildList& list, int index);
    void childReplaced(const SoChildList& list, int index);
    void childrenChanged(const SoChildList& list, int);
    void auditedChanged(SoNotification& notification) override;

    std::vector<SoNode*> m_nodes;
    std::vector<int> m_indices;
};
