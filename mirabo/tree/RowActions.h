#pragma once

#include <QObject>
#include <QPointer>

class SoCommandManager;
class SoMiraboTreeView;

namespace mirabo {

/// Answers the hub's requests for what is done with the current row without an edit: opening what
/// is below it, copying where it stands, help on its class.
class RowActions final : public QObject {
    Q_OBJECT

public:
    /// The tree owns it.
    RowActions(SoMiraboTreeView* tree, SoCommandManager* hub);
    ~RowActions() override;

private:
    void registerActions();
    void exploreAll();
    void copyPath();

    SoMiraboTreeView* m_tree; // Not owned; owns us.
    QPointer<SoCommandManager> m_hub;
};

} // namespace mirabo
