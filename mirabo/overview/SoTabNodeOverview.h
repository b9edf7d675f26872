#pragma once

#include <QTabWidget>

class QTreeWidgetItem;
class SoNode;
class SoNodeOverview;

/// Node overviews as tabs. The first tab always exists and is never closed last.
class SoTabNodeOverview final : public QTabWidget {
    Q_OBJECT

public:
    explicit SoTabNodeOverview(QWidget* parent = nullptr);

    /// Adds an empty overview and makes it current.
    SoNodeOverview* addOverview();
    SoNodeOverview* overview(int index) const;
    SoNodeOverview* currentOverview() const;
    /// Removes every tab but the first and clears that.
    void reset();
    /// Current row of the current tab's list, or null.
    QTreeWidgetItem* currentListItem() const;
    /// Tells every tab that a node was renamed.
    void nodeRenamed(SoNode* node);

Q_SIGNALS:
    /// The current tab shows no field that could be edited.
    void clearFieldEditorEvent();
    void closeNodeOverview(int index);
    void currentRowChanged(QTreeWidgetItem* current, QTreeWidgetItem* previous);
    void overrideRequested(bool on);
    void watchRequested();
    void renamed(SoNode* node);

public Q_SLOTS:
    /// Removes a tab (-1: the current one) while there is more than one.
    void tabClose(int index);
    void tabNodeOverviewChanged(int index);
    /// Gives the column the same width in every tab, and stores it.
    void overviewColumnListChanged(int column, int width);
    void initPreferences();
    void setPreferences();

private:
    void applyPreferences(SoNodeOverview* overview);
    bool eventFilter(QObject* watched, QEvent* event) override;

    bool m_applyingWidth = false;
};
