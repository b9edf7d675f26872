#pragma once

#include "mirabo/core/SoMiraboState.h"

#include <QPointer>

class QTreeWidgetItem;
class SoCommandManager;
class SoFieldWatch;

/// The user works in the field watch: "&Delete" takes its current row out.
class SoFieldWatchState final : public SoMiraboState {
    Q_OBJECT

public:
    static constexpr char kName[] = "FieldWatchState";

    /// The watch owns the state; the others must outlive it or be QObjects' children with it.
    SoFieldWatchState(SoFieldWatch* watch, SoCommandManager* hub);
    ~SoFieldWatchState() override;

    void enter() override;
    void leave() override;
    void contextMenu(QContextMenuEvent* event) override;

public Q_SLOTS:
    void updateItemFieldWatchAction(QTreeWidgetItem* current, QTreeWidgetItem* previous);
    void listClearedSlot();

private:
    SoFieldWatch* m_watch; // Not owned; it owns us.
    QPointer<SoCommandManager> m_hub;
};
