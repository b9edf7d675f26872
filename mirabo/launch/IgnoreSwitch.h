#pragma once

#include <QObject>

class QAction;
class SoCommandManager;
class SoField;
class SoMiraboEdition;
class SoMiraboTreeView;

namespace mirabo {

/// What "&Set Ignored/Enable" acts on: the row of the tree or the field, whichever the user
/// selected last. The action is enabled accordingly.
class IgnoreSwitch final : public QObject {
    Q_OBJECT

public:
    /// None of them is owned; all must outlive the switch.
    IgnoreSwitch(QAction* action, SoMiraboTreeView* tree, SoMiraboEdition* edition,
                 SoCommandManager* hub);
    ~IgnoreSwitch() override;

    /// Switches the flag, as a step that can be undone.
    void run();

private:
    void useTree();
    void fieldPicked(SoField* field);
    void switchField();
    bool eventFilter(QObject* watched, QEvent* event) override;

    QAction* m_action;
    SoMiraboTreeView* m_tree;
    SoMiraboEdition* m_edition;
    SoCommandManager* m_hub;
    bool m_onField = false;
};

} // namespace mirabo
