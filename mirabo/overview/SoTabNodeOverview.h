#pragma once

#include <QTabWidget>

#include <functional>

class QTreeWidgetItem;
class SoField;
class SoNode;
class SoNodeOverview;

/// Node overviews as tabs. The first tab always exists and is never closed last.
class SoTabNodeOverview final : public QTabWidget {
    Q_OBJECT

public:
    /// Says where a node stands in the scene, for people.
    using PlaceProvider = std::function<QString(const SoNode*)>;

    explicit SoTabNodeOverview(QWidget* parent = nullptr);

    /// Adds an empty overview and makes it current.
    SoNodeOverview* addOverview();
    SoNodeOverview* overview(int index) const;
    SoNodeOverview* currentOverview() const;
    /// Index of the first tab that shows the node, or -1.
    int indexOfNode(const SoNode* node) const;
    /// Names the tab after what its overview shows.
    void showTabTitle(int index, const QIcon& icon);
    /// Removes every tab but the first and clears that.
    void reset();
    /// Current row of the current tab's list, or null.
    QTreeWidgetItem* currentListItem() const;
    /// Tells every tab that a node was renamed.
    void nodeRenamed(SoNode* node);
    /// For the tool tips of tabs and rows.
    void setPlaceProvider(const PlaceProvider& provider);

Q_SIGNALS:
    /// The current tab shows no field that could be edited.
    void clearFieldEditorEvent();
    void closeNodeOverview(int index);
    void currentRowChanged(QTreeWidgetItem* current, QTreeWidgetItem* previous);
    /// The field of some tab's row is dying; see SoMiraboList.
    void fieldDied(const SoField* field);
    void overrideRequested(bool on);
    void watchRequested();
    void ignoreRequested();
    /// Why something could not be done, for the status bar.
    void message(const QString& text);
    void renamed(SoNode* node);

public Q_SLOTS:
    /// Removes a tab (-1: the current one) while there is more than one.
    void tabClose(int index);
    void tabNodeOverviewChanged(int index);
    /// Gives the column the same width in every tab, and stores it.
    void overviewColumnListChanged(int column, int width);
    /// Shows or hides the parts of node kits in every tab, and stores the choice.
    void setShowCatalogParts(bool on);
    void initPreferences();
    void setPreferences();

private:
    void addCloseButton(SoNodeOverview* added);
    void connectOverview(SoNodeOverview* added);
    void applyPreferences(SoNodeOverview* overview);
    void showDeath(SoNodeOverview* page);
    void showPlace(int index);
    bool eventFilter(QObject* watched, QEvent* event) override;

    PlaceProvider m_place;
    bool m_applyingWidth = false;
};
