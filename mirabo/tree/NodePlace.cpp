#include "mirabo/tree/NodePlace.h"

#include "mirabo/extender/private/GraphReading.h"
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

QString placeOf(const SoTreeViewItem* row)
{
    const GraphReading graph;
    if (!graph)
        return {};
    QStringList steps;
    for (; row; row = row->parentItem())
        if (const SoNode* node = row->getNode())
            steps.prepend(nameOf(node));
    return steps.join(" > ");
}

QString placeOf(const SoMiraboTreeView& tree, const SoNode* node)
{
    const auto rows = tree.itemsOf(node);
    return rows.empty() ? QString() : placeOf(rows.front());
}

} // namespace mirabo
