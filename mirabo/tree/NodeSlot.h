#pragma once

#include "mirabo/core/KeptNode.h"

#include <kalmyr/base/SbName.h>

#include <QString>

#include <functional>
#include <optional>

class SoField;
class SoMNodeField;
class SoMiraboTreeView;
class SoNode;
class SoNodeKitListPart;
class SoTreeViewItem;

namespace mirabo {

/// One place of the graph in which a node stands or can be put: what the tree's edit commands take
/// nodes from and put them into.
///
/// Taking and putting are each other's inverse to the letter of the scene's text: the place goes by
/// the container's own index of the node, and flags of fields that the edits change on their way
/// are remembered on both sides. Nobody's reference is held. Edits are made under the write lock.
class NodeSlot {
public:
    /// The values are those of the delete command's kinds.
    enum class Kind {
        Child = 0,     ///< entry of a node's child list; without a container: the root of the scene
        Field = 1,     ///< value of a field, or one of its values
        Part = 2,      ///< named part of a node kit
        ListEntry = 3, ///< entry of a kit's list part
        FieldChild = 4, ///< child of a container whose child list is a field as well, as in VRML97
    };

    /// The place of a row's node. The row is not a disabled one.
    static NodeSlot of(const SoTreeViewItem* row);
    /// A place in the list that a row's node keeps, before the entry `index` (-1: behind the last);
    /// none for a node without one.
    static std::optional<NodeSlot> into(const SoTreeViewItem* row, int index);
    /// The place right behind a row in the list that it stands in; none when that is no list.
    static std::optional<NodeSlot> behind(const SoTreeViewItem* row);
    /// The place of a further top-level row, behind all others; none unless the tree has a
    /// container for them.
    static std::optional<NodeSlot> behindAll(const SoMiraboTreeView& view);

    Kind kind() const { return m_kind; }
    bool isRoot() const { return m_isRoot; }
    /// Whether there are further places beside this one.
    bool isInList() const;
    SoNode* container() const { return m_container.get(); }
    /// Index in the container's list, or among the values of the field.
    int index() const { return m_index; }
    void setIndex(int index) { m_index = index; }
    /// Number of nodes in the list.
    int count() const;
    const SbName& name() const { return m_name; } ///< of the part or field; empty for the others
    /// Whether both are in one list.
    bool isBeside(const NodeSlot& other) const;
    /// The node comes from a file, which is not edited here.
    bool isContentOfFile() const;
    /// The group that a list part keeps for its entries.
    bool isGroupOfList() const;

    /// Why nothing can be taken from here, or the node not be put here, as a sentence; empty when
    /// there is no obstacle known beforehand.
    QString whyNotTake() const;
    QString whyNotPut(const SoNode* node) const;

    /// False, with nothing changed, when the graph refuses, or the place is not there any more.
    bool take(const SoNode* node);
    bool put(SoNode* node);

    /// The node below whose rows the place's row stands, while there is something in the place;
    /// null for the root. The container of top-level rows has no row.
    SoNode* holder() const;
    /// Whether it is the place of a top-level row other than the root's.
    bool isTopLevel(const SoMiraboTreeView& view) const;
    /// The top-level row of such a place; null when it has none.
    SoTreeViewItem* topRow(const SoMiraboTreeView& view) const;
    /// The row of the place below a row of holder(); null when it has none.
    SoTreeViewItem* rowBelow(const SoTreeViewItem* holderRow) const;
    /// The uppermost row that goes below a row of holder() when the place is emptied: that of the
    /// place, or the holder's own.
    SoTreeViewItem* goingBelow(SoTreeViewItem* holderRow) const
    {
        return m_madeGroup ? holderRow : rowBelow(holderRow);
    }

private:
    NodeSlot(Kind kind, SoNode* container, int index)
        : m_kind(kind), m_container(container), m_index(index)
    {
    }
    static NodeSlot inList(SoNode* container, int index);

    SoField* field() const;
    SoMNodeField* multiField() const;
    SoNodeKitListPart* list() const;
    SoField* flaggedField() const;
    bool change(std::optional<bool>& left, const std::optional<bool>& entered,
                const std::function<bool()>& edit);
    bool remove(const SoNode* node);
    bool insert(SoNode* node);
    bool removeEntry(const SoNode* node);
    bool restorePartIndex(SoNode* node);
    int valuesBefore() const;

    Kind m_kind;
    KeptNode m_container;
    int m_index;
    int m_partIndex = -1; ///< of a part that was removed, among the children of the group above
    SbName m_name;
    bool m_isRoot = false;
    bool m_isInternal = false;         ///< the list is the container's own business
    std::optional<bool> m_defaultWith; ///< the field's default flag with the node in it
    std::optional<bool> m_defaultWithout;
    KeptNode m_group; ///< made by a list part for its first entry; held while it is out
    bool m_madeGroup = false;
    bool m_groupWasDefault = true;
};

} // namespace mirabo
