#include "mirabo/tree/TreeContextMenu.h"

#include "mirabo/core/GraphReading.h"
#include "mirabo/tree/MovePlan.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"

#include <kalmyr/core/SoNode.h>

TreeContextMenu::TreeContextMenu(SoMiraboTreeView* view) : QMenu(view), m_view(view)
{
    addFixedEntries();
}

QAction* TreeContextMenu::add(const char* text, const char* icon, std::function<void()> function)
{
    QAction* action = addAction(mirabo::namedIcon(icon), QString::fromLatin1(text));
    connect(action, &QAction::triggered, this, [this, function = std::move(function)] {
        // The row may have died, or the current row moved on, since the menu was opened.
        SoTreeViewItem* row = m_view->context().menuRow;
        if (!row)
            return;
        m_view->setCurrentItem(row);
        if (m_view->context().menuRow) // whoever was told may have taken it away
            function();
    });
    return action;
}

void TreeContextMenu::addFixedEntries()
{
    add("Expand All", "", [this] { Q_EMIT m_view->expandAllRequested(); });
    add("Add to Node Overview", "", [this] { Q_EMIT m_view->overviewRequested(); });
    m_addNode = add("Add Node", "", [this] { Q_EMIT m_view->addNodeRequested(); });
    m_save =
        add("&Save scene graph", "filesave", [this] { Q_EMIT m_view->saveSubGraphRequested(); });
    addMoveEntries();
    m_firstSeparator = addSeparator();
    m_ignore = add("Set &Ignored/Enable", "", [this] { m_view->ignoreEnable(); });
    m_secondSeparator = addSeparator();
    m_showReferences =
        add("Show &All References", "", [this] { m_view->showReferencesOfCurrent(); });
    m_hideReferences = add("&Hide All References", "", [this] { m_view->hideReferences(); });
    m_steps = {add("Ne&xt Reference", "", [this] { m_view->nextReference(); }),
               add("Pre&vious Reference", "", [this] { m_view->previousReference(); })};
}

/// The tree itself answers the keys that stand behind the entries.
void TreeContextMenu::addMoveEntries()
{
    const auto showKey = [](QAction* action, const char* key) {
        action->setShortcut(QKeySequence(QString::fromLatin1(key)));
        action->setShortcutContext(Qt::WidgetShortcut);
        action->setShortcutVisibleInContextMenu(true);
    };
    m_delete = add("&Delete", "editdelete", [this] { Q_EMIT m_view->deleteRequested(); });
    showKey(m_delete, "Del");
    constexpr struct {
        const char* text;
        const char* key;
        mirabo::MoveStep step;
    } kSteps[] = {
        {"Move &Up", "Ctrl+Shift+Up", mirabo::MoveStep::Up},
        {"Move D&own", "Ctrl+Shift+Down", mirabo::MoveStep::Down},
        {"Move &Into Previous", "Ctrl+Shift+Right", mirabo::MoveStep::IntoPrevious},
        {"Move Out &After Parent", "Ctrl+Shift+Left", mirabo::MoveStep::OutOfParent},
    };
    for (const auto& entry : kSteps) {
        QAction* action =
            add(entry.text, "", [this, step = entry.step] { Q_EMIT m_view->stepRequested(step); });
        showKey(action, entry.key);
        m_moves.push_back({action, entry.step});
    }
}

void TreeContextMenu::prepareMoveEntries()
{
    auto* row = static_cast<SoTreeViewItem*>(m_view->currentItem());
    const mirabo::GraphReading graph;
    const bool isAlive = graph && row && !row->isDead() && !row->isDisabledNode();
    m_delete->setVisible(isAlive && m_view->canDeleteNodes());
    for (const auto& [action, step] : m_moves)
        action->setVisible(isAlive && m_view->canMoveNodes()
                           && mirabo::planStep(row, step).isPossible());
}

void TreeContextMenu::removeExtensionEntries()
{
    for (const QPointer<QAction>& action : qAsConst(m_extensionEntries)) {
        if (!action)
            continue; // the extension deleted its menu
        removeAction(action);
        if (action->isSeparator())
            delete action; // menus keep their own actions
    }
    m_extensionEntries.clear();
}

void TreeContextMenu::prepare(SoType type)
{
    const bool isShared = m_view->itemsOf(m_view->getCurrentNode()).size() > 1;
    const bool isMarked = m_view->hasMarkedReferences();
    const bool canIgnore = m_view->canIgnoreOrEnable();
    m_addNode->setEnabled(m_view->canAddNodes());
    m_save->setEnabled(m_view->canSaveSubGraphs());
    prepareMoveEntries();
    m_ignore->setVisible(canIgnore);
    m_firstSeparator->setVisible(canIgnore);
    m_secondSeparator->setVisible(isShared || isMarked);
    m_showReferences->setVisible(isShared);
    m_hideReferences->setVisible(isMarked);
    for (QAction* action : qAsConst(m_steps))
        action->setVisible(isShared || isMarked);

    removeExtensionEntries();
    const QList<QMenu*> menus = m_extension && !type.isBad() ? m_extension(type) : QList<QMenu*>();
    if (menus.isEmpty())
        return;
    m_extensionEntries.append(addSeparator());
    for (QMenu* menu : menus)
        m_extensionEntries.append(addMenu(menu));
}

QAction* TreeContextMenu::entry(const QString& text) const
{
    for (QAction* action : actions())
        if (action->text() == text)
            return action;
    return nullptr;
}
