#include "mirabo/overview/SoTabNodeOverview.h"

#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoNodeOverviewList.h"
#include "mirabo/preferences/Settings.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNode.h>

#include <QHeaderView>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QTabBar>
#include <QToolButton>

SoTabNodeOverview::SoTabNodeOverview(QWidget* parent) : QTabWidget(parent)
{
    setObjectName("SoTabNodeOverview");
    setDocumentMode(true);
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
    const SoNodeOverview* previous = currentOverview();
    auto* added = new SoNodeOverview(this);
    applyPreferences(added);
    added->getList()->setPlaceProvider(m_place);
    if (previous) // as wide as the user has made them
        added->getList()->copyWidths(*previous->getList());
    setCurrentIndex(addTab(added, QString()));
    addCloseButton(added);
    connectOverview(added);
    tabNodeOverviewChanged(currentIndex());
    return added;
}

void SoTabNodeOverview::addCloseButton(SoNodeOverview* added)
{
    // The styles' own buttons are pictures, some of them dark on dark desktops.
    auto* button = new QToolButton(tabBar());
    button->setText(QString(QChar(0xd7)));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setAccessibleName(tr("Close tab"));
    button->setToolTip(tr("Close this tab"));
    const int side = fontMetrics().height();
    button->setFixedSize(side, side);
    connect(button, &QToolButton::clicked, this, [this, added] { tabClose(indexOf(added)); });
    tabBar()->setTabButton(indexOf(added), QTabBar::RightSide, button);
}

void SoTabNodeOverview::connectOverview(SoNodeOverview* added)
{
    SoNodeOverviewList* list = added->getList();
    connect(list, &SoMiraboList::currentRowChanged, this, &SoTabNodeOverview::currentRowChanged);
    connect(list, &SoMiraboList::rowPicked, this,
            [this](QTreeWidgetItem* row) { Q_EMIT currentRowChanged(row, row); });
    connect(list, &SoMiraboList::columnWidthChanged, this,
            &SoTabNodeOverview::overviewColumnListChanged);
    connect(list, &SoMiraboList::fieldDied, this, &SoTabNodeOverview::fieldDied);
    connect(list, &SoNodeOverviewList::watchRequested, this, &SoTabNodeOverview::watchRequested);
    connect(list, &SoNodeOverviewList::ignoreRequested, this, &SoTabNodeOverview::ignoreRequested);
    connect(list, &SoMiraboList::message, this, &SoTabNodeOverview::message);
    connect(list, &SoNodeOverviewList::catalogPartsRequested, this,
            &SoTabNodeOverview::setShowCatalogParts);
    connect(added, &SoNodeOverview::overrideRequested, this, &SoTabNodeOverview::overrideRequested);
    connect(added, &SoNodeOverview::watchRequested, this, &SoTabNodeOverview::watchRequested);
    connect(added, &SoNodeOverview::closeRequested, this,
            [this, added] { tabClose(indexOf(added)); });
    connect(added, &SoNodeOverview::nodeRenamed, this, &SoTabNodeOverview::renamed);
    connect(added, &SoNodeOverview::nodeDied, this, [this, added] { showDeath(added); });
}

SoNodeOverview* SoTabNodeOverview::overview(int index) const
{
    return qobject_cast<SoNodeOverview*>(widget(index));
}

SoNodeOverview* SoTabNodeOverview::currentOverview() const
{
    return qobject_cast<SoNodeOverview*>(currentWidget());
}

int SoTabNodeOverview::indexOfNode(const SoNode* node) const
{
    for (int i = 0; i < count(); ++i)
        if (overview(i)->getNode() == node)
            return i;
    return -1;
}

void SoTabNodeOverview::showTabTitle(int index, const QIcon& icon)
{
    const mirabo::GraphReading graph;
    const SoRef<SoNode> node = graph ? overview(index)->holdNode() : nullptr;
    if (!icon.isNull())
        setTabIcon(index, icon);
    tabBar()->setTabTextColor(index, QColor()); // the palette's
    setTabText(index,
               node ? QString::fromUtf8(node->getTypeId().getName().getString()) : QString());
    showPlace(index);
}

void SoTabNodeOverview::showDeath(SoNodeOverview* page)
{
    const int index = indexOf(page);
    if (index < 0)
        return;
    setTabText(index, tabText(index) + ' ' + tr("(deleted)"));
    setTabToolTip(index, tabText(index));
    tabBar()->setTabTextColor(index, palette().color(QPalette::Disabled, QPalette::WindowText));
}

void SoTabNodeOverview::showPlace(int index)
{
    const mirabo::GraphReading graph;
    const SoNodeOverview* page = index < 0 || !graph ? nullptr : overview(index);
    const SoRef<SoNode> node = page ? page->holdNode() : nullptr;
    if (!node)
        return;
    const QString place = m_place ? m_place(node.get()) : QString();
    setTabToolTip(index, (place.isEmpty() ? tabText(index) : place).toHtmlEscaped());
}

void SoTabNodeOverview::setPlaceProvider(const PlaceProvider& provider)
{
    m_place = provider;
    for (int i = 0; i < count(); ++i)
        overview(i)->getList()->setPlaceProvider(provider);
}

void SoTabNodeOverview::reset()
{
    while (count() > 1)
        tabClose(count() - 1);
    overview(0)->clear();
    showTabTitle(0, QIcon());
    setTabIcon(0, QIcon());
    setTabToolTip(0, QString());
}

QTreeWidgetItem* SoTabNodeOverview::currentListItem() const
{
    const SoNodeOverview* current = currentOverview();
    return current ? current->getList()->currentItem() : nullptr;
}

void SoTabNodeOverview::nodeRenamed(SoNode* node)
{
    for (int i = 0; i < count(); ++i) {
        overview(i)->nodeNameChanged(node);
        showPlace(i); // names of all nodes above are part of it
    }
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
    for (int i = 0; i < count(); ++i)
        if (QWidget* button = tabBar()->tabButton(i, QTabBar::RightSide))
            button->setVisible(count() > 1);
    Q_EMIT currentRowChanged(currentListItem(), nullptr);
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

void SoTabNodeOverview::setShowCatalogParts(bool on)
{
    mirabo::writeShowCatalogPart(on);
    for (int i = 0; i < count(); ++i)
        overview(i)->getList()->setShowCatalogParts(on);
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
    if (watched != tabBar())
        return QTabWidget::eventFilter(watched, event);
    if (event->type() == QEvent::MouseButtonRelease) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const int tab = tabBar()->tabAt(mouse->pos());
        if (mouse->button() == Qt::MiddleButton && tab >= 0)
            tabClose(tab);
    }
    if (event->type() == QEvent::ToolTip) // the node may stand elsewhere by now
        showPlace(tabBar()->tabAt(static_cast<QHelpEvent*>(event)->pos()));
    return QTabWidget::eventFilter(watched, event);
}
