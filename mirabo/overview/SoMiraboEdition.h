#pragma once

#include <QIcon>
#include <QObject>

#include <functional>

class QDockWidget;
class QTreeWidgetItem;
class SoField;
class SoFieldWatch;
class SoNode;
class SoTabNodeOverview;
class SoType;

/// Controller of the node overview tabs and the field watch: puts nodes into tabs and tells which
/// field is selected.
class SoMiraboEdition final : public QObject {
    Q_OBJECT

public:
    /// Creates both panels in their docks, which the main window owns.
    SoMiraboEdition(QDockWidget* overviewDock, QDockWidget* watchDock);
    ~SoMiraboEdition() override;

    /// Shows a node in the current tab, or in a new one. `kit` may hold it as a part, or is null.
    /// Shows the docks. Nothing for a null node.
    void showNode(SoNode* node, SoNode* kit, bool newTab);
    /// Node of the current tab, or null.
    SoNode* getNode() const;
    void clear();

    SoTabNodeOverview* getTabs() const { return m_tabs; }
    SoFieldWatch* getWatch() const { return m_watch; }

    /// Gives the icon of a node type for the tabs.
    void setIconProvider(std::function<QIcon(SoType)> provider) { m_icons = std::move(provider); }

Q_SIGNALS:
    /// Null when no field is selected any more.
    void fieldSelected(SoField* field);
    void clearFieldEditorEvent();
    void overrideRequested(bool on);
    void nodeRenamed(SoNode* node);

public Q_SLOTS:
    void setField(QTreeWidgetItem* current, QTreeWidgetItem* previousField);
    /// Adds the current row of the current tab to the watch.
    void addFieldWatch();

private:
    void showInCurrentTab(SoNode* node, SoNode* kit);

    QDockWidget* m_overviewDock; // Not owned; the main window's.
    QDockWidget* m_watchDock;    // Not owned; the main window's.
    SoTabNodeOverview* m_tabs;   // Not owned; its dock's.
    SoFieldWatch* m_watch;       // Not owned; its dock's.
    std::function<QIcon(SoType)> m_icons;
};
