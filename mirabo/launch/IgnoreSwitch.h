#pragma once

#include <QObject>

class SoCommandManager;
class SoField;
class SoMiraboEdition;
class SoMiraboTreeView;

namespace mirabo {

class CommandOwner;

/// Keeps the target of "&Set Ignored/Enable": the row of the tree or the field, whichever the user
/// selected last.
class IgnoreSwitch final : public QObject {
    Q_OBJECT

public:
    /// None of them is owned; all must outlive the switch.
    IgnoreSwitch(SoMiraboTreeView* tree, SoMiraboEdition* edition, SoCommandManager* hub,
                 CommandOwner& owner);
    ~IgnoreSwitch() override;

private:
    /// Switches the flag, as a step that can be undone.
    void run();
    bool isPossible() const;
    void useTree();
    void fieldPicked(SoField* field);
    void switchField();
    bool eventFilter(QObject* watched, QEvent* event) override;

    SoMiraboTreeView* m_tree;
    SoMiraboEdition* m_edition;
    SoCommandManager* m_hub;
    CommandOwner& m_owner;
    bool m_onField = false;
    bool m_hasField = false; ///< the field that was selected last is still there
};

} // namespace mirabo
