#pragma once

#include <kalmyr/base/SoRef.h>

#include <QColor>
#include <QFont>
#include <QTreeWidget>

#include <map>

#include "mirabo/preferences/TextStyle.h"

class QAction;
class SoField;
class SoFieldItem;
class SoNode;

/// Table of fields, one row a field: node, field, value, and whether it is ignored or connected.
/// Base of the node overview's list and of the field watch.
///
/// Values follow the scene by field sensors. However many changes come in one pass of the event
/// loop, they cost one repaint of the rows in view.
class SoMiraboList : public QTreeWidget {
    Q_OBJECT

public:
    enum Column {
        Hidden = 0,
        Ignored = 1,
        Connected = 2,
        NodeType = 3,
        NodeName = 4,
        FieldTypeColumn = 5,
        FieldName = 6,
        FieldValue = 7,
        NodeNetName = 8 ///< in the net-name mode only
    };

    explicit SoMiraboList(QWidget* parent = nullptr);
    ~SoMiraboList() override;

    /// True when one of the preferences KMRU_LAUNCH_MIRABO and ART_LAUNCH_MIRABO is. Read afresh.
    static bool isNetNameMode();

    /// Shows the fields of a node; null empties the list.
    void setNode(SoNode* node);
    /// Makes value, icons and enabled state of a row anew.
    void updateFieldValue(SoFieldItem* item);
    /// Updates the first row of `field`; every row for null.
    void updateField(SoField* field);
    SoFieldItem* findFieldItem(const SoField* field) const;
    /// First row that is not disabled, or null.
    SoFieldItem* firstEnabledItem() const;
    /// Takes a row out; the caller deletes it.
    void removeFieldItem(QTreeWidgetItem* item);
    SoFieldItem* fieldItem(int row) const;

    void setShowCatalogParts(bool on);
    bool isShowingCatalogParts() const { return m_showCatalogParts; }
    bool isShowingChangedOnly() const { return m_showChangedOnly; }

    /// Every width of this list is set here; tells when it really changed.
    virtual void setColumnWidth(int column, int width);

    /// Styles of default and changed values, painted in the value column.
    void setStyles(const mirabo::StyleTable& styles);
    const QFont& valueFont(bool changed) const { return changed ? m_changedFont : m_defaultFont; }
    QColor valueColor(bool changed) const { return changed ? m_changedColor : m_defaultColor; }

    /// Grey line shown while the list is empty.
    void setEmptyHint(const QString& hint) { m_emptyHint = hint; }

    /// A row's value changed: repaints once, at the end of the pass.
    void rowChanged(SoFieldItem* item);

public Q_SLOTS:
    /// Hides the rows whose field has its default value, or shows them again.
    void showChangedValues(bool on);
    void headerRightClicked(const QPoint& position);
    /// Shows or hides the column that the action's text names.
    void toggleHeaderColumnVisibility(QAction* toggledAction);

Q_SIGNALS:
    void columnWidthChanged(int column, int newWidth);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    SoNode* twinOf(const SoNode* node);
    void fill(SoNode* node);
    void repaintRows();

    QColor m_defaultColor;
    QColor m_changedColor;
    QFont m_defaultFont;
    QFont m_changedFont;
    bool m_showCatalogParts = true;
    bool m_showChangedOnly = false;
    /// Default-valued twins by type, kept as long as rows may compare with them.
    std::map<int, SoRef<SoNode>> m_referenceNodes;
    QString m_emptyHint;
    bool m_repaintPending = false;
};
