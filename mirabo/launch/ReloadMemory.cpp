#include "mirabo/launch/ReloadMemory.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoFieldWatch.h"
#include "mirabo/overview/SoMiraboEdition.h"
#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoTabNodeOverview.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"

#include <QPointer>

namespace mirabo {

namespace {

/// The place of a node's first row; empty when it has none.
BookmarkPath pathOf(const SoMiraboTreeView& tree, const SoNode* node)
{
    const std::vector<SoTreeViewItem*> rows =
        node ? tree.itemsOf(node) : std::vector<SoTreeViewItem*>();
    return rows.empty() ? BookmarkPath() : BookmarkPath::of(rows.front());
}

} // namespace

ReloadMemory::ReloadMemory(const SoMiraboTreeView& tree, const SoMiraboEdition& edition)
    : m_rows(tree)
{
    const GraphReading graph;
    if (const SoTabNodeOverview* tabs = edition.getTabs()) {
        m_currentTab = tabs->currentIndex();
        for (int i = 0; i < tabs->count(); ++i)
            m_tabs.push_back(pathOf(tree, tabs->overview(i)->getNode()));
    }
    const SoFieldWatch* watch = edition.getWatch();
    for (int row = 0; watch && row < watch->topLevelItemCount(); ++row) {
        const SoFieldItem* item = watch->fieldItem(row);
        m_watches.push_back({pathOf(tree, item->getNode()), item->text(SoMiraboList::FieldName)});
    }
}

void ReloadMemory::restoreTabs(const SoMiraboTreeView& tree, SoMiraboEdition& edition) const
{
    int current = 0;
    bool isFirst = true;
    const QPointer<SoMiraboEdition> alive(&edition);
    for (std::size_t i = 0; i < m_tabs.size() && alive; ++i) {
        SoTreeViewItem* row = m_tabs[i].find(tree);
        if (!row || !alive->getTabs())
            continue;
        alive->showNode(row->getNode(), row->getPartKit(), !std::exchange(isFirst, false));
        if (alive && alive->getTabs() && static_cast<int>(i) == m_currentTab)
            current = alive->getTabs()->currentIndex();
    }
    if (alive && alive->getTabs())
        alive->getTabs()->setCurrentIndex(current);
}

void ReloadMemory::restoreWatches(const SoMiraboTreeView& tree, SoMiraboEdition& edition) const
{
    for (const Watch& watch : m_watches)
        if (SoTreeViewItem* row = watch.node.find(tree); row && edition.getWatch())
            edition.getWatch()->addField(row->getNode(), watch.field);
}

void ReloadMemory::restore(SoMiraboTreeView& tree, SoMiraboEdition& edition) const
{
    const QPointer<SoMiraboTreeView> alive(&tree);
    {
        const GraphReading graph;
        if (!graph)
            return;
        restoreWatches(tree, edition);
    }
    restoreTabs(tree, edition);
    if (alive)
        m_rows.restore(tree);
}

} // namespace mirabo
