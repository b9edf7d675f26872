#include "mirabo/tree/TreeContextMenu.h"

#include "mirabo/core/ActionRegistry.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/tree/MovePlan.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"

#include <kalmyr/core/SoNode.h>

using mirabo::ActionId;

namespace {

/// The tree itself answers the keys that stand behind the entries.
void showKey(QAction* action, const char* key)
{
    action->setShortcut(QKeySequence(QString::fromLatin1(key)));
    action->setShortcutContext(Qt::WidgetShortcut);
    action->setShortcutVisibleInContextMenu(true);
}

} // namespace

TreeContextMenu::TreeContextMenu(SoMiraboTreeView* view) : QMenu(view), m_view(view)
{
    addFixedEntries();
}

void TreeContextMenu::setActions(mirabo::ActionRegistry* actions)
{
    m_actions = actions;
}

QAction* TreeContextMenu::add(QMenu* menu, const QString& text, const char* icon,
                              std::function<void()> function)
{
    QAction* action = menu->addAction(mirabo::namedIcon(icon), text);
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

void TreeContextMenu::addRequest(const QString& text, const char* icon, ActionId id)
{
    QAction* action = add(this, text, icon, [this, id] {
        if (m_actions)
            m_actions->run(id);
    });
    if (id == ActionId::DeleteNode)
        showKey(action, "Del");
    m_requests.emplace_back(action, id);
}

void TreeContextMenu::addWindowAction(ActionId id)
{
    addRequest(QString::fromLatin1(mirabo::actionTable()[static_cast<std::size_t>(id)].text), "",
               id);
}

void TreeContextMenu::addFixedEntries()
{
    m_expandAll = add(this, "Expand All", "", [this] { Q_EMIT m_view->expandAllRequested(); });
    add(this, "Add to Node Overview", "", [this] { Q_EMIT m_view->overviewRequested(); });
    addRequest("Add Node", "", ActionId::AddNode);
    addRequest("&Save scene graph", "filesave", ActionId::SaveBranch);
    addRequest("&Delete", "editdelete", ActionId::DeleteNode);
    addMoveEntries();
    addSeparator();
    for (const ActionId id : {ActionId::Explore, ActionId::ExploreAll, ActionId::Filter,
                              ActionId::Insert, ActionId::InsertClipboard, ActionId::OpenViewer})
        addWindowAction(id);
    addSeparator();
    addReferenceEntries();
    addSeparator();
    addRequest("Toggle &Bookmark", "bookmark", ActionId::ToggleBookmark);
    addRequest("Copy &Path", "", ActionId::CopyPath);
    addSeparator();
    m_ignore = add(this, "Set &Ignored/Enable", "", [this] { m_view->ignoreEnable(); });
    addRequest("Help on the Class", "help", ActionId::ClassHelp);
    m_help = m_requests.back().first;
    showKey(m_help, "F1");
}

void TreeContextMenu::addMoveEntries()
{
    m_moveMenu = addMenu("&Move");
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
        QAction* action = add(m_moveMenu, entry.text, "",
                              [this, step = entry.step] { Q_EMIT m_view->stepRequested(step); });
        showKey(action, entry.key);
        m_moves.push_back({action, entry.step});
    }
}

void TreeContextMenu::addReferenceEntries()
{
    m_showReferences =
        add(this, "Show &All References", "", [this] { m_view->showReferencesOfCurrent(); });
    m_hideReferences = add(this, "&Hide All References", "", [this] { m_view->hideReferences(); });
    m_steps = {add(this, "Ne&xt Reference", "", [this] { m_view->nextReference(); }),
               add(this, "Pre&vious Reference", "", [this] { m_view->previousReference(); })};
}

void TreeContextMenu::prepareMoveEntries()
{
    auto* row = static_cast<SoTreeViewItem*>(m_view->currentItem());
    const mirabo::GraphReading graph;
    const bool mayMove = graph && m_view->canMoveNodes() && row && !row->isDead();
    bool any = false;
    for (const auto& [action, step] : m_moves) {
        action->setVisible(mayMove && mirabo::planStep(row, step).isPossible());
        any = any || action->isVisible();
    }
    m_moveMenu->menuAction()->setVisible(any);
}

void TreeContextMenu::prepareReferenceEntries()
{
    const bool isShared = m_view->itemsOf(m_view->getCurrentNode()).size() > 1;
    const bool isMarked = m_view->hasMarkedReferences();
    m_showReferences->setVisible(isShared);
    m_hideReferences->setVisible(isMarked);
    for (QAction* action : qAsConst(m_steps))
        action->setVisible(isShared || isMarked);
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
    for (const auto& [action, id] : m_requests)
        action->setVisible(m_actions && m_actions->isPossible(id));
    m_help->setText(QString("Help on %1").arg(QString::fromUtf8(type.getName().getString())));
    m_expandAll->setVisible(m_view->canExploreAll());
    m_ignore->setVisible(m_view->canIgnoreOrEnable());
    prepareMoveEntries();
    prepareReferenceEntries();

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
    QList<QAction*> all = actions();
    all += m_moveMenu->actions();
    for (QAction* action : qAsConst(all))
        if (action->text() == text)
            return action;
    return nullptr;
}
