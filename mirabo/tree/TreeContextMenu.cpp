#include "mirabo/tree/TreeContextMenu.h"

#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/SoMiraboTreeView.h"

#include <kalmyr/core/SoNode.h>

TreeContextMenu::TreeContextMenu(SoMiraboTreeView* view) : QMenu(view), m_view(view)
{
    addFixedEntries();
}

void TreeContextMenu::addFixedEntries()
{
    addAction("Expand All", m_view, &SoMiraboTreeView::expandAllRequested);
    addAction("Add to Node Overview", m_view, &SoMiraboTreeView::overviewRequested);
    // Editing and saving of subgraphs are requests that nobody answers yet.
    addAction("Add Node", m_view, &SoMiraboTreeView::addNodeRequested)->setEnabled(false);
    addAction(mirabo::namedIcon("filesave"), "&Save scene graph", m_view,
              &SoMiraboTreeView::saveSubGraphRequested)
        ->setEnabled(false);
    addAction(mirabo::namedIcon("editdelete"), "&Delete", m_view,
              &SoMiraboTreeView::deleteRequested)
        ->setEnabled(false);
    m_referenceEntries = {
        addSeparator(),
        addAction("Show &All References", m_view, [this] { m_view->showReferencesOfCurrent(); }),
        addAction("&Hide All References", m_view, [this] { m_view->hideReferences(); }),
        addSeparator(),
        addAction("Ne&xt Reference", m_view, [this] { m_view->nextReference(); }),
        addAction("Pre&vious Reference", m_view, [this] { m_view->previousReference(); }),
    };
}

void TreeContextMenu::prepare(SoType type)
{
    const SoNode* node = m_view->getCurrentNode();
    const bool shared = node && m_view->itemsOf(node).size() > 1;
    for (QAction* action : qAsConst(m_referenceEntries))
        action->setVisible(shared);
    for (QAction* action : qAsConst(m_extensionEntries)) {
        removeAction(action);
        if (action->isSeparator())
            delete action; // menus keep their own actions
    }
    m_extensionEntries.clear();
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
