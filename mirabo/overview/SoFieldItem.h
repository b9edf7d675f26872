#pragma once

#ifndef Q_MOC_RUN // moc of Qt 5 stumbles over the standard's concepts
#include "mirabo/extender/private/GraphFollower.h"
#endif
#include "mirabo/extender/MrbFieldPresentation.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>

#include <QTreeWidgetItem>

#include <atomic>
#include <memory>

class SoField;
class SoMiraboList;

/// One row of a field list: one field of one node, with its present value.
///
/// Value text and icons are made in data(), so a row out of sight costs nothing. While its list is
/// in view the row is told when its text has gone stale; while the list is hidden nobody tells it,
/// and texts are made whenever they are asked for. While another thread edits the graph it says
/// what it said last.
///
/// Holds no reference. When the node or the field dies the row keeps its last texts, greyed, and
/// says "(deleted)". Rows are made while the graph may be looked at (GraphReading) and the node is
/// held.
class SoFieldItem final : public QTreeWidgetItem {
public:
    /// A look at a row's node and field, both null when they are dead or another thread edits. They
    /// live as long as this does.
    class Look {
    public:
        explicit Look(const SoFieldItem& row);
        SoNode* node() const { return m_held ? m_node : nullptr; }
        SoField* field() const { return m_held ? m_field : nullptr; }
        /// False while another thread edits.
        bool isPossible() const { return static_cast<bool>(m_graph); }

    private:
        mirabo::GraphReading m_graph; // first: what is held goes under it
        SoRef<const SoRefCounter> m_held;
        SoNode* m_node = nullptr;
        SoField* m_field = nullptr;
    };

    /// Shows field `index` of the node's field data. `twin` is a node of the same type with all
    /// fields at their defaults, or null; `part` marks a public part of a node kit. The list still
    /// has to take the row in.
    SoFieldItem(SoMiraboList* list, SoNode* node, SoNode* twin, int index, bool part);
    /// A row for the same field in another list.
    SoFieldItem(SoMiraboList* list, const SoFieldItem& other);
    ~SoFieldItem() override;

    /// Null once the node has died.
    SoNode* getNode() const { return m_node; }
    /// Null once the field has died. To be looked at by a Look only.
    SoField* getField() const { return m_field; }
    /// The field with its default value, for comparison; may be null.
    const SoField* getDefaultField() const { return m_defaultField; }
    bool isPart() const { return m_part; }
    /// Returns the last value once the field has died.
    bool isFieldDefault() const;
    /// Parts of the row that a repaint has to cover.
    enum Change { None = 0, Value = 1, Flags = 2 };
    /// Returns what differs from the last call; reads the value if it has gone stale.
    int takeChange();

    /// The value changed: its text is made anew when next asked for.
    void invalidate() { m_stale = true; }
    /// Makes value text, icons and the enabled state now.
    void updateValue();
    /// Greys the row once its value cannot be edited in place. A grey row stays so.
    void updateEnabled();
    /// Takes over the node's present name.
    void updateNodeName();
    /// Whether the row is told of changes.
    void setLive(bool on);
    /// Inside the death of the field, in any thread: forgets it, keeping what it says now if it is
    /// whole still.
    void forgetField(bool isWhole);
    /// The field has died and the row does not say so yet.
    bool isDeathNews() const { return m_isDead && !m_showsDeath; }
    /// Greys the row; returns the field, for comparison only.
    const SoField* showDeath();
    /// The list no longer looks after this row, which goes on saying what it says now.
    void leaveList();

    /// The value for the clipboard.
    QString copiedValue() const;

    QVariant data(int column, int role) const override;
    bool operator<(const QTreeWidgetItem& other) const override;

private:
    /// State of the field that a row shows beside its texts.
    struct Shown {
        QString value;
        bool isImage = false;
        bool isDefault = true;
        bool isIgnored = false;
        bool isConnected = false;
    };

    void startWatching();
    void follow(SoField* field);
    void refresh() const;
    void readFlags() const;
    static Shown shownOf(const SoField& field);
    QVariant valueData(int role) const;
    QString valueToolTip() const;
    QString placeText() const;
    MrbSortKey sortKey(int column) const;
    /// Whether the row has the icon of column Ignored or Connected.
    bool hasFlag(int column) const;

    SoMiraboList* m_list;          // Not owned; the one that the row belongs to.
    std::atomic<SoNode*> m_node;   // Not owned; null once it died.
    std::atomic<SoField*> m_field; // Not owned; the node owns it.
    SoRef<SoNode> m_twin;
    const SoField* m_defaultField; // Not owned; the twin owns it.
    const bool m_part;
    bool m_isLive = false;
    mutable bool m_stale = true;
    mutable Shown m_shown;            ///< as read last
    Shown m_painted;                  ///< as told by takeChange() last
    std::unique_ptr<Shown> m_atDeath; ///< set before m_isDead
    const SoField* m_deadField = nullptr;
    std::atomic<bool> m_isDead{false};
    bool m_showsDeath = false;
    /// While live; always of a field that may go before its node: one that a file or a script gave
    /// to the node. The last member: it goes before what it writes.
    mirabo::GraphFollower m_follower;
};
