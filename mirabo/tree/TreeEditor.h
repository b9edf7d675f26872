#pragma once

#include "mirabo/core/CommandOwner.h"

#include <kalmyr/core/SoType.h>

#include <QObject>
#include <QPointer>

#include <functional>
#include <initializer_list>
#include <memory>

class MrbCommand;
class SoMiraboTreeView;
class SoNode;
class SoTreeViewItem;

namespace mirabo {

enum class MoveStep;
struct MovePlan;
struct Refusal;
struct TreeEditHost;
class TreeEditCommand;

/// Edits of the graph through the rows of the tree: makes the commands, shows a box for what cannot
/// be done, and pushes what was done. All functions return whether something was.
///
/// A row that is passed in belongs to the tree. While a command runs nothing is edited: boxes and
/// the receivers of signals may ask for more.
class TreeEditor final : public QObject {
    Q_OBJECT

public:
    /// Parts of the tool that the editor uses.
    struct Wiring {
        UndoStack& stack;
        CommandOwner& owner;
        /// Shows a box until the user has read it.
        std::function<void(const Refusal&)> showBox;
        std::function<void(SoNode*)> setRoot; ///< as TreeEditHost
    };

    TreeEditor(SoMiraboTreeView* view, Wiring wiring);
    ~TreeEditor() override;

    bool deleteRow(SoTreeViewItem* row);
    bool deleteCurrent();
    bool canDeleteCurrent() const;
    /// Takes a row's node out of the scene, with what is left without content above it. Null: the
    /// current row's.
    bool cutRow(SoTreeViewItem* row = nullptr);

    /// Adds a new node at a row; null: at the current row. Of several additions at one row each is
    /// a command of its own.
    bool addNode(SoNode* node, SoTreeViewItem* target = nullptr);
    bool addType(SoType type, SoTreeViewItem* target = nullptr);
    /// Adds what was copied as a further top-level row; refused when the tree has no container for
    /// it.
    bool pasteTopLevel(SoNode* node);

    bool moveRow(SoTreeViewItem* row, SoTreeViewItem* target, bool spaceHeld);
    /// Puts a further reference to the row's node where a drop would bring it.
    bool addReference(SoTreeViewItem* row, SoTreeViewItem* target, bool spaceHeld);
    bool stepCurrent(MoveStep step);
    bool canStepCurrent(MoveStep step) const;

    /// Runs a command that the tree has made for its current row.
    bool run(std::unique_ptr<TreeEditCommand> command);

Q_SIGNALS:
    /// The node of the row was added; it is the current one.
    void nodeAdded(SoTreeViewItem* row);

private:
    SoTreeViewItem* current() const;
    bool isReady() const;
    /// Makes the edit and its command; null, with the reason, when it is refused.
    using Make = std::function<std::unique_ptr<MrbCommand>(Refusal& refusal)>;
    bool run(const char* title, std::initializer_list<SoTreeViewItem*> rows, const Make& make);
    bool runMove(SoTreeViewItem* row, SoTreeViewItem* target,
                 const std::function<MovePlan()>& plan);
    void show(const Refusal& refusal);

    QPointer<SoMiraboTreeView> m_view;
    UndoStack& m_stack;
    CommandOwner& m_owner;
    std::shared_ptr<TreeEditHost> m_host; ///< shared with the commands
    std::function<void(const Refusal&)> m_showBox;
};

} // namespace mirabo
