#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoAuditor.h>
#include <kalmyr/core/SoNotification.h>

#include <memory>
#include <vector>

class SoField;
class SoNode;
class SoPath;

/// The children of a node. Holds a reference on each child, listens to it, and tells the parent
/// of every edit with its kind, child and index.
///
/// The same node may stand in the list several times. An edit that would make a node its own
/// ancestor is refused with an error that names both nodes.
class KALMYR_API SoChildList final : public SoAuditor {
public:
    /// `parent` owns the list and is told of its edits.
    explicit SoChildList(SoNode* parent);
    ~SoChildList();
    SoChildList(const SoChildList&) = delete;
    SoChildList& operator=(const SoChildList&) = delete;

    SoNode* getParent() const { return m_parent; }
    int getLength() const { return static_cast<int>(m_nodes.size()); }
    /// Null for an index out of range.
    SoNode* operator[](int i) const
    {
        if (!kalmyr::holds(i >= 0 && i < getLength(), "0 <= index < getLength()"))
            return nullptr;
        return m_nodes[static_cast<std::size_t>(i)];
    }
    const std::vector<SoNode*>& getNodes() const { return m_nodes; }

    /// Index of the first place of `child`, or -1. Asked again and again, a long list keeps an
    /// index: constant time then for a child that stands in it once.
    int find(const SoNode* child) const;

    /// The edits return false, and change nothing, for a null child or an index out of range, which
    /// are broken contracts, and for a cycle.
    bool append(SoNode* child);
    /// `index` from 0 to getLength(), the latter appends.
    bool insert(SoNode* child, int index);
    bool remove(int index);
    bool set(int index, SoNode* child);
    /// Removes all, with one notification (none when empty already).
    void truncate();
    /// Replaces the whole list with one notification of kind ALL_REMOVED (intended: whoever
    /// mirrors the list reads it again).
    bool assign(const std::vector<SoNode*>& children);
    /// Reserves memory for that many children, at most kMaxReserved.
    void reserve(int count)
    {
        if (kalmyr::holds(count >= 0 && count <= kMaxReserved, "0 <= count <= kMaxReserved"))
            m_nodes.reserve(static_cast<std::size_t>(count));
    }
    static constexpr int kMaxReserved = 1 << 28;

    /// Lets a field stand for the list: its listeners hear of every change before the parent does,
    /// and it stops being default with the first edit. The field lives as long as the list.
    void setField(SoField* field) { m_field = field; }
    /// Whether somebody listens to that field.
    bool isFieldWatched() const;

    void auditedChanged(SoNotification& notification) override;

private:
    friend class SoPath;
    using PathMethod = void (SoPath::*)(const SoChildList& list, int index);
    /// Paths that lead through the list; told of its edits before anybody else.
    void addPath(SoPath* path);
    void removePath(SoPath* path);
    void tellPaths(PathMethod method, int index);

    struct Beside;
    Beside& beside() const;
    int findInLong(const SoNode* child) const;
    void dropIndex();

    bool accepts(const SoNode* child) const;
    bool acceptsAll(const std::vector<SoNode*>& children) const;
    /// Posts that the child holds the parent; false.
    bool refuse(const SoNode* child) const;
    void adopt(SoNode* child);
    void tell(SoNotification::Kind kind, SoNode* child, int index);

    SoNode* m_parent;           // Not owned; it owns us.
    SoField* m_field = nullptr; // Not owned; the parent's.
    std::vector<SoNode*> m_nodes;
    mutable std::unique_ptr<Beside> m_beside; ///< paths and index; null mostly
};
