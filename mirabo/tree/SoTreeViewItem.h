#pragma once

#include <kalmyr/base/SbName.h>
#include <kalmyr/core/SoType.h>

#include <QMetaType>
#include <QTreeWidgetItem>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

class SoBaseKit;
class SoField;
class SoNode;

namespace mirabo {
class HiddenRows;
class NodeIndex;
class RowKeeper;
struct TextStyle;
struct TreeContext;
} // namespace mirabo

/// Role of an item in the node kit that it was reached through.
struct PartInfo {
    enum Kind : std::int32_t { NotAPart = 0, Part = 1, TopSeparator = 2 };

    SoBaseKit* kit = nullptr; ///< Not owned; an ancestor in the tree. Null once it died.
    SbName partName;          ///< empty when the kit does not know the node
    Kind partKind = NotAPart;
    std::int32_t partNumber = -1; ///< in the kit's catalogue; -1 also for parts of parts
    std::uint32_t asOf = 0;       ///< change of the tree after which it was looked up; 0: never
    bool isNamedPart() const { return !partName.isEmpty(); }
};

/// One row of the scene tree: one occurrence of a node at one place of the graph.
///
/// Texts, icons, colours and fonts are made from the node whenever they are asked for; nothing is
/// copied but its type. The node is not kept alive: the tree drops the row inside the change that
/// takes the node away. A node that dies otherwise leaves a dead row, which says so until the rows
/// are compared with the graph again. What a row is asked for may be less than there is while
/// another thread edits the graph; it never touches a node that died.
/// A row is entered in its tree's index from creation to the death of the node or its own, except
/// while it is removed by hand.
class SoTreeViewItem : public QTreeWidgetItem {
public:
    enum Column { Type = 0, Name = 1, ReferenceCount = 2, ReferenceMark = 3, Bookmark = 4 };
    static constexpr int kColumnCount = 5;
    static constexpr int kKind = 1001;

    /// A row that is not in the tree yet, for a node to be put below `parent` (null: top level).
    /// `source` is the field through which it is reached, or null for a child.
    SoTreeViewItem(SoNode* node, SoField* source, const SoTreeViewItem* parent,
                   mirabo::TreeContext& context);
    ~SoTreeViewItem() override;

    /// Rows have memory of their own: there are millions of them.
    static void* operator new(std::size_t size);
    static void operator delete(void* row);

    /// For rows that outlive their place in the tree: as after the death of their nodes, and
    /// nobody remembers them.
    void leaveTree();
    mirabo::RowKeeper* keeper() const;

    /// The n-th one that the filter shows; null past the end.
    virtual SoTreeViewItem* childItem(int n) const
    {
        return static_cast<SoTreeViewItem*>(child(n));
    }
    /// Takes a row with everything below it out of the tree and of its index; the caller owns it.
    virtual void removeChildItem(SoTreeViewItem* item);
    /// Puts a row that was removed behind the others, and back into the index.
    virtual void addChildItem(SoTreeViewItem* item);
    virtual int kind() const { return kKind; }
    /// Null once the node has died.
    virtual SoNode* getNode() const { return m_dead ? nullptr : m_node; }
    virtual SoNode* getParentNode() const;
    virtual bool isPart() const { return m_partInfo != nullptr; }
    /// The name that the kit has for the node now: entries of lists change theirs.
    virtual bool isNamedPart() const { return partInfo().isNamedPart(); }
    virtual int getPartNumber() const { return partInfo().partNumber; }
    /// Name of the part that it hangs below; empty for what is no part.
    virtual SbName getPartParentName() const;
    virtual SbName getPartName() const { return partInfo().partName; }
    virtual bool isPublicPart() const;
    /// The kit that the part belongs to, or null.
    virtual SoNode* getPartKit() const;
    /// Marks the row as one occurrence of a shared node, when it is one and `allowed`.
    virtual void updateReferenceMark(bool allowed);

    /// Of the node, also of one that died.
    SoType getNodeType() const { return m_type; }
    bool isDead() const { return m_dead; }
    /// Whether its type is grey: the node died, or is taken out of the graph.
    bool isGrey() const { return m_disabled || m_dead; }
    /// How the text of a column is painted; null: as the view has it.
    const mirabo::TextStyle* styleOf(int column) const;
    /// Whether the row was made for that node, which may be dead; only compared.
    bool wasMadeFor(const SoNode* node) const { return m_node == node; }
    /// For the tree: the node is being destroyed, and the index has dropped the row.
    void nodeDied();

    /// Null once the node that owns the field has died.
    SoField* getSourceField() const { return m_sourceField; }
    SoTreeViewItem* parentItem() const
    {
        return m_filteredOut ? parentOfHidden() : static_cast<SoTreeViewItem*>(parent());
    }
    PartInfo::Kind getPartKind() const { return partInfo().partKind; }

    /// Reached by a field, or below a row that is.
    bool isFromField() const { return m_fromField; }
    bool isDirectlyFromField() const { return m_directlyFromField; }
    /// The node was taken out of the graph; its row stays, grey and with nothing below it.
    bool isDisabledNode() const { return m_disabled; }
    /// A disabled row has no number among its siblings, an enabled one has.
    void setDisabledNode(bool on);
    /// Whether rows of disabled nodes stand directly below.
    bool hasDisabledChildren() const { return m_hasDisabledChildren; }
    void setHasDisabledChildren(bool on) { m_hasDisabledChildren = on; }
    bool isBookmarked() const { return m_bookmarked; }
    void setBookmarked(bool on);
    bool isFresh() const { return m_fresh; }
    void setFresh(bool on) { m_fresh = on; }
    /// An open branch that the view does not know of at the moment.
    void setPutAside(bool on) { m_putAside = on; }
    bool isShown() const { return m_shown; }
    void setShown(bool on);

    /// All rows directly below in the order of the graph, those that the filter hides included.
    /// Comparison with the graph and stored row numbers use these; Qt's children are the shown ones
    /// only.
    int rowCount() const { return m_hasHiddenRows ? countWithHidden() : childCount(); }
    /// Null past the end.
    SoTreeViewItem* rowAt(int row) const
    {
        return m_hasHiddenRows ? atWithHidden(row) : static_cast<SoTreeViewItem*>(child(row));
    }
    /// -1 for a row that is not directly below.
    int indexOfRow(const SoTreeViewItem* row) const;
    /// The rows must be in no tree.
    void insertRow(int at, QTreeWidgetItem* row);
    void insertRows(int at, const QList<QTreeWidgetItem*>& rows);
    /// The caller owns what is taken.
    SoTreeViewItem* takeRow(int at);
    QList<QTreeWidgetItem*> takeRows();

    /// The filter hides the row, and with it all that is below.
    bool isFilteredOut() const { return m_filteredOut; }
    /// It would hide the row, but somebody went to it.
    bool isRevealed() const { return m_revealed; }
    /// For the filter, while the row is in no tree or a top-level one.
    void setFilteredOut(bool on, bool revealed = false);
    bool hasHiddenRows() const { return m_hasHiddenRows; }
    /// False when the filter hides the row or one above it.
    bool isInSight() const;
    const mirabo::TreeContext& context() const { return *m_context; }

    bool hasReferenceMark() const { return m_referenceMark; }
    /// The name column carries an icon.
    bool hasNameIcon() const { return !icon(Name).isNull(); }

    /// Position among the shown siblings, -1 for a row that is not shown. Numbered when asked for.
    int childIndexValue() const;
    /// Position among all siblings, shown or not.
    int rowInParent() const;
    /// Rows below, from `row` of all on, came or went: they are numbered anew when somebody asks.
    void childrenChanged(int row = 0)
    {
        m_numbered = std::min(m_numbered, m_hasHiddenRows ? shownBefore(row) : row);
    }
    /// Where the row stood when somebody looked; a hint.
    int lastKnownRow() const { return m_row; }
    void setLastKnownRow(int row) { m_row = row; }

    /// How often the node is used: the toolkit's count or, for kits and VRML97 nodes unless the
    /// settings say otherwise, the parents and fields that hold it. -1 when it cannot be told now.
    int shownReferenceCount() const;

    QVariant data(int column, int role) const override;

private:
    friend class mirabo::NodeIndex;

    const PartInfo& partInfo() const;
    QVariant text(int column) const;
    QString name() const;
    QString referenceCount() const;
    bool mayReadNode() const;
    QVariant decoration(int column) const;
    QVariant foreground(int column) const;
    bool hasFieldNodeFont() const;
    void leave();
    void setIndexed(bool on);
    SoTreeViewItem* parentOfHidden() const;
    mirabo::HiddenRows& hiddenRows() const;
    mirabo::HiddenRows& makeHiddenRows();
    void dropHiddenRows();
    int countWithHidden() const;
    SoTreeViewItem* atWithHidden(int row) const;
    int shownBefore(int row) const;
    int numberAtTop() const;
    void numberIn(const SoTreeViewItem* above) const;
    bool isNumberedIn(const SoTreeViewItem* above) const;
    void numberChildrenUpTo(const SoTreeViewItem* item) const;

    mutable std::int32_t m_childIndex = 0; // First: fits into the room that the base leaves.
    SoNode* m_node;                        // Not owned; the graph's.
    SoField* m_sourceField;                // Not owned; the parent node's.
    mirabo::TreeContext* m_context;
    std::unique_ptr<PartInfo> m_partInfo; ///< only below a kit
    SoTreeViewItem* m_nextOccurrence = nullptr;
    SoTreeViewItem* m_previousOccurrence = nullptr;
    mutable std::int32_t m_row = 0;      ///< when it was numbered
    mutable std::int32_t m_numbered = 0; ///< so many rows below have the right numbers
    SoType m_type;
    bool m_dead : 1;
    bool m_fromField : 1;
    bool m_directlyFromField : 1;
    bool m_disabled : 1;
    bool m_hasDisabledChildren : 1;
    bool m_putAside : 1;
    bool m_bookmarked : 1;
    bool m_fresh : 1;
    bool m_shown : 1;
    bool m_referenceMark : 1;
    bool m_indexed : 1;
    bool m_filteredOut : 1;
    bool m_revealed : 1;
    bool m_hasHiddenRows : 1;
};

Q_DECLARE_METATYPE(SoTreeViewItem*)
