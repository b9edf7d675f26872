#include "mirabo/tree/TreeBuilder.h"

#include "mirabo/core/RowKeeper.h"
#include "mirabo/tree/DisabledNodes.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeContext.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNotification.h>

#include <cstddef>

namespace mirabo {

namespace {

/// Rows are deleted recursively by their base class: no deeper than this.
constexpr int kSafeDepth = 256;

/// So many rows are made while memory is fetched.
constexpr int kAhead = 6;

struct Visit {
    SoTreeViewItem* item;
    int depth;
};

/// Rows at every kSafeDepth-th level, upper ones first.
std::vector<SoTreeViewItem*> cutsBelow(SoTreeViewItem* top)
{
    std::vector<SoTreeViewItem*> cuts;
    std::vector<Visit> open{{top, 0}};
    while (!open.empty()) {
        const Visit visit = open.back();
        open.pop_back();
        if (visit.depth > 0 && visit.depth % kSafeDepth == 0)
            cuts.push_back(visit.item);
        for (int i = 0, n = visit.item->rowCount(); i < n; ++i) {
            SoTreeViewItem* child = visit.item->rowAt(i);
            if (child->rowCount() > 0)
                open.push_back({child, visit.depth + 1});
        }
    }
    return cuts;
}

} // namespace

void TreeBuilder::fill(SoTreeViewItem* item)
{
    const SoNode* node = item->getNode();
    if (!node->isNotifyEnabled()) { // observers may have been told already
        m_context.unheard.emplace(node, SoNotification::nextStamp());
        m_context.anyUnheard = true;
    }
    const ShownChildren children = shownChildren(node, m_context);
    const std::size_t firstNew = m_open.size();
    for (int i = 0, n = children.count(); i < n; ++i) {
        // In a large scene nothing is in the cache by itself: neither the nodes, which are looked
        // into next, nor their places in the index.
        __builtin_prefetch(children[i]);
        if (i + kAhead < n)
            m_context.index.prefetch(children[i + kAhead]);
        m_open.push_back(new SoTreeViewItem(children[i], nullptr, item, m_context));
    }
    m_places.clear();
    m_fieldNodes.collect(node, m_places);
    for (const PlacedNode& place : m_places)
        m_open.push_back(new SoTreeViewItem(place.node, place.field, item, m_context));
    if (m_context.filter.isOn())
        item->insertRows(0, {m_open.begin() + static_cast<std::ptrdiff_t>(firstNew), m_open.end()});
    else
        for (std::size_t i = firstNew; i < m_open.size(); ++i)
            item->addChild(m_open[i]);
    if (!m_context.disabled.isEmpty())
        addGreyRows(item, m_context);
}

SoTreeViewItem* TreeBuilder::build(SoNode* node, SoField* source, const SoTreeViewItem* parent)
{
    auto* top = new SoTreeViewItem(node, source, parent, m_context);
    m_open.assign(1, top);
    while (!m_open.empty()) {
        SoTreeViewItem* item = m_open.back();
        m_open.pop_back();
        fill(item);
    }
    m_fieldNodes.forget();
    return top;
}

std::vector<PlacedNode> TreeBuilder::placesBelow(const SoNode* node)
{
    std::vector<PlacedNode> places;
    const ShownChildren children = shownChildren(node, m_context);
    for (int i = 0; i < children.count(); ++i)
        places.push_back({nullptr, children[i]});
    m_fieldNodes.collect(node, places);
    m_fieldNodes.forget();
    return places;
}

void destroyRows(SoTreeViewItem* top)
{
    if (RowKeeper* keeper = top->keeper(); keeper && keeper->isOpen()) {
        top->leaveTree();
        keeper->keep(top);
        return;
    }
    const std::vector<SoTreeViewItem*> cuts = cutsBelow(top);
    // From below, so that no row is walked through twice.
    for (auto at = cuts.rbegin(); at != cuts.rend(); ++at)
        qDeleteAll((*at)->takeRows());
    delete top;
}

} // namespace mirabo
