#include "mirabo/overview/SoMiraboEdition.h"

#include "mirabo/core/SoMiraboStateManager.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/extender/private/Later.h"
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
    connect(m_watch, &SoMiraboList::message, this, &SoMiraboEdition::message);
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
    connect(m_tabs, &SoTabNodeOverview::message, this, &SoMiraboEdition::message);
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
    {
        const mirabo::GraphReading graph;
        const SoRef<SoNode> keptNode(node);
        const SoRef<SoNode> keptKit(kit);
        if (graph) {
            showWhole(node, kit, newTab);
        } else {
            mirabo::callLater(this, mirabo::GraphReading::kRetryMilliseconds,
                              [this, keptNode, keptKit, newTab] {
                                  showNode(keptNode.get(), keptKit.get(), newTab);
                              });
            return;
        }
    }
    chooseFirstRow();
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

/// All but the choice of a field, which others are told of.
void SoMiraboEdition::showWhole(SoNode* node, SoNode* kit, bool newTab)
{
    m_filling = true;
    if (newTab)
        m_tabs->addOverview();
    m_tabs->currentOverview()->setNode(node, kit);
    m_tabs->showTabTitle(m_tabs->currentIndex(), m_icons ? m_icons(node->getTypeId()) : QIcon());
    m_filling = false;
}

void SoMiraboEdition::chooseFirstRow()
{
    SoNodeOverviewList* list = m_tabs->currentOverview()->getList();
    SoFieldItem* first = list->firstEnabledItem();
    const QPointer<SoMiraboEdition> self(this);
    m_showing = true;
    if (first) {
        list->chooseRow(first);
    } else {
        setField(nullptr, nullptr);
        if (self)
            Q_EMIT m_tabs->clearFieldEditorEvent();
    }
    if (self)
        m_showing = false;
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
        deselectField();
}

void SoMiraboEdition::refresh()
{
    for (int i = 0; m_tabs && i < m_tabs->count(); ++i)
        m_tabs->overview(i)->refreshAll();
    if (!m_watch)
        return;
    m_watch->updateNodeNames();
    m_watch->updateField(nullptr);
}

/// Its row may be gone by the time when it dies.
void SoMiraboEdition::followField(SoField* field)
{
    m_selectedInWatch = false;
    m_selectedFollower.release();
    m_selectedField = field;
    if (field
        && !m_selectedFollower.follow(field, {.dying = [this] { m_selectedField = nullptr; },
                                              .died = [this] { deselectField(); }}))
        m_selectedField = nullptr;
}

void SoMiraboEdition::deselectField()
{
    followField(nullptr);
    Q_EMIT fieldSelected(nullptr);
}

void SoMiraboEdition::pickLater(QTreeWidget* list, bool inWatch)
{
    // Whichever row is the current one when the other thread has edited.
    mirabo::callLater(this, mirabo::GraphReading::kRetryMilliseconds,
                      [this, list = QPointer(list), inWatch] {
                          if (list && list->currentItem())
                              pickField(list->currentItem(), inWatch);
                      });
}

void SoMiraboEdition::pickField(QTreeWidgetItem* row, bool inWatch)
{
    if (row) {
        const SoFieldItem::Look look(*static_cast<SoFieldItem*>(row));
        if (!look.isPossible()) {
            pickLater(row->treeWidget(), inWatch);
            return;
        }
        followField(look.field());
    } else {
        followField(nullptr);
    }
    const QPointer<SoMiraboEdition> self(this);
    Q_EMIT fieldSelected(m_selectedField);
    if (!self)
        return;
    m_selectedInWatch = inWatch && row;
    if (!m_showing)
        Q_EMIT fieldPicked(m_selectedField); // a listener may have taken it already
}

void SoMiraboEdition::watchRowChosen(QTreeWidgetItem* row)
{
    if (!row && !m_selectedInWatch)
        return; // the selected field is one of the overview
    pickField(row, true);
}

void SoMiraboEdition::forgetField(const SoField* field)
{
    if (field && field == m_selectedField)
        deselectField();
}

void SoMiraboEdition::setField(QTreeWidgetItem* current, QTreeWidgetItem*)
{
    if (m_filling)
        return;
    SoNodeOverview* overview = current && m_tabs ? m_tabs->currentOverview() : nullptr;
    if (overview && current->treeWidget() == overview->getList())
        overview->setWatchEnabled(true);
    pickField(current, false);
}

void SoMiraboEdition::addFieldWatch()
{
    if (!m_tabs || !m_watch)
        return;
    mirabo::whenReadable(this, [this] {
        const auto* row =
            m_tabs && m_watch ? static_cast<SoFieldItem*>(m_tabs->currentListItem()) : nullptr;
        if (row)
            m_watch->addField(*row);
    });
}

void SoMiraboEdition::setPreferences()
{
    if (m_tabs)
        m_tabs->setPreferences();
    if (m_watch)
        m_watch->setPreferences();
}

void SoMiraboEdition::createFieldWatchState(SoCommandManager* hub)
{
    m_watch->setFieldWatchState(new SoFieldWatchState(m_watch, hub));
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
    const mirabo::GraphReading graph;
    const SoRef<const SoRefCounter> held = m_selectedFollower.hold();
    SoField* field = graph && held ? m_selectedField.load() : nullptr;
    if (!field || !field->getContainer())
        return nullptr;
    return new SoFieldIgnoreCommand(field, !field->isIgnored());
}
