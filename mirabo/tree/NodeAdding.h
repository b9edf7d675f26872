#pragma once

#include <QObject>
#include <QPointer>

#include <functional>

class SoMiraboAddDialog;
class SoMiraboTreeView;
class SoNode;
class SoTreeViewItem;

namespace mirabo {

/// Adds nodes to the scene from the dialog, one after the other, at a row that stays the target
/// until the user makes another one current. Where the target holds no children a node comes behind
/// it, and the further ones into what holds both.
class NodeAdding final : public QObject {
    Q_OBJECT

public:
    /// Puts the node into the graph at the target; whether it did.
    using Add = std::function<bool(SoNode* node, SoTreeViewItem* target)>;

    /// The tree owns it. `window` is what the dialog belongs to.
    NodeAdding(SoMiraboTreeView* tree, QWidget* window, Add add);
    ~NodeAdding() override;

    /// Shows the dialog, or brings it to the front; the current row becomes the target.
    void open();
    SoMiraboAddDialog* dialog() const;
    /// The row at which the next node is added; null: none.
    SoTreeViewItem* target() const;

private:
    void add(SoNode* node);
    SoTreeViewItem* rowOf(const SoNode* added) const;
    void setTarget(SoTreeViewItem* row);
    void currentChanged();

    SoMiraboTreeView* m_tree; // Not owned; owns us.
    QPointer<QWidget> m_window;
    Add m_add;
    QPointer<SoMiraboAddDialog> m_dialog;
    bool m_adding = false; ///< the current row changes on our behalf
};

} // namespace mirabo
