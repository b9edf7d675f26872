#include "mirabo/launch/NodePlace.h"

#include "mirabo/core/GraphReading.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"

#include <kalmyr/core/SoNode.h>

#include <QStringList>

namespace mirabo {

namespace {

QString nameOf(const SoNode* node)
{
    const QString type = QString::fromUtf8(node->getTypeId().getName().getString());
    const SbName name = node->getName();
    return name.isEmpty() ? type : type + ' ' + QString::fromUtf8(name.getString());
}

} // namespace

QString placeOf(const SoMiraboTreeView& tree, const SoNode* node)
{
    const GraphReading graph;
    if (!graph)
        return {};
    const auto items = tree.itemsOf(node);
    QStringList steps;
    for (const SoTreeViewItem* at = items.empty() ? nullptr : items.front(); at;
         at = at->parentItem())
        if (const SoNode* above = at->getNode())
            steps.prepend(nameOf(above));
    return steps.join(" > ");
}

} // namespace mirabo
