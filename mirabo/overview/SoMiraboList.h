#pragma once

#ifndef Q_MOC_RUN // moc of Qt 5 stumbles over the standard's concepts
#include "mirabo/extender/private/GraphFollower.h"
#endif
#include "mirabo/core/RowKeeper.h"
#include "mirabo/preferences/TextStyle.h"

#include <kalmyr/base/SoRef.h>

#include <QColor>
#include <QFont>
#include <QRegion>
#include <QTreeWidget>

#include <array>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

class QAction;
class QMenu;

namespace mirabo {
class RowEditor;
}
class SoField;
class SoFieldItem;
class SoNode;

/// Table of fields, one row a field: node, field, value, and whether it is ignored or connected.
/// Base of the node overview's list and of the field watch.
///
/// Values follow the scene, whichever thread edits it. However many changes come in one pass of the
/// event loop, they cost one look at the rows in view and one repaint of the changed cells, and at
/// most sixty a second. Values that changed while nobody was told are shown with the next change of
/// their node. A hidden list follows no values; it only hears when its nodes die.
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
    /// Says where a node stands in the scene, for people.
    using PlaceProvider = std::function<QString(const SoNode*)>;

    explicit SoMiraboList(QWidget* parent = nullptr);
    ~SoMiraboList() override;

    /// True when one of the preferences KMRU_LAUNCH_MIRABO and ART_LAUNCH_MIRABO is. Read afresh.
    static bool isNetNameMode();

    /// Shows the fields of a node; null empties the list. Shows nothing while another thread edits:
    /// who calls holds a GraphReading.
    void setNode(SoNode* node);
    /// Makes value, icons and enabled state of a row anew.
    void updateFieldValue(SoFieldItem* item);
    /// Updates the first row of `field`; every row for null.
    void updateField(SoField* field);
    /// Takes over the node's present name in its rows.
    virtual void updateNodeName(const SoNode* node);
    SoFieldItem* findFieldItem(const SoField* field) const;
    /// First row that is not disabled, or null.
    SoFieldItem* firstEnabledItem() const;
    /// Takes a row out; the caller deletes it. Nothing for a row of another list.
    void removeFieldItem(QTreeWidgetItem* item);
    SoFieldItem* fieldItem(int row) const;
    SoFieldItem* currentFieldItem() const;
    /// Makes a row current and selects it, a disabled one too.
    void chooseRow(QTreeWidgetItem* item);

    void setShowCatalogParts(bool on);
    bool isShowingCatalogParts() const { return m_showCatalogParts; }
    bool isShowingChangedOnly() const { return m_showChangedOnly; }

    /// Every width of this list is set here; tells when it really changed.
    virtual void setColumnWidth(int column, int width);
    /// Takes over the widths of another list.
    void copyWidths(const SoMiraboList& other);
    /// The width to store for a column: -1 while it follows the width of the list.
    int storedWidth(int column) const;

    /// Styles of default and changed values, painted in the value column.
    void setStyles(const mirabo::StyleTable& styles);
    const QFont& valueFont(bool changed) const { return changed ? m_changedFont : m_defaultFont; }
    QColor valueColor(bool changed) const { return changed ? m_changedColor : m_defaultColor; }
    int rowHeight() const { return m_rowHeight; }

    /// Grey line shown while the list is empty.
    void setEmptyHint(const QString& hint) { m_emptyHint = hint; }
    void setPlaceProvider(PlaceProvider provider) { m_place = std::move(provider); }
    /// Where a node stands, or the empty text when nobody knows.
    QString placeOf(const SoNode* node) const { return m_place ? m_place(node) : QString(); }
    /// Whether a row tells the place of its node for lack of a name, or its death: what it says
    /// last counts.
    bool showsPlace(int row) const;

    /// \name For the rows
    /// @{
    /// True while the list is on the screen: rows follow their fields.
    bool isInView() const { return m_inView; }
    /// A row came: it is told when its node dies.
    void lookAfter(SoFieldItem* item);
    void forgetRow(SoFieldItem* item);
    /// Keeps the node of some row alive; null when it is dead or dying. See GraphFollower.
    SoRef<const SoRefCounter> hold(const SoNode* node) const;
    /// Something changed that the rows show; called in any thread.
    void noteChange();
    /// Rows that died in the meantime say so.
    void takeDeaths();
    /// Whether the repaint under way covers part of a cell; true outside of one.
    bool isPainting(const QRect& cell) const;
    /// A row's value changed: repaints once, after the pass and 16 ms after the repaint before.
    void rowChanged(SoFieldItem* item);
    /// @}

public Q_SLOTS:
    /// Hides the rows whose field has its default value, or shows them again.
    void showChangedValues(bool on);
    void headerRightClicked(const QPoint& position);
    /// Shows or hides the column that the action's text names.
    void toggleHeaderColumnVisibility(QAction* toggledAction);
    /// Puts the current row's value on the clipboard.
    void copyCurrentValue();
    /// Sets the current row's value from the clipboard; values of other types are refused.
    void pasteToCurrent();
    /// Edits the current row's value in its cell.
    void editCurrent();
    /// Puts the default value of the current row's field back.
    void resetCurrent();

Q_SIGNALS:
    void columnWidthChanged(int column, int newWidth);
    /// Another row is current. Receivers may let rows go, this one as well.
    void currentRowChanged(QTreeWidgetItem* row, QTreeWidgetItem* previous);
    /// The row that is current already was clicked, or the keyboard came to it.
    void rowPicked(QTreeWidgetItem* row);
    /// The keyboard focus came here.
    void focused();
    /// Why something could not be done, for the status bar.
    void message(const QString& text);
    /// The field of a row is dying, inside the change that kills its node. The pointer is good for
    /// comparison only.
    void fieldDied(const SoField* field);

protected:
    /// A row for field `index` of the node's field data, in no list yet; null when that is not
    /// listed. The caller holds a GraphReading.
    SoFieldItem* makeRow(SoNode* node, int index);
    /// To be open while somebody is told of the current row.
    mirabo::RowKeeper& keeper() { return m_keeper; }
    /// An entry for every column, which opens and closes it.
    void addColumnActions(QMenu* menu);
    void restoreColumnWidths(const QString& group);
    /// Gives a closed column its natural width.
    void openColumn(int column);

    bool event(QEvent* event) override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QList<QTreeWidgetItem*> items) const override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;

    mirabo::RowEditor& rowEditor() { return *m_rowEditor; }

private:
    struct NodeRows {
        explicit NodeRows(QObject* list) : follower(list) {}
        std::mutex mutex;               ///< for the rows; the node may die in another thread
        std::vector<SoFieldItem*> rows; // Not owned; the list's.
        mirabo::GraphFollower follower;
    };

    /// The room of the columns that nobody gave a width, and what they would take.
    struct Fit {
        int room;
        int labels;
        int natural;
    };

    void clearRows();
    SoFieldItem* takeRow(int row);
    void setUpColumns();
    void applyNaturalWidths();
    /// Columns that nobody gave a width shrink with the list; the value takes what is left over.
    void fillWidth();
    bool isFlexible(int column) const;
    /// The width in which the header's label of a column is read, in pixels.
    int labelWidth(int column) const;
    Fit measure() const;
    int fittingWidth(int column, const Fit& fit) const;
    void widthChosen(int column, int width);
    SoNode* twinOf(const SoNode* node);
    QList<QTreeWidgetItem*> makeRows(SoNode* node);
    void setInView(bool on);
    void followFields();
    void takeChanges();
    bool isWanted(const SoFieldItem* item) const;
    void repaintLater();
    void repaintRows();
    bool moveByKey(int key);

    mirabo::RowKeeper m_keeper;
    mirabo::RowEditor* m_rowEditor; // Owned as a child.
    QColor m_defaultColor;
    QColor m_changedColor;
    QFont m_defaultFont;
    QFont m_changedFont;
    int m_rowHeight = 0; ///< in pixels
    bool m_showCatalogParts = true;
    bool m_showChangedOnly = false;
    /// Default-valued twins by type, kept as long as the list.
    std::map<int, SoRef<SoNode>> m_referenceNodes;
    std::unordered_map<const SoNode*, std::unique_ptr<NodeRows>> m_nodes;
    QString m_emptyHint;
    PlaceProvider m_place;
    QRegion m_painted; ///< what the repaint under way covers
    bool m_repaintPending = false;
    double m_lastRepaint = 0; ///< in seconds
    std::atomic<bool> m_inView{false};
    std::atomic<bool> m_changeNoted{false}; ///< and its pass is to come
    bool m_filling = false;
    bool m_typeGaveWay = false; ///< the list is too narrow for the column of types
    std::array<int, NodeNetName + 1> m_natural{};
    std::array<bool, NodeNetName + 1> m_chosen{}; ///< somebody gave the column its width
};
