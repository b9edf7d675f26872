#include "mirabo/tree/TreeCheck.h"

#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeBuilder.h"

#include <kalmyr/core/SoNode.h>

#include <unordered_map>

namespace mirabo {

namespace {

QString describe(const SoTreeViewItem* item)
{
    QString text;
    for (; item; item = item->parentItem())
        text = '/' + QString::fromUtf8(item->getNodeType().getName().getString()) + text;
    return text;
}

class Checker {
public:
    explicit Checker(const SoMiraboTreeView& view)
        : m_view(view), m_builder(const_cast<SoMiraboTreeView&>(view).context())
    {
    }

    QString run()
    {
        checkTops();
        walk();
        if (m_fault.isEmpty())
            checkIndex();
        return m_fault;
    }

private:
    void checkTops()
    {
        const std::vector<SoNode*> nodes = m_view.topNodes();
        if (m_view.topLevelItemCount() != static_cast<int>(nodes.size())) {
            m_fault = "wrong number of top-level rows";
            return;
        }
        if (m_view.getRoot() && m_view.rootItem()->getNode() != m_view.getRoot())
            m_fault = "wrong root";
        int number = 0;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            auto* top = static_cast<SoTreeViewItem*>(m_view.topLevelItem(static_cast<int>(i)));
            m_open.push_back(top);
            const bool isExcluded = m_view.context().filter.hides(top->getNodeType());
            if (top->getNode() != nodes[i] || top->isFromField())
                m_fault = QString("top-level row %1: another node").arg(i);
            else if (top->data(0, Qt::UserRole).toInt() != (top->isShown() ? number++ : -1))
                m_fault = QString("top-level row %1: wrong number").arg(i);
            else if (top->isFilteredOut() != (isExcluded && !top->isRevealed())
                     || top->isHidden() != top->isFilteredOut())
                m_fault = QString("top-level row %1: hidden or shown against the filter").arg(i);
        }
    }

    void walk()
    {
        while (!m_open.empty() && m_fault.isEmpty()) {
            const SoTreeViewItem* item = m_open.back();
            m_open.pop_back();
            if (item->isDead()) {
                m_fault = describe(item) + ": a row whose node died";
                break;
            }
            ++m_rows;
            ++m_counts[item->getNode()];
            checkBelow(item);
        }
    }

    void checkBelow(const SoTreeViewItem* item)
    {
        const std::vector<PlacedNode> places = placesBelow(item);
        std::size_t place = 0;
        int number = 0;
        for (int i = 0; i < item->rowCount(); ++i) {
            const SoTreeViewItem* child = item->rowAt(i);
            m_open.push_back(child);
            if (child->data(0, Qt::UserRole).toInt() != (child->isShown() ? number++ : -1))
                fail(item, i, "wrong number");
            checkFilter(item, i);
            if (child->isDisabledNode())
                checkDisabled(item, i);
            else if (place < places.size())
                checkPlace(item, i, places[place++]);
            else
                fail(item, i, "one row too many");
        }
        if (place != places.size())
            fail(item, item->rowCount(), "a node has no row");
    }

    std::vector<PlacedNode> placesBelow(const SoTreeViewItem* item)
    {
        return item->isDisabledNode() ? std::vector<PlacedNode>()
                                      : m_builder.placesBelow(item->getNode());
    }

    void checkPlace(const SoTreeViewItem* item, int row, const PlacedNode& place)
    {
        const SoTreeViewItem* child = item->rowAt(row);
        if (child->getNode() != place.node || child->getSourceField() != place.field)
            fail(item, row, "another node");
        else if (child->isFromField() != (place.field || item->isFromField()))
            fail(item, row, "wrong field flag");
    }

    void checkDisabled(const SoTreeViewItem* item, int row)
    {
        const SoTreeViewItem* child = item->rowAt(row);
        if (!item->hasDisabledChildren())
            fail(item, row, "a disabled row that its parent does not know of");
        if (child->rowCount() > 0)
            fail(item, row, "something below a disabled row");
        if (!m_view.context().disabled.find(child->getNode()))
            fail(item, row, "a disabled row whose node nobody keeps");
    }

    void checkFilter(const SoTreeViewItem* item, int row)
    {
        SoTreeViewItem* child = item->rowAt(row);
        const bool isExcluded = m_view.context().filter.hides(child->getNodeType());
        if (child->isFilteredOut() != (isExcluded && !child->isRevealed()))
            fail(item, row, "hidden or shown against the filter");
        if (child->isFilteredOut() != (child->parent() != item))
            fail(item, row, "a hidden row that the widget knows, or a shown one that it does not");
        if (child->parentItem() != item || child->rowInParent() != row)
            fail(item, row, "a row that does not know its place");
    }

    void checkIndex()
    {
        const NodeIndex& index = m_view.context().index;
        if (index.itemCount() != m_rows || index.nodeCount() != m_counts.size())
            m_fault = "index of wrong size";
        for (const auto& [node, count] : m_counts)
            if (index.itemsOf(node).size() != count)
                m_fault = "index misses rows of a node";
    }

    void fail(const SoTreeViewItem* item, int row, const char* what)
    {
        if (m_fault.isEmpty())
            m_fault = QString("%1, row %2: %3").arg(describe(item)).arg(row).arg(what);
    }

    const SoMiraboTreeView& m_view;
    TreeBuilder m_builder;
    std::vector<const SoTreeViewItem*> m_open;
    std::unordered_map<const SoNode*, std::size_t> m_counts;
    std::size_t m_rows = 0;
    QString m_fault;
};

} // namespace

QString checkTree(const SoMiraboTreeView& view)
{
    return Checker(view).run();
}

} // namespace mirabo
