#pragma once

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>

#include <unordered_map>
#include <vector>

class SoGroup;

/// A list of nodes as part of a kit: a group that belongs to the part, with children of certain
/// types only.
///
/// The edits return false, and change nothing, for a child of another type; otherwise they are the
/// group's own, with its notifications.
class KALMYR_API SoNodeKitListPart : public SoNode {
    SO_NODE_HEADER(SoNodeKitListPart)

public:
    SoNodeKitListPart();
    static void initClass();

    SoSFName containerTypeName; ///< type of the group; "Group"
    SoMFName childTypeNames;    ///< types of the children; "Node"
    SoSFNode containerNode;     ///< the group; null until it is needed

    SoType getContainerType() const;
    /// Replaces the group, keeping the children. False for what is no group, or when locked.
    bool setContainerType(SoType type);

    std::vector<SoType> getChildTypes() const;
    /// Adds a type to those allowed; the first call replaces "any node". False when locked, or for
    /// what is no node type.
    bool addChildType(SoType type);
    bool isTypePermitted(SoType type) const;
    bool isChildPermitted(const SoNode* child) const;

    /// From now on the types stay what they are.
    void lockTypes() { m_locked = true; }
    bool isTypeLocked() const { return m_locked; }

    int getNumChildren() const;
    /// Null, with an error posted, for an index out of range.
    SoNode* getChild(int index) const;
    /// Index of the first place of `child`, or -1. Constant time as long as the list stays the
    /// same.
    int findChild(const SoNode* child) const;

    /// The edits are false, and change nothing, for null and for an index or child that is not
    /// there, which are broken contracts, and for a child of a type that is not permitted.
    bool addChild(SoNode* child);
    /// `index` from 0 to getNumChildren(), the latter appends.
    bool insertChild(SoNode* child, int index);
    bool replaceChild(int index, SoNode* child);
    bool removeChild(int index);
    /// Removes the first place of the child.
    bool removeChild(const SoNode* child);
    void removeAllChildren();

    /// Sets fields of the group from text, making it if needed.
    bool containerSet(const char* fields);

    /// For kits: makes the entry a new node of the first allowed type; null when that is abstract.
    SoNode* makeChild() const;

    /// The group, as the part's own business.
    SoChildList* getInternalChildren() const override { return &m_children; }
    bool affectsState() const override;
    void doAction(SoAction* action) override;
    void copyContents(const SoNode* from, SoNodeCopier& copier) override;
    bool isFieldWritten(const SoField& field) const override;

protected:
    bool noteChange(const SoNotification& notification) override;
    ~SoNodeKitListPart() override;

private:
    SoGroup* group() const;
    SoGroup* groupOrNew();
    bool accepts(const SoNode* container) const;
    void followContainer();
    void buildIndex() const;

    mutable SoChildList m_children; ///< the group, when there is one
    mutable std::unordered_map<const SoNode*, int> m_index;
    mutable int m_indexedCount = -1; ///< children when the index was built; -1: never
    bool m_locked = false;
};
