#pragma once

#include "mirabo/overview/SoMiraboList.h"

#include <vector>

class SoMiraboState;

/// Fields picked from any nodes, kept in view while the user moves through the scene.
///
/// A row shows its node's name, or, without one, where the node stands.
class SoFieldWatch final : public SoMiraboList {
    Q_OBJECT

public:
    explicit SoFieldWatch(QWidget* parent = nullptr);
    ~SoFieldWatch() override;

    /// Adds a copy of a row; null when its field is watched already or cannot be.
    SoFieldItem* addField(const SoFieldItem& row);
    /// Adds a row for a node's field. Null as above, or while another thread edits.
    SoFieldItem* addField(SoNode* node, const QString& fieldName);
    void updateNodeName(const SoNode* node) override;
    /// The same for all rows.
    void updateNodeNames();
    /// Sets the meaning of the main window's actions while the watch has the focus, which also
    /// shows its context menu from now on; without one it offers its own. Not owned; it must live
    /// as long as the watch. Registers the state.
    void setFieldWatchState(SoMiraboState* state);

Q_SIGNALS:
    /// The last row went, one by one or with all others.
    void listCleared();
    /// Null when no row is current any more.
    void rowChosen(QTreeWidgetItem* row);
    /// A row was double clicked: its node is wanted in tree and overview.
    void revealRequested(QTreeWidgetItem* row);

public Q_SLOTS:
    void fieldSelectionChanged();
    void deleteCurrent();
    void showContextMenu(const QPoint& position);
    void initPreferences();
    void setPreferences();
    void saveColumnWidths();

protected:
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    void applyStoredWidths();
    /// Of all columns as the settings keep them.
    std::vector<int> storedWidths() const;
    void labelRow(SoFieldItem* row);
    void countRows();

    SoMiraboState* m_state = nullptr; // Not owned; our child.
    std::vector<int> m_widths;        ///< as they were read or written last
    bool m_hadRows = false;
};
