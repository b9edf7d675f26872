#include "mirabo/overview/SoTabNodeOverview.h"

#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoNodeOverviewList.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/core/SoNode.h>

#include <QHeaderView>
#include <QMouseEvent>
#include <QTabBar>

SoTabNodeOverview::SoTabNodeOverview(QWidget* parent) : QTabWidget(parent)
{
    setObjectName("SoTabNodeOverview");
    setDocumentMode(true);
    setTabsClosable(true);
    setMovable(true);
    setUsesScrollButtons(true);
    setElideMode(Qt::ElideRight);
    tabBar()->setAutoHide(false);
    tabBar()->installEventFilter(this);
    connect(tabBar(), &QTabBar::tabCloseRequested, this, &SoTabNodeOverview::tabClose);
    connect(this, &QTabWidget::currentChanged, this, &SoTabNodeOverview::tabNodeOverviewChanged);
    addOverview();
}

SoNodeOverview* SoTabNodeOverview::addOverview()
{
    auto* added = new SoNodeOverview(this);
    applyPreferences(added);
    setCurrentIndex(addTab(added, QString()));
    connect(added->getList(), &QTreeWidget::currentItemChanged, this,
            &SoTabNodeOverview::currentRowChanged);
    connect(added->getList(), &SoMiraboList::columnWidthChanged, this,
            &SoTabNodeOverview::overviewColumnListChanged);
    connect(added, &SoNodeOverview::overrideRequested, this, &SoTabNodeOverview::overrideRequested);
    connect(added, &SoNodeOverview::watchRequested, this, &SoTabNodeOverview::watchRequested);
    connect(added, &SoNodeOverview::nodeRenamed, this, &SoTabNodeOverview::renamed);
    tabNodeOverviewChanged(currentIndex());
    return added;
}

SoNodeOverview* SoTabNodeOverview::overview(int index) const
{
    return qobject_cast<SoNodeOverview*>(widget(index));
}

SoNodeOverview* SoTabNodeOverview::currentOverview() const
{
    return qobject_cast<SoNodeOverview*>(currentWidget());
}

void SoTabNodeOverview::reset()
{
    while (count() > 1)
        tabClose(count() - 1);
    overview(0)->clear();
    setTabText(0, QString());
    setTabIcon(0, QIcon());
}

QTreeWidgetItem* SoTabNodeOverview::currentListItem() const
{
    const SoNodeOverview* current = currentOverview();
    return current ? current->getList()->currentItem() : nullptr;
}

void SoTabNodeOverview::nodeRenamed(SoNode* node)
{
    for (int i = 0; i < count(); ++i)
        overview(i)->nodeNameChanged(node);
}

void SoTabNodeOverview::tabClose(int index)
{
    if (count() <= 1)
        return;
    const int closed = index == -1 ? currentIndex() : index;
    QWidget* page = widget(closed);
    if (!page)
        return;
    removeTab(closed);
    page->deleteLater();
    tabNodeOverviewChanged(currentIndex());
    Q_EMIT closeNodeOverview(closed);
}

void SoTabNodeOverview::tabNodeOverviewChanged(int)
{
    // A lone tab cannot be closed, so it shows no button for it.
    const bool closable = count() > 1;
    if (tabsClosable() != closable)
        setTabsClosable(closable);
    if (QTreeWidgetItem* row = currentListItem())
        Q_EMIT currentRowChanged(row, nullptr);
}

void SoTabNodeOverview::overviewColumnListChanged(int column, int width)
{
    if (m_applyingWidth)
        return; // the other tabs tell of the width just given to them
    m_applyingWidth = true;
    for (int i = 0; i < count(); ++i) {
        SoNodeOverviewList* list = overview(i)->getList();
        list->header()->setSectionResizeMode(column, QHeaderView::Interactive);
        list->setColumnWidth(column, width);
    }
    m_applyingWidth = false;
    // Stored under the number of the column less one, as the lists read it.
    const int stored = column - 1;
    const int kept = stored <= 1 ? width : (width != 0 ? -1 : 0);
    mirabo::writeListColumnWidth(mirabo::kNodeOverviewGroup, stored, kept);
}

void SoTabNodeOverview::applyPreferences(SoNodeOverview* target)
{
    mirabo::StyleTable styles = mirabo::defaultFieldStyles();
    mirabo::readStyles(mirabo::kNodeOverviewGroup, styles);
    target->getList()->setStyles(styles);
    target->getList()->setShowCatalogParts(mirabo::readShowCatalogPart());
}

void SoTabNodeOverview::initPreferences()
{
    setPreferences();
}

void SoTabNodeOverview::setPreferences()
{
    for (int i = 0; i < count(); ++i)
        applyPreferences(overview(i));
}

bool SoTabNodeOverview::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == tabBar() && event->type() == QEvent::MouseButtonRelease) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const int tab = tabBar()->tabAt(mouse->pos());
        if (mouse->button() == Qt::MiddleButton && tab >= 0)
            tabClose(tab);
    }
    return QTabWidget::eventFilter(watched, event);
}
