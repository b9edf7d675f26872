#include "mirabo/overview/SoMiraboEdition.h"

#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoFieldWatch.h"
#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoNodeOverviewList.h"
#include "mirabo/overview/SoTabNodeOverview.h"

#include <kalmyr/core/SoNode.h>

#include <QDockWidget>

SoMiraboEdition::SoMiraboEdition(QDockWidget* overviewDock, QDockWidget* watchDock)
    : m_overviewDock(overviewDock),
      m_watchDock(watchDock),
      m_tabs(new SoTabNodeOverview(overviewDock)),
      m_watch(new SoFieldWatch(watchDock))
{
    m_watch->setObjectName("m_fieldWatch");
    overviewDock->setWidget(m_tabs);
    watchDock->setWidget(m_watch);
    connect(m_tabs, &SoTabNodeOverview::currentRowChanged, this, &SoMiraboEdition::setField);
    connect(m_tabs, &SoTabNodeOverview::clearFieldEditorEvent, this,
            &SoMiraboEdition::clearFieldEditorEvent);
    connect(m_tabs, &SoTabNodeOverview::overrideRequested, this,
            &SoMiraboEdition::overrideRequested);
    connect(m_tabs, &SoTabNodeOverview::watchRequested, this, &SoMiraboEdition::addFieldWatch);
    connect(m_tabs, &SoTabNodeOverview::renamed, this, [this](SoNode* node) {
        m_tabs->nodeRenamed(node);
        Q_EMIT nodeRenamed(node);
    });
}

SoMiraboEdition::~SoMiraboEdition() = default;

void SoMiraboEdition::showNode(SoNode* node, SoNode* kit, bool newTab)
{
    if (!node)
        return;
    m_overviewDock->show();
    m_watchDock->show();
    if (newTab)
        m_tabs->addOverview();
    showInCurrentTab(node, kit);
}

void SoMiraboEdition::showInCurrentTab(SoNode* node, SoNode* kit)
{
    SoNodeOverview* overview = m_tabs->currentOverview();
    overview->setNode(node, kit);
    if (!overview->getList()->firstEnabledItem())
        Q_EMIT m_tabs->clearFieldEditorEvent();
    const int tab = m_tabs->currentIndex();
    if (m_icons)
        m_tabs->setTabIcon(tab, m_icons(node->getTypeId()));
    m_tabs->setTabText(tab, QString::fromUtf8(node->getTypeId().getName().getString()));
}

SoNode* SoMiraboEdition::getNode() const
{
    const SoNodeOverview* overview = m_tabs->currentOverview();
    return overview ? overview->getNode() : nullptr;
}

void SoMiraboEdition::clear()
{
    m_watch->clear();
    m_tabs->reset();
}

void SoMiraboEdition::setField(QTreeWidgetItem* current, QTreeWidgetItem*)
{
    if (!current) {
        Q_EMIT fieldSelected(nullptr);
        return;
    }
    if (SoNodeOverview* overview = m_tabs->currentOverview())
        overview->setWatchEnabled(true);
    Q_EMIT fieldSelected(static_cast<SoFieldItem*>(current)->getField());
}

void SoMiraboEdition::addFieldWatch()
{
    if (const auto* row = static_cast<SoFieldItem*>(m_tabs->currentListItem()))
        m_watch->addField(*row);
}
