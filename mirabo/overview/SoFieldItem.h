#pragma once

#include <kalmyr/sensors/SoFieldSensor.h>

#include <QTreeWidgetItem>

class SoField;
class SoMiraboList;
class SoNode;

/// One row of a field list: one field of one node, with its present value.
///
/// A field sensor tells the row of changes; the value text is made when the row is painted, so a
/// row out of sight costs nothing. A row whose field dies keeps its last texts, greyed, and says
/// "(deleted)".
class SoFieldItem final : public QTreeWidgetItem {
public:
    /// Shows field `index` of the node's field data. `twin` is a node of the same type with all
    /// fields at their defaults, or null; `part` marks a public part of a node kit.
    SoFieldItem(SoMiraboList* list, SoNode* node, const SoNode* twin, int index, bool part);
    /// A row for the same field in another list.
    SoFieldItem(SoMiraboList* list, const SoFieldItem& other);
    ~SoFieldItem() override;

    SoNode* getNode() const { return m_node; }
    /// Null once the field has died.
    SoField* getField() const { return m_field; }
    /// The field with its default value, for comparison; may be null.
    const SoField* getDefaultField() const { return m_defaultField; }
    bool isPart() const { return m_part; }
    bool isFieldDefault() const;

    /// The value changed: texts and icons are made anew when next asked for.
    void invalidate() { m_stale = true; }
    /// Makes value text, icons and the enabled state now.
    void updateValue();
    /// Takes over the node's present name.
    void updateNodeName();

    QVariant data(int column, int role) const override;

private:
    void watch();
    static void fieldChanged(void* data, SoSensor* sensor);
    static void fieldDied(void* data, SoSensor* sensor);
    SoMiraboList* list() const;

    SoNode* m_node;                ///< Not owned; null once its field died.
    SoField* m_field;              ///< Not owned; the node owns it.
    const SoField* m_defaultField; ///< Not owned; the list's twin node owns it.
    SoFieldSensor m_sensor;
    bool m_part;
    bool m_stale = true;
};
