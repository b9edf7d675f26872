#pragma once

#ifndef Q_MOC_RUN // moc of Qt 5 stumbles over the standard's concepts
#include "mirabo/extender/private/GraphFollower.h"
#endif

#include <QIcon>
#include <QObject>
#include <QPointer>

#include <atomic>
#include <functional>

class MrbCommand;
class QDockWidget;
class QTreeWidget;
class QTreeWidgetItem;
class SoCommandManager;
class SoField;
class SoFieldWatch;
class SoNode;
class SoTabNodeOverview;
class SoType;

/// Controller of the node overview tabs and the field watch: puts nodes into tabs, tells which
/// field is selected, and makes the commands that the panels ask for.
class SoMiraboEdition final : public QObject {
    Q_OBJECT

public:
    /// Says where a node stands in the scene, for people.
    using PlaceProvider = std::function<QString(const SoNode*)>;

    /// Creates both panels in their docks, which the main window owns.
    SoMiraboEdition(QDockWidget* overviewDock, QDockWidget* watchDock);
    ~SoMiraboEdition() override;

    /// Shows a node in the current tab, or in a new one. `kit` may hold it as a part, or is null.
    /// Shows the docks. Nothing for a null node. While another thread edits, as soon as that is
    /// over.
    void showNode(SoNode* node, SoNode* kit, bool newTab);
    /// Brings up the tab that shows the node already; without one, shows it in the current tab.
    void bringUp(SoNode* node);
    /// Node of the current tab, or null.
    SoNode* getNode() const;
    /// The field told last by fieldSelected(), or null; never one that has died.
    SoField* getSelectedField() const { return m_selectedField; }
    void clear();
    /// Takes over what the rows do not follow by themselves: names, and values that changed while
    /// nobody was told.
    void refresh();

    /// Null once their docks have died.
    SoTabNodeOverview* getTabs() const;
    SoFieldWatch* getWatch() const;

    /// Gives the icon of a node type for the tabs.
    void setIconProvider(std::function<QIcon(SoType)> provider) { m_icons = std::move(provider); }
    /// For tool tips, and the labels of watched nodes without a name.
    void setPlaceProvider(const PlaceProvider& provider);

    /// Makes "&Delete" act on the watch whenever that has the focus; see SoFieldWatchState.
    void createFieldWatchState(SoCommandManager* hub);
    /// The user works in the watch.
    void enterFieldWatchState();

    /// A new command for the node of the current tab; null when it shows none.
    MrbCommand* makeOverrideCommand(bool on) const;
    /// A new command that switches the selected field's ignored flag; null when there is no field.
    MrbCommand* makeIgnoreCommand() const;

Q_SIGNALS:
    /// Null when no field is selected any more.
    void fieldSelected(SoField* field);
    /// The same, when the user selected the field, or its tab: not with a newly shown node.
    void fieldPicked(SoField* field);
    void clearFieldEditorEvent();
    void overrideRequested(bool on);
    /// The selected field's ignored flag is to be switched.
    void ignoreRequested();
    void nodeRenamed(SoNode* node);
    /// Why something could not be done, for the status bar.
    void message(const QString& text);

public Q_SLOTS:
    void setField(QTreeWidgetItem* current, QTreeWidgetItem* previousField);
    /// Adds the current row of the current tab to the watch.
    void addFieldWatch();
    /// Reads styles and the choice of parts from the preferences again.
    void setPreferences();

private:
    void connectTabs();
    void showWhole(SoNode* node, SoNode* kit, bool newTab);
    void chooseFirstRow();
    void watchRowChosen(QTreeWidgetItem* row);
    void pickField(QTreeWidgetItem* row, bool inWatch);
    void pickLater(QTreeWidget* list, bool inWatch);
    void followField(SoField* field);
    void deselectField();
    void forgetField(const SoField* field);

    QPointer<QDockWidget> m_overviewDock; // Not owned; the main window's.
    QPointer<QDockWidget> m_watchDock;    // Not owned; the main window's.
    QPointer<SoTabNodeOverview> m_tabs;   // Not owned; its dock's.
    QPointer<SoFieldWatch> m_watch;       // Not owned; its dock's.
    bool m_selectedInWatch = false;
    bool m_filling = false; ///< rows go and come: what is current is told at the end
    bool m_showing = false; ///< a node is being shown: nobody picked its field
    std::function<QIcon(SoType)> m_icons;
    std::atomic<SoField*> m_selectedField = nullptr; // Not owned; forgotten when it dies.
    mirabo::GraphFollower m_selectedFollower{this};  // last: it goes before what it writes
};
