#include "mirabo/tree/BookmarkPath.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/TreeRows.h"

#include <kalmyr/core/SoNode.h>

#include <algorithm>

namespace mirabo {

namespace {

/// How far from its old number a row is looked for, and how many nodes of its name are looked at.
constexpr int kReach = 64;

bool fits(const SoTreeViewItem* row, const BookmarkPath::Step& step)
{
    return !row->isDead() && row->getNodeType().getName() == step.type.constData()
           && row->getNode()->getName() == step.name.constData();
}

QTreeWidgetItem* parentOf(const SoTreeViewItem* row, const SoMiraboTreeView& tree)
{
    QTreeWidgetItem* above = row->parentItem();
    return above ? above : tree.invisibleRootItem();
}

/// The first row of a node of that name and type; below `parent` unless that is null.
SoTreeViewItem* findByName(const SoMiraboTreeView& tree, const BookmarkPath::Step& step,
                           const QTreeWidgetItem* parent)
{
    const SoType type = SoType::fromName(step.type.constData());
    if (step.name.isEmpty() || !type.isDerivedFrom(SoNode::getClassTypeId()))
        return nullptr;
    std::vector<SoBase*> bases = SoBase::getNamedBases(step.name.constData(), type);
    bases.resize(std::min<std::size_t>(bases.size(), kReach));
    for (const SoBase* base : bases)
        for (SoTreeViewItem* row : tree.itemsOf(static_cast<const SoNode*>(base)))
            if (fits(row, step) && (!parent || parentOf(row, tree) == parent))
                return row;
    return nullptr;
}

QByteArray toBytes(SbName name)
{
    return QByteArray(name.getString(), static_cast<int>(name.getLength()));
}

} // namespace

BookmarkPath::Step BookmarkPath::stepTo(const SoTreeViewItem* row)
{
    const GraphReading graph;
    const SbName name = graph && !row->isDead() ? row->getNode()->getName() : SbName();
    return {row->rowInParent(), toBytes(row->getNodeType().getName()), toBytes(name)};
}

int BookmarkPath::findBelow(const SoMiraboTreeView& tree, QTreeWidgetItem* parent, const Step& step)
{
    const QTreeWidgetItem* root = tree.invisibleRootItem();
    const int count = rowCountBelow(parent, root);
    for (int distance = 0; distance <= kReach; ++distance)
        for (const int row : {step.row - distance, step.row + distance})
            if (row >= 0 && row < count && fits(rowBelow(parent, row, root), step))
                return row;
    const SoTreeViewItem* named = findByName(tree, step, parent);
    return named ? named->rowInParent() : -1;
}

BookmarkPath BookmarkPath::of(const SoTreeViewItem* row)
{
    BookmarkPath path;
    const GraphReading graph;
    for (const SoTreeViewItem* at = row; at; at = at->parentItem()) {
        if (path.steps.size() == kMaxDepth)
            return {};
        path.steps.push_back(stepTo(at));
    }
    std::reverse(path.steps.begin(), path.steps.end());
    return path;
}

bool BookmarkPath::endsAt(const SoTreeViewItem* row) const
{
    return isEmpty() || fits(row, steps.back());
}

SoTreeViewItem* BookmarkPath::find(const SoMiraboTreeView& tree) const
{
    if (isEmpty())
        return nullptr;
    SoTreeViewItem* row = nullptr;
    QTreeWidgetItem* parent = tree.invisibleRootItem();
    for (const Step& step : steps) {
        const int at = findBelow(tree, parent, step);
        if (at < 0)
            return findByName(tree, steps.back(), nullptr);
        row = rowBelow(parent, at, tree.invisibleRootItem());
        parent = row;
    }
    return row;
}

QJsonArray BookmarkPath::toJson() const
{
    QJsonArray json;
    for (const Step& step : steps)
        json << step.row << QString::fromUtf8(step.type) << QString::fromUtf8(step.name);
    return json;
}

BookmarkPath BookmarkPath::fromJson(const QJsonArray& json)
{
    BookmarkPath path;
    if (json.size() % 3 != 0 || json.size() > 3 * kMaxDepth)
        return path;
    for (int i = 0; i < json.size(); i += 3)
        path.steps.push_back(
            {json[i].toInt(-1), json[i + 1].toString().toUtf8(), json[i + 2].toString().toUtf8()});
    return path;
}

} // namespace mirabo
