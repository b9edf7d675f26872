#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/tree/ChildRules.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeCheck.h"
#include "mirabo/tree/TreePatcher.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/nodes/SoGroup.h>

#include <algorithm>
#include <unordered_set>
#include <vector>

// Rows that the graph no longer has, though nobody told.

using mirabo::asItem;

namespace {

/// The same for a row with a parent. Only that one's node is looked into.
bool standsBelow(const SoTreeViewItem* item, const mirabo::TreeContext& context)
{
    const SoNode* parent = item->getParentNode();
    if (item->isDisabledNode())
        return true; // kept alive by the tree
    if (!parent || item->isDead())
        return false;
    if (item->isDirectlyFromField()) {
        std::vector<mirabo::PlacedNode> places;
        mirabo::FieldNodes().collect(parent, places);
        const mirabo::PlacedNode place{item->getSourceField(), item->getNode()};
        return std::find(places.begin(), places.end(), place) != places.end();
    }
    const mirabo::ShownChildren children = mirabo::shownChildren(parent, context);
    const int row =
        item->parentItem()->hasHiddenRows() ? item->rowInParent() : item->childIndexValue();
    if (row >= 0 && row < children.count() && children[row] == item->getNode())
        return true;
    return children.nodes
           && std::find(children.nodes->begin(), children.nodes->end(), item->getNode())
                  != children.nodes->end();
}

} // namespace

/// Tells on the error channel whether the rows are what the graph is.
void SoMiraboTreeView::reportCheck()
{
    const QString fault = mirabo::checkTree(*this);
    const QByteArray text =
        (fault.isEmpty() ? QString("the tree agrees with the graph") : fault).toUtf8();
    SoDebugError::postInfo("SoMiraboTreeView", "%s", text.constData());
}

/// The uppermost row on the way down to `item` whose node the graph no longer has there, or null.
SoTreeViewItem* SoMiraboTreeView::firstStrayAbove(SoTreeViewItem* item) const
{
    std::vector<SoTreeViewItem*> chain;
    for (; item; item = item->parentItem())
        chain.push_back(item);
    for (auto at = chain.rbegin(); at < chain.rend(); ++at)
        if (!standsInGraph(*at))
            return *at;
    return nullptr;
}

/// Whether a row still is where the graph has its node. The root is, while it lives.
bool SoMiraboTreeView::standsInGraph(const SoTreeViewItem* item) const
{
    if (item->parentItem())
        return standsBelow(item, m_context);
    if (item == rootItem())
        return true;
    const SoGroup* container = getContainer();
    if (!container || item->isDead())
        return !item->isDead();
    // As topNodes() has them.
    const int child = item->rowInParent() - (container->findChild(m_root) < 0 ? 1 : 0);
    return child >= 0 && child < container->getNumChildren()
           && container->getChild(child) == item->getNode();
}

bool SoMiraboTreeView::isInGraph(SoTreeViewItem* item) const
{
    const mirabo::GraphReading graph;
    return graph && hasLivingRoot() && !m_context.changedElsewhere && !firstStrayAbove(item);
}

/// Changes made while notification was off are nowhere reported: a row that is about to be used is
/// checked first. False when rows had to be patched, so that the item may be gone.
bool SoMiraboTreeView::verify(SoTreeViewItem* item)
{
    const mirabo::GraphReading graph;
    if (!graph || !hasLivingRoot())
        return false;
    const SoTreeViewItem* stray = firstStrayAbove(item);
    if (!stray)
        return true;
    const PatchScope scope(*this);
    if (SoTreeViewItem* parent = stray->parentItem())
        m_patcher->sync(parent);
    else
        m_patcher->syncTops();
    return false;
}

bool SoMiraboTreeView::verifyRowsInView()
{
    std::unordered_set<const QTreeWidgetItem*> families;
    const int height = std::max(1, visualRect(indexAt({1, 1})).height());
    for (int y = 1; y < viewport()->height(); y += height) {
        SoTreeViewItem* item = asItem(itemFromIndex(indexAt({1, y})));
        if (!item)
            break;
        // Siblings share their ancestors; but each may itself be a stray.
        const bool isNewFamily = families.insert(item->parent()).second;
        if (isNewFamily ? !verify(item) : !standsInGraph(item) && !verify(item))
            return false;
    }
    return true;
}
