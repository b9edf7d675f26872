#include "mirabo/tree/RowActions.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/tree/HelpAddress.h"
#include "mirabo/tree/NodePlace.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeContextMenu.h"
#include "mirabo/tree/TreeRows.h"

#include <QClipboard>
#include <QGuiApplication>

namespace mirabo {

RowActions::RowActions(SoMiraboTreeView* tree, SoCommandManager* hub)
    : QObject(tree), m_tree(tree), m_hub(hub)
{
    tree->contextMenu().setActions(&hub->actions());
    registerActions();
    const auto update = [hub = m_hub] {
        if (hub)
            hub->actions().updateLater();
    };
    connect(tree, &QTreeWidget::currentItemChanged, this, update);
    connect(tree, &QTreeWidget::itemExpanded, this, update);
    connect(tree, &QTreeWidget::itemCollapsed, this, update);
}

RowActions::~RowActions() = default;

void RowActions::registerActions()
{
    ActionRegistry& actions = m_hub->actions();
    const auto hasRow = [this] { return m_tree->currentItem() != nullptr; };
    actions.add(ActionId::Explore, this,
                {[this] { m_tree->explore(); }, [this] { return m_tree->canExplore(); }});
    actions.add(ActionId::ExploreAll, this,
                {[this] { exploreAll(); }, [this] { return m_tree->canExploreAll(); }});
    actions.add(ActionId::CopyPath, this, {[this] { copyPath(); }, hasRow});
    actions.add(ActionId::ClassHelp, this,
                {[this] {
                     const SoType type = asItem(m_tree->currentItem())->getNodeType();
                     Q_EMIT m_tree->helpRequested(helpAddress(type.getName().view()));
                 },
                 hasRow});
}

void RowActions::exploreAll()
{
    const int closed = m_tree->exploreAll();
    if (closed > 0 && m_hub)
        m_hub->showStatus(
            QString("Not everything is open yet. Branches with many rows that stay closed: %1")
                .arg(closed));
}

void RowActions::copyPath()
{
    const QString path = placeOf(asItem(m_tree->currentItem()));
    if (path.isEmpty())
        return;
    QGuiApplication::clipboard()->setText(path);
    if (m_hub)
        m_hub->showStatus(tr("Copied: %1").arg(path));
}

} // namespace mirabo
