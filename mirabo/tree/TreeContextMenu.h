#pragma once

#include "mirabo/core/MainActions.h"

#include <QList>
#include <QMenu>
#include <QPointer>

#include <functional>
#include <utility>
#include <vector>

class SoMiraboTreeView;
class SoType;

namespace mirabo {
class ActionRegistry;
enum class MoveStep;
} // namespace mirabo

/// The context menu of the scene tree: what can be done with the row that was clicked, then what
/// extensions offer for the type of its node. Entries that would do nothing are not shown, and
/// none does anything once the row is gone that the menu was opened for.
class TreeContextMenu final : public QMenu {
    Q_OBJECT

public:
    explicit TreeContextMenu(SoMiraboTreeView* view);

    /// Handlers of the entries that are not the tree's own, which tell what is possible; without
    /// it they are not shown. Not owned; it may die.
    void setActions(mirabo::ActionRegistry* actions);
    void setExtension(std::function<QList<QMenu*>(SoType)> extension)
    {
        m_extension = std::move(extension);
    }
    /// Brings the entries in line with the current row; `type` is that of the clicked node.
    void prepare(SoType type);
    /// The entry of that text, in the menu itself or one of its own below; or null.
    QAction* entry(const QString& text) const;

private:
    QAction* add(QMenu* menu, const QString& text, const char* icon,
                 std::function<void()> function);
    void addRequest(const QString& text, const char* icon, mirabo::ActionId id);
    void addWindowAction(mirabo::ActionId id);
    void addFixedEntries();
    void addMoveEntries();
    void addReferenceEntries();
    void prepareMoveEntries();
    void prepareReferenceEntries();
    void removeExtensionEntries();

    SoMiraboTreeView* m_view; // Not owned; owns us.
    QPointer<mirabo::ActionRegistry> m_actions;
    std::function<QList<QMenu*>(SoType)> m_extension;
    std::vector<std::pair<QAction*, mirabo::ActionId>> m_requests;
    QMenu* m_moveMenu = nullptr;
    std::vector<std::pair<QAction*, mirabo::MoveStep>> m_moves;
    QAction* m_expandAll = nullptr;
    QAction* m_ignore = nullptr;
    QAction* m_help = nullptr;
    QAction* m_showReferences = nullptr;
    QAction* m_hideReferences = nullptr;
    QList<QAction*> m_steps;                     ///< from reference to reference
    QList<QPointer<QAction>> m_extensionEntries; ///< of the last request
};
