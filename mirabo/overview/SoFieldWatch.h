#pragma once

#include "mirabo/overview/SoMiraboList.h"

/// Fields picked from any nodes, kept in view while the user moves through the scene.
class SoFieldWatch final : public SoMiraboList {
    Q_OBJECT

public:
    explicit SoFieldWatch(QWidget* parent = nullptr);

    /// Adds a copy of a row; null when its field is watched already or cannot be.
    SoFieldItem* addField(const SoFieldItem& row);

Q_SIGNALS:
    void listCleared();
    void rowChosen(QTreeWidgetItem* row);
    void revealRequested(QTreeWidgetItem* row);

public Q_SLOTS:
    void fieldSelectionChanged();
    void deleteCurrent();
    void initPreferences();
    void setPreferences();
    void saveColumnWidths();

protected:
    void keyReleaseEvent(QKeyEvent* event) override;
};
