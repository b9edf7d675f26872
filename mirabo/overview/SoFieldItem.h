#pragma once

#include "mirabo/overview/DeathGuard.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/sensors/SoFieldSensor.h>

#include <QTreeWidgetItem>

#include <memory>

class SoField;
class SoMiraboList;

/// One row of a field list: one field of one node, with its present value.
///
/// Value text and icons are made in data(), so a row out of sight costs nothing. While its list is
/// in view a field sensor tells the row when its text has gone stale; while the list is hidden
/// there is no sensor and texts are made whenever they are asked for.
///
/// Holds no reference. When the node or the field dies the row keeps its last texts, greyed, and
/// says "(deleted)".
class SoFieldItem final : public QTreeWidgetItem {
public:
    /// Shows field `index` of the node's field data. `twin` is a node of the same type with all
    /// fields at their defaults, or null; `part` marks a public part of a node kit. The list still
    /// has to take the row in.
    SoFieldItem(SoMiraboList* list, SoNode* node, SoNode* twin, int index, bool part);
    /// A row for the same field in another list.
    SoFieldItem(SoMiraboList* list, const SoFieldItem& other);
    ~SoFieldItem() override;

    /// Null once the node has died.
    SoNode* getNode() const { return m_node; }
    /// Null once the field has died.
    SoField* getField() const { return m_field; }
    /// The field with its default value, for comparison; may be null.
    const SoField* getDefaultField() const { return m_defaultField; }
    bool isPart() const { return m_part; }
    /// What the field said last once it has died.
    bool isFieldDefault() const;
    bool isStale() const { return m_stale; }
    /// Whether an icon came or went since the last call.
    bool takeFlagChange();

    /// The value changed: its text is made anew when next asked for.
    void invalidate() { m_stale = true; }
    /// Makes value text, icons and the enabled state now.
    void updateValue();
    /// Greys the row once its value cannot be edited in place. A grey row stays so.
    void updateEnabled();
    /// Takes over the node's present name.
    void updateNodeName();
    /// Whether a sensor follows the field.
    void setLive(bool on);
    /// The field is about to die, or has died already: keeps what was shown.
    void fieldGone(bool stillWhole);
    /// The list no longer looks after this row.
    void leaveList() { m_list = nullptr; }

    /// The value for the clipboard.
    QString copiedValue() const;

    QVariant data(int column, int role) const override;
    bool operator<(const QTreeWidgetItem& other) const override;

private:
    void startWatching();
    void guardField();
    void letGo();
    void fieldDied();
    void refreshText() const;
    QVariant valueData(int role) const;
    QString placeText() const;
    /// Whether the row has the icon of column Ignored or Connected.
    bool hasFlag(int column) const;
    static void fieldChanged(void* data, SoSensor* sensor);

    SoMiraboList* m_list; // Not owned; the one that the row belongs to.
    SoNode* m_node;       // Not owned; null once it died.
    SoField* m_field;     // Not owned; the node owns it.
    SoRef<SoNode> m_twin;
    const SoField* m_defaultField; // Not owned; the twin owns it.
    SoFieldSensor m_sensor;
    /// Of a field that may go before its node: one that a file or a script gave to the node.
    std::unique_ptr<mirabo::DeathGuard<SoField>> m_guard;
    bool m_part;
    bool m_wasDefault = true;
    bool m_wasIgnored = false;
    bool m_wasConnected = false;
    mutable bool m_stale = true;
    mutable bool m_isImage = false;
    mutable QString m_value;
};
