#pragma once

#include "mirabo/overview/SoMiraboList.h"

class QContextMenuEvent;

/// Fields picked from any nodes, kept in view while the user moves through the scene.
///
/// A row shows its node's name, or, without one, where the node stands.
class SoFieldWatch final : public SoMiraboList {
    Q_OBJECT

public:
    /// Builds and shows a context menu; the event's position is the list's own.
    using ContextMenuHandler = std::function<void(QContextMenuEvent*)>;

    explicit SoFieldWatch(QWidget* parent = nullptr);
    ~SoFieldWatch() override;

    /// Adds a copy of a row; null when its field is watched already or cannot be.
    SoFieldItem* addField(const SoFieldItem& row);
    void updateNodeName(const SoNode* node) override;
    /// The same for all rows.
    void updateNodeNames();
    /// Who shows the context menu from now on; without one the watch offers its own.
    void setContextMenuHandler(ContextMenuHandler handler) { m_menuHandler = std::move(handler); }

Q_SIGNALS:
    /// The last row went, one by one or with all others.
    void listCleared();
    void rowChosen(QTreeWidgetItem* row);
    /// A row was double clicked: its node is wanted in tree and overview.
    void revealRequested(QTreeWidgetItem* row);
    /// The keyboard focus came here.
    void focused();

public Q_SLOTS:
    void fieldSelectionChanged();
    void deleteCurrent();
    void showContextMenu(const QPoint& position);
    void initPreferences();
    void setPreferences();
    void saveColumnWidths();

protected:
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    void applyStoredWidths();
    void labelRow(SoFieldItem* row);
    void countRows();

    ContextMenuHandler m_menuHandler;
    bool m_hadRows = false;
};
