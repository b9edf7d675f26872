#include "mirabo/overview/SoMiraboEdition.h"

#include "mirabo/core/SoMiraboStateManager.h"
#include "mirabo/overview/SoFieldIgnoreCommand.h"
#include "mirabo/overview/SoFieldItem.h"
#include "mirabo/overview/SoFieldWatch.h"
#include "mirabo/overview/SoFieldWatchState.h"
#include "mirabo/overview/SoNodeOverrideCommand.h"
#include "mirabo/overview/SoNodeOverview.h"
#include "mirabo/overview/SoNodeOverviewList.h"
#include "mirabo/overview/SoTabNodeOverview.h"

#include <kalmyr/core/SoField.h>
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
    connectTabs();
    connect(m_watch, &SoFieldWatch::rowChosen, this, &SoMiraboEdition::watchRowChosen);
    connect(m_watch, &SoMiraboList::rowPicked, this, &SoMiraboEdition::watchRowChosen);
    connect(m_watch, &SoMiraboList::fieldDied, this, &SoMiraboEdition::forgetField);
}

SoMiraboEdition::~SoMiraboEdition() = default;

void SoMiraboEdition::connectTabs()
{
    connect(m_tabs, &SoTabNodeOverview::currentRowChanged, this, &SoMiraboEdition::setField);
    connect(m_tabs, &SoTabNodeOverview::fieldDied, this, &SoMiraboEdition::forgetField);
    connect(m_tabs, &SoTabNodeOverview::clearFieldEditorEvent, this,
            &SoMiraboEdition::clearFieldEditorEvent);
    connect(m_tabs, &SoTabNodeOverview::overrideRequested, this,
            &SoMiraboEdition::overrideRequested);
    connect(m_tabs, &SoTabNodeOverview::ignoreRequested, this, &SoMiraboEdition::ignoreRequested);
    connect(m_tabs, &SoTabNodeOverview::watchRequested, this, &SoMiraboEdition::addFieldWatch);
    connect(m_tabs, &SoTabNodeOverview::renamed, this, [this](SoNode* node) {
        m_tabs->nodeRenamed(node);
        m_watch->updateNodeName(node);
        Q_EMIT nodeRenamed(node);
    });
}

SoTabNodeOverview* SoMiraboEdition::getTabs() const
{
    return m_tabs;
}

SoFieldWatch* SoMiraboEdition::getWatch() const
{
    return m_watch;
}

void SoMiraboEdition::setPlaceProvider(const PlaceProvider& provider)
{
    m_tabs->setPlaceProvider(provider);
    m_watch->setPlaceProvider(provider);
}

void SoMiraboEdition::showNode(SoNode* node, SoNode* kit, bool newTab)
{
    if (!node || !m_tabs)
        return;
    m_overviewDock->show();
    m_watchDock->show();
    m_showing = true;
    if (newTab)
        m_tabs->addOverview();
    showInCurrentTab(node, kit);
    m_showing = false;
}

void SoMiraboEdition::bringUp(SoNode* node)
{
    const int shown = node && m_tabs ? m_tabs->indexOfNode(node) : -1;
    if (shown < 0) {
        showNode(node, nullptr, false);
        return;
    }
    m_overviewDock->show();
    m_tabs->setCurrentIndex(shown);
}

void SoMiraboEdition::showInCurrentTab(SoNode* node, SoNode* kit)
{
    SoNodeOverview* overview = m_tabs->currentOverview();
    overview->setNode(node, kit);
    m_tabs->showTabTitle(m_tabs->currentIndex(), m_icons ? m_icons(node->getTypeId()) : QIcon());
    if (SoFieldItem* first = overview->getList()->firstEnabledItem())
        overview->getList()->chooseRow(first);
    else
        Q_EMIT m_tabs->clearFieldEditorEvent();
}

SoNode* SoMiraboEdition::getNode() const
{
    const SoNodeOverview* overview = m_tabs ? m_tabs->currentOverview() : nullptr;
    return overview ? overview->getNode() : nullptr;
}

void SoMiraboEdition::clear()
{
    if (m_watch)
        m_watch->setNode(nullptr);
    if (m_tabs)
        m_tabs->reset();
    if (m_selectedField)
        selectField(nullptr);
}

void SoMiraboEdition::refresh()
{
    for (int i = 0; m_tabs && i < m_tabs->count(); ++i)
        m_tabs->overview(i)->refreshName();
    if (m_watch)
        m_watch->updateNodeNames();
}

void SoMiraboEdition::selectField(SoField* field)
{
    m_selectedField = field;
    m_selectedInWatch = false;
    // Its row may be gone by the time when it dies.
    m_selectedGuard.reset();
    if (field)
        m_selectedGuard =
            std::make_unique<mirabo::DeathGuard<SoField>>(field, [this] { selectField(nullptr); });
    Q_EMIT fieldSelected(field);
}

void SoMiraboEdition::pickField(SoField* field)
{
    selectField(field);
    if (!m_showing)
        Q_EMIT fieldPicked(m_selectedField); // a listener may have taken it already
}

void SoMiraboEdition::watchRowChosen(QTreeWidgetItem* row)
{
    if (!row && !m_selectedInWatch)
        return; // the selected field is one of the overview
    pickField(row ? static_cast<SoFieldItem*>(row)->getField() : nullptr);
    m_selectedInWatch = row;
}

void SoMiraboEdition::forgetField(const SoField* field)
{
    if (field && field == m_selectedField)
        selectField(nullptr);
}

void SoMiraboEdition::setField(QTreeWidgetItem* current, QTreeWidgetItem*)
{
    SoNodeOverview* overview = current && m_tabs ? m_tabs->currentOverview() : nullptr;
    if (overview && current->treeWidget() == overview->getList())
        overview->setWatchEnabled(true);
    pickField(current ? static_cast<SoFieldItem*>(current)->getField() : nullptr);
}

void SoMiraboEdition::addFieldWatch()
{
    if (!m_tabs || !m_watch)
        return;
    if (const auto* row = static_cast<SoFieldItem*>(m_tabs->currentListItem()))
        m_watch->addField(*row);
}

void SoMiraboEdition::setPreferences()
{
    if (m_tabs)
        m_tabs->setPreferences();
    if (m_watch)
        m_watch->setPreferences();
}

void SoMiraboEdition::createFieldWatchState(QAction* deleteAction, SoCommandManager* hub)
{
    m_watch->setFieldWatchState(new SoFieldWatchState(m_watch, deleteAction, hub));
}

void SoMiraboEdition::enterFieldWatchState()
{
    SoMiraboStateManager::setCurrentState(SoFieldWatchState::kName);
}

MrbCommand* SoMiraboEdition::makeOverrideCommand(bool on) const
{
    SoNode* node = getNode();
    return node ? new SoNodeOverrideCommand(node, on) : nullptr;
}

MrbCommand* SoMiraboEdition::makeIgnoreCommand() const
{
    if (!m_selectedField || !m_selectedField->getContainer())
        return nullptr;
    return new SoFieldIgnoreCommand(m_selectedField, !m_selectedField->isIgnored());
}
