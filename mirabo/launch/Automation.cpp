#include "mirabo/launch/Automation.h"

#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/viewer/SoMiraboViewer.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>

#include <QTreeWidgetItemIterator>

namespace mirabo {

Automation::Automation(QObject* parent, SoMiraboTreeView* tree) : QObject(parent), m_tree(tree)
{
    setObjectName("automation");
}

QString Automation::sceneFile() const
{
    return SoMiraboViewer::instance()->getCurrentFile();
}

bool Automation::selectFirstShape()
{
    for (QTreeWidgetItemIterator at(m_tree); *at; ++at) {
        const auto* item = static_cast<SoTreeViewItem*>(*at);
        if (categoryOf(item->getNodeType()) != NodeCategory::Shape)
            continue;
        m_tree->setCurrentItem(*at);
        m_tree->scrollToItem(*at, QAbstractItemView::PositionAtCenter);
        return true;
    }
    return false;
}

bool Automation::drawScene()
{
    SoQtExaminerViewer* viewer = SoMiraboViewer::instance()->getExaminerViewer();
    if (!viewer)
        return true;
    return viewer->redraw() && !viewer->isRedrawPending();
}

} // namespace mirabo
