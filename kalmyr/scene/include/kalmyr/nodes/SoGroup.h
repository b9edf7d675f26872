#pragma once

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>

#include <vector>

/// A node with ordered children, which actions traverse one after another.
///
/// Every edit notifies once, with its kind, child and index. A child that would make the group its
/// own descendant is refused with an error.
class KALMYR_API SoGroup : public SoNode {
    SO_NODE_HEADER(SoGroup)

public:
    SoGroup();
    /// Reserves room for that many children, from 0 on.
    explicit SoGroup(int numChildren);
    static void initClass();

    /// Appends. The edits return false, and change nothing, for null and for an index or child that
    /// is not there, which are broken contracts, and for a cycle, with a debug error.
    virtual bool addChild(SoNode* child);
    /// `index` from 0 to getNumChildren(), the latter appends.
    virtual bool insertChild(SoNode* child, int index);
    virtual bool removeChild(int index);
    /// Removes the first place of the child.
    bool removeChild(SoNode* child);
    virtual bool replaceChild(int index, SoNode* child);
    bool replaceChild(SoNode* oldChild, SoNode* newChild);
    /// One notification; none when there is no child.
    virtual void removeAllChildren();
    /// Replaces all children at once, with one notification.
    virtual bool setChildren(const std::vector<SoNode*>& children);

    int getNumChildren() const { return m_children.getLength(); }
    /// Null, with an error posted, for an index out of range.
    SoNode* getChild(int index) const;
    /// Index of the first place of `child`, or -1.
    int findChild(const SoNode* child) const { return m_children.find(child); }

    SoChildList* getChildren() const override { return &m_children; }

    /// Traverses the children.
    void doAction(SoAction* action) override;

protected:
    ~SoGroup() override;

    mutable SoChildList m_children;
};
