#include "mirabo/tree/MovePlan.h"

#include "mirabo/core/CommandName.h"
#include "mirabo/tree/RowList.h"

#include <kalmyr/core/SoNode.h>

namespace mirabo {

namespace {

/// Whether the node stays where it is when it is taken from one place and put to the other.
bool isSamePlace(const NodeSlot& from, const NodeSlot& to)
{
    return from.isBeside(to) && (to.index() == from.index() || to.index() == from.index() + 1);
}

MovePlan refused(SoTreeViewItem* target, const QString& why)
{
    MovePlan plan;
    plan.target = target;
    plan.refusal = why;
    return plan;
}

MovePlan idle(SoTreeViewItem* target, const QString& why)
{
    MovePlan plan = refused(target, why);
    plan.isIdle = true;
    return plan;
}

MovePlan behind(SoTreeViewItem* target)
{
    MovePlan plan;
    plan.target = target;
    plan.where = MovePlan::Where::Behind;
    plan.holderRow = target->parentItem();
    if (NodeSlot::of(target).isRoot())
        return refused(target, "There is nothing beside the root of the scene.");
    plan.slot = NodeSlot::behind(target);
    if (!plan.slot)
        plan.refusal = QString("The %1 keeps no list of nodes here.")
                           .arg(nodeText(*plan.holderRow->getNode()));
    return plan;
}

MovePlan into(SoTreeViewItem* target, int index)
{
    MovePlan plan;
    plan.target = target;
    plan.where = index == 0 ? MovePlan::Where::First : MovePlan::Where::Into;
    plan.holderRow = target;
    plan.slot = NodeSlot::into(target, index);
    if (!plan.slot)
        plan.refusal = QString("The %1 keeps no list of nodes.").arg(nodeText(*target->getNode()));
    return plan;
}

/// The obstacles that moves and references share.
void check(MovePlan& plan, const SoTreeViewItem* dragged)
{
    if (plan.slot && plan.refusal.isEmpty())
        plan.refusal = plan.slot->whyNotPut(dragged->getNode());
}

QString whyNotFrom(const SoTreeViewItem* row, const SoTreeViewItem* target)
{
    for (const SoTreeViewItem* used : {row, target})
        if (used->isDead() || (used->parentItem() && used->parentItem()->isDead()))
            return "The application has deleted the node.";
    if (row->isDisabledNode() || target->isDisabledNode())
        return "A disabled node stays where it is.";
    return {};
}

MovePlan checkedMove(MovePlan plan, const SoTreeViewItem* dragged)
{
    const NodeSlot from = NodeSlot::of(dragged);
    if (from.isRoot())
        return refused(plan.target, "The root of the scene cannot be moved.");
    if (const QString why = from.whyNotTake(); !why.isEmpty())
        return refused(plan.target, why);
    check(plan, dragged);
    if (plan.isPossible() && isSamePlace(from, *plan.slot)) {
        plan.refusal = QString("The %1 is there already.").arg(nodeText(*dragged->getNode()));
        plan.isIdle = true;
    }
    return plan;
}

} // namespace

MovePlan planMove(SoTreeViewItem* dragged, SoTreeViewItem* target, bool spaceHeld)
{
    if (const QString why = whyNotFrom(dragged, target); !why.isEmpty())
        return refused(target, why);
    if (dragged == target)
        return idle(target, QString("The %1 is there already.").arg(nodeText(*target->getNode())));
    const bool keepsList = NodeSlot::into(target, 0).has_value();
    if (spaceHeld || (!keepsList && dragged->parentItem() != target))
        return checkedMove(behind(target), dragged);
    return checkedMove(into(target, dragged->parentItem() == target ? 0 : -1), dragged);
}

/// The next sibling in that direction that can be seen; null: none. Disabled ones do not count.
SoTreeViewItem* nextSibling(const SoTreeViewItem* row, int by)
{
    const RowList siblings(*treeOf(row), row->parentItem());
    SoTreeViewItem* next = nullptr;
    int at = siblings.indexOf(row);
    do
        next = siblings.at(at += by);
    while (next && (next->isFilteredOut() || next->isDisabledNode()));
    return next;
}

/// Where a step up or down brings a row in its list; -1: nowhere. Steps go
/// past what the filter hides, so that they are seen.
int indexOfStep(const SoTreeViewItem* row, const NodeSlot& own, bool up)
{
    const SoTreeViewItem* parent = row->parentItem();
    int index = own.index();
    if (!parent || parent->hasHiddenRows()) {
        const int by = up ? -1 : 1;
        const SoTreeViewItem* next = nextSibling(row, by);
        if (!next || !NodeSlot::of(next).isBeside(own))
            return -1;
        index = NodeSlot::of(next).index() - by;
    }
    index += up ? -1 : 2;
    return index <= own.count() ? index : -1;
}

MovePlan planReference(SoTreeViewItem* dragged, SoTreeViewItem* target, bool spaceHeld)
{
    if (const QString why = whyNotFrom(dragged, target); !why.isEmpty())
        return refused(target, why);
    const bool keepsList = NodeSlot::into(target, 0).has_value();
    MovePlan plan = spaceHeld || !keepsList ? behind(target) : into(target, -1);
    check(plan, dragged);
    return plan;
}

MovePlan planStep(SoTreeViewItem* row, MoveStep step)
{
    SoTreeViewItem* parent = row->parentItem();
    if (row->isDisabledNode() || row->isDead() || (parent && parent->isDead())
        || NodeSlot::of(row).isRoot())
        return idle(row, "The root of the scene and disabled nodes stay where they are.");
    const NodeSlot own = NodeSlot::of(row);
    if (step == MoveStep::OutOfParent)
        return parent ? checkedMove(behind(parent), row)
                      : idle(row, "There is nothing that it could be moved out of.");
    if (step == MoveStep::IntoPrevious) {
        SoTreeViewItem* previous = nextSibling(row, -1);
        return previous ? checkedMove(into(previous, -1), row)
                        : idle(row, "There is nothing before it.");
    }
    MovePlan plan;
    plan.target = row;
    plan.holderRow = parent;
    plan.where = MovePlan::Where::Behind;
    const int index = own.isInList() ? indexOfStep(row, own, step == MoveStep::Up) : -1;
    if (index < 0)
        return idle(row, "There is nothing on that side of it.");
    plan.slot = own;
    plan.slot->setIndex(index);
    return checkedMove(std::move(plan), row);
}

} // namespace mirabo
