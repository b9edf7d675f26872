#include "mirabo/tree/SoGraphTopologyManager.h"

#include "mirabo/extender/private/Frame.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/tree/ChildRules.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeContext.h"
#include "mirabo/tree/TreePatcher.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNotificationWay.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/io/SoWriteLock.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/vrml/SoVRMLInline.h>

#include <QScopedValueRollback>
#include <QThread>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

SoNode* asNode(SoFieldContainer* container)
{
    return container && container->isOfType(SoNode::getClassTypeId())
               ? static_cast<SoNode*>(container)
               : nullptr;
}

bool isAddition(SoNotification::Kind kind)
{
    return kind == SoNotification::CHILD_ADDED || kind == SoNotification::CHILD_INSERTED
           || kind == SoNotification::CHILD_REPLACED;
}

bool isEdit(SoNotification::Kind kind)
{
    return kind >= SoNotification::CHILD_ADDED && kind <= SoNotification::ALL_REMOVED;
}

/// Asks an inline that has an address, but no content, to fetch it.
void fetchContent(SoNode* node)
{
    if (node->isOfType(SoVRMLInline::getClassTypeId())) {
        auto* link = static_cast<SoVRMLInline*>(node);
        if (!link->getChildData() && link->url.getNum() > 0)
            link->requestChildrenFromURL();
    } else if (node->isOfType(SoWWWInline::getClassTypeId())) {
        auto* link = static_cast<SoWWWInline*>(node);
        if (!link->getChildData() && link->name.getValue().getLength() > 0)
            link->requestURLData();
    }
}

/// A list that is replaced by another is reported as removed, too.
bool isEmptied(SoNotification::Kind kind, const SoNode& node)
{
    const SoChildList* children = node.getInternalChildren();
    return kind == SoNotification::ALL_REMOVED && (!children || children->getLength() == 0);
}

} // namespace

SoGraphTopologyManager::SoGraphTopologyManager(SoMiraboTreeView* view)
    : QObject(view),
      m_view(view),
      m_recorder(*this),
      m_sensor([](void* data, SoSensor*) { static_cast<SoGraphTopologyManager*>(data)->changed(); },
               this)
{
    m_sensor.setPriority(0);
    m_sensor.setDeleteCallback(
        [](void* data, SoSensor*) { static_cast<SoGraphTopologyManager*>(data)->watchedDied(); },
        this);
    m_timer.setParent(this);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &SoGraphTopologyManager::updateTreeViewDisplay);
}

SoGraphTopologyManager::~SoGraphTopologyManager()
{
    attach(nullptr);
}

bool SoGraphTopologyManager::isVrmlScene()
{
    return mirabo::isVrmlScene();
}

void SoGraphTopologyManager::setVrmlScene(bool on)
{
    mirabo::setVrmlScene(on);
}

void SoGraphTopologyManager::attach(SoNode* node)
{
    if (m_attached && !m_watchedDied)
        m_attached->removeAuditor(&m_recorder);
    m_attached = node;
    m_isForContainer = false;
    m_watchedDied = false;
    m_changes.clear();
    m_silences.clear();
    m_lastChange.clear();
    m_recent.begin();
    m_sensor.attach(node);
    if (node)
        node->addAuditor(&m_recorder, SoAuditor::SENSOR);
}

void SoGraphTopologyManager::setContainer(SoGroup* container)
{
    m_container = container;
    if (container)
        container->tellOfDeath();
    m_isContainerNew = true;
    applyContainer();
}

/// Watches the new container, or no container, as soon as the graph may be looked at.
void SoGraphTopologyManager::applyContainer()
{
    const mirabo::GraphReading graph;
    if (!graph || m_patching) {
        requestUpdate();
        return;
    }
    m_view->context().news.deliver();
    if (!m_isContainerNew || !m_view->hasLivingRoot())
        return; // the next root brings it along
    const SoMiraboTreeView::PatchScope scope(*m_view);
    const QScopedValueRollback<bool> patching(m_patching, true);
    follow(m_view->getRoot());
    if (m_view->patcher().syncTops())
        m_view->graphChanged();
}

bool SoGraphTopologyManager::watchesContainer() const
{
    return m_isForContainer && m_container && m_attached == m_container && !m_watchedDied;
}

SoGroup* SoGraphTopologyManager::getContainer() const
{
    return watchesContainer() && m_view->getRoot() ? m_container : nullptr;
}

void SoGraphTopologyManager::follow(SoNode* root)
{
    m_isContainerNew = false;
    if (m_watchedDied && m_attached == m_container)
        m_container = nullptr; // died in another thread, perhaps with the root
    if (m_container && (!root || m_container->findChild(root) >= 0)) {
        if (!watchesContainer())
            attach(m_container);
        m_isForContainer = true;
        auto& context = m_view->context();
        if (!m_container->isNotifyEnabled()) { // observers may have been told already
            context.unheard.emplace(m_container, SoNotification::nextStamp());
            context.anyUnheard = true;
        }
        return;
    }
    if (m_attached && m_attached == root && !m_watchedDied)
        return;
    if (m_attached && !m_watchedDied && !m_isForContainer) {
        const SoChildList* children = m_attached->getInternalChildren();
        // Without a scene for the moment, a container goes on waiting for the next one.
        const bool isContainer = m_attached != m_view->getRoot() && children;
        if (isContainer && (!root || children->find(root) >= 0))
            return;
    }
    attach(root);
}

bool SoGraphTopologyManager::isOtherThread() const
{
    return QThread::currentThread() != thread();
}

/// Whether rows may depend on what changed. The container has no row, only children.
bool SoGraphTopologyManager::concernsRows(const SoNotification& notification) const
{
    if (notification.field && !mirabo::isNodeField(notification.field))
        return false;
    return isEdit(notification.kind)
           || (notification.kind == SoNotification::UNSPECIFIED
               && !(m_isForContainer && notification.container == m_attached));
}

/// Runs inside the notification walk, for every change below the watched node.
void SoGraphTopologyManager::record(const SoNotification& notification)
{
    if (isOtherThread()) {
        recordElsewhere(notification);
        return;
    }
    if (!m_view->context().unheard.empty())
        recordSilences(notification);
    if (!concernsRows(notification)) {
        if (notification.kind != SoNotification::OTHER
            && !(m_isForContainer && notification.container == m_attached))
            recordValue(notification);
        return;
    }
    SoNode* node = asNode(notification.container);
    if (!node || node->getRefCount() == 0)
        return;
    m_changes.push_back(
        {notification.kind, notification.index, node, notification.child, notification.field, {}});
    if (!isAddition(notification.kind))
        followWay(notification, m_changes.back().chain);
}

/// Fills `nodes` with those from the watched one down to the change.
void SoGraphTopologyManager::followWay(const SoNotification& notification,
                                       std::vector<const SoNode*>& nodes)
{
    kalmyr::getWay(notification, m_way);
    nodes.clear();
    for (SoFieldContainer* container : m_way)
        nodes.push_back(asNode(container));
}

/// In a thread that has no business with rows.
void SoGraphTopologyManager::recordElsewhere(const SoNotification& notification)
{
    const mirabo::TreeContext& context = m_view->context();
    if (concernsRows(notification) || context.anyUnheard || context.news.isWaiting())
        changedElsewhere(notification.stamp);
}

/// A value that no row depends on; this may happen very often.
void SoGraphTopologyManager::recordValue(const SoNotification& notification)
{
    if (m_highlighting)
        return;
    followWay(notification, m_lastChange);
    requestUpdate();
}

/// Notes the nodes that the change passes and that kept changes to themselves before.
void SoGraphTopologyManager::recordSilences(const SoNotification& notification)
{
    auto& unheard = m_view->context().unheard;
    kalmyr::getWay(notification, m_way);
    for (SoFieldContainer* container : m_way) {
        SoNode* node = asNode(container);
        const auto at = unheard.find(node);
        if (at == unheard.end() || node->getRefCount() == 0)
            continue;
        m_silences.push_back({SoRef<SoNode>(node), at->second});
        unheard.erase(at);
    }
    m_view->context().anyUnheard = !unheard.empty();
}

/// Runs right after the walk, still inside the call that made the change.
void SoGraphTopologyManager::changed()
{
    if (isOtherThread() || m_applying || (m_changes.empty() && m_silences.empty()))
        return;
    const mirabo::Frame frame; // a listener to the rows may end the tool, or delete the window
    m_applying = true;
    {
        const SoMiraboTreeView::PatchScope scope(*m_view);
        m_view->context().news.deliver();
        // A new root in the middle of it empties the list.
        for (std::size_t i = 0; i < m_changes.size(); ++i) {
            const Change change = std::move(m_changes[i]);
            apply(change);
        }
        m_changes.clear();
        compareSilences();
    }
    m_applying = false;
    if (std::exchange(m_structureChanged, false))
        Q_EMIT structureChanged();
    if (std::exchange(m_contentReplaced, false))
        Q_EMIT contentReplaced();
}

void SoGraphTopologyManager::compareSilences()
{
    if (m_silences.empty())
        return;
    bool isAnotherScene = false;
    SoNode* next = nullptr;
    {
        const QScopedValueRollback<bool> patching(m_patching, true);
        for (std::size_t i = 0; i < m_silences.size(); ++i) {
            const Silence silence = m_silences[i];
            if (watchesContainer() && silence.node == m_container) {
                isAnotherScene = hasAnotherScene(next);
                if (!isAnotherScene && m_view->patcher().syncTopsSince(silence.since))
                    m_structureChanged = true;
            }
            for (SoTreeViewItem* item : m_view->itemsOf(silence.node.get()))
                if (m_view->patcher().syncSince(item, silence.since))
                    m_structureChanged = true;
        }
    }
    m_view->graphChanged();
    m_silences.clear();
    if (isAnotherScene) {
        m_structureChanged = true;
        m_view->setSceneGraph(next);
    }
}

void SoGraphTopologyManager::apply(const Change& change)
{
    if (!change.node)
        return;
    if (change.node == m_attached && m_attached != m_view->getRoot()) {
        applyToContainer(change);
        return;
    }
    m_view->graphChanged();
    bool rowsChanged = false;
    const QTreeWidgetItem* current = m_view->currentItem();
    {
        const QScopedValueRollback<bool> patching(m_patching, true);
        for (SoTreeViewItem* item : m_view->itemsOf(change.node.get()))
            if (!item->isDisabledNode())
                rowsChanged = applyTo(item, change) || rowsChanged;
    }
    tellWhere(change, m_view->currentItem() != current);
    const mirabo::NodeTraits& traits = mirabo::traitsOf(change.node->getTypeId());
    if ((traits.isFile || traits.isInline) && !change.field) {
        m_contentReplaced = true;
        if (change.kind == SoNotification::UNSPECIFIED && !m_fetching)
            m_toFetch.push_back(change.node);
    }
    if (rowsChanged || change.kind != SoNotification::UNSPECIFIED)
        m_structureChanged = true;
}

/// Added nodes are in sight when their parent is; removals and other changes are gone to, unless
/// they come in a stream. Where the current row itself went, there is nothing to disturb.
void SoGraphTopologyManager::tellWhere(const Change& change, bool currentRowWent)
{
    requestUpdate();
    if (m_highlighting || isAddition(change.kind))
        return;
    const bool isRemoval =
        change.kind == SoNotification::CHILD_REMOVED || isEmptied(change.kind, *change.node);
    if (!isRemoval && change.kind != SoNotification::UNSPECIFIED)
        return;
    m_lastChange = change.chain;
    if (isRemoval && currentRowWent)
        m_view->showLater(itemAt(change.chain));
}

SoTreeViewItem* SoGraphTopologyManager::takeChangedItem()
{
    const std::vector<const SoNode*> chain = std::exchange(m_lastChange, {});
    SoTreeViewItem* item = chain.empty() ? nullptr : itemAt(chain);
    if (!item || item->isDisabledNode())
        return nullptr;
    // Looking around in the scene moves its camera all the time.
    if (mirabo::categoryOf(item->getNodeType()) == mirabo::NodeCategory::Camera)
        return nullptr;
    return m_recent.isNews(item->getNode()) ? item : nullptr;
}

void SoGraphTopologyManager::fetchInlines()
{
    if (m_toFetch.empty())
        return;
    const mirabo::GraphReading graph; // no editor is waited for
    if (!graph) {
        requestUpdate();
        return;
    }
    const std::vector<SoRef<SoNode>> nodes = std::exchange(m_toFetch, {});
    const SoWriteLock lock;
    if (!lock || isVrmlScene())
        return;
    const QScopedValueRollback<bool> fetching(m_fetching, true);
    for (const SoRef<SoNode>& node : nodes)
        fetchContent(node.get());
}

bool SoGraphTopologyManager::applyTo(SoTreeViewItem* item, const Change& change)
{
    mirabo::TreePatcher& patcher = m_view->patcher();
    if (change.field)
        return applyToField(item, change);
    switch (change.kind) {
    case SoNotification::CHILD_ADDED:
    case SoNotification::CHILD_INSERTED:
        return patcher.childInserted(item, change.child, change.index);
    case SoNotification::CHILD_REPLACED:
        return patcher.childReplaced(item, change.child, change.index);
    case SoNotification::CHILD_REMOVED:
        return patcher.childRemoved(item, change.child, change.index);
    case SoNotification::ALL_REMOVED:
        return patcher.syncChildren(item);
    default:
        return patcher.sync(item);
    }
}

/// A change of a node field, perhaps one that stands for the child list.
bool SoGraphTopologyManager::applyToField(SoTreeViewItem* item, const Change& change)
{
    mirabo::TreePatcher& patcher = m_view->patcher();
    if (!change.field->isOfType(SoMNodeField::getClassTypeId()))
        return patcher.syncFields(item);
    auto* list = static_cast<SoMNodeField*>(change.field);
    const bool isBound = list->isBound();
    if (!item && !isBound)
        return false;
    switch (change.kind) {
    case SoNotification::CHILD_ADDED:
    case SoNotification::CHILD_INSERTED:
        return isBound ? patcher.childInserted(item, change.child, change.index)
                       : patcher.fieldNodeInserted(item, list, change.index);
    case SoNotification::CHILD_REPLACED:
        return isBound ? patcher.childReplaced(item, change.child, change.index)
                       : patcher.fieldNodeReplaced(item, list, change.index);
    case SoNotification::CHILD_REMOVED:
        return isBound ? patcher.childRemoved(item, change.child, change.index)
                       : patcher.fieldNodeRemoved(item, list, change.child, change.index);
    case SoNotification::ALL_REMOVED:
        return isBound ? patcher.syncChildren(item) : patcher.syncFields(item);
    default:
        return patcher.syncFields(item);
    }
}

void SoGraphTopologyManager::applyToContainer(const Change& change)
{
    const SoChildList* children = m_attached->getInternalChildren();
    if (!children || change.kind == SoNotification::UNSPECIFIED)
        return;
    SoNode* root = m_view->getRoot();
    if (watchesContainer() && root && children->find(root) >= 0) {
        m_view->graphChanged();
        const QScopedValueRollback<bool> patching(m_patching, true);
        if (applyTo(nullptr, change))
            m_structureChanged = true;
        requestUpdate();
        return;
    }
    const bool isAddition =
        change.kind != SoNotification::CHILD_REMOVED && change.kind != SoNotification::ALL_REMOVED;
    const int at = children->find(isAddition ? change.child : root);
    SoNode* next = at >= 0 ? (*children)[at] : nullptr;
    if (change.kind == SoNotification::ALL_REMOVED && !next && children->getLength() > 0)
        next = (*children)[0]; // the whole list was replaced
    if (next == root)
        return;
    m_structureChanged = true;
    m_view->setSceneGraph(next);
}

/// The occurrence in which the change came by: the one whose ancestors are the chain's nodes.
SoTreeViewItem* SoGraphTopologyManager::itemAt(const std::vector<const SoNode*>& chain) const
{
    const std::vector<SoTreeViewItem*> items = m_view->itemsOf(chain.back());
    for (SoTreeViewItem* item : items) {
        if (items.size() == 1)
            return item;
        const SoTreeViewItem* at = item;
        auto link = chain.rbegin();
        while (at && link != chain.rend() && at->getNode() == *link) {
            at = at->parentItem();
            ++link;
        }
        // At most the container stands above the top-level row.
        if (!at && std::distance(link, chain.rend()) <= (m_attached == m_view->getRoot() ? 0 : 1))
            return item;
    }
    return items.empty() ? nullptr : items.front();
}

/// The watched node is being destroyed; what it holds still lives.
void SoGraphTopologyManager::watchedDied()
{
    const mirabo::Frame frame;
    if (isOtherThread()) {
        m_watchedDied = true;
        changedElsewhere(0);
        return;
    }
    const bool wasRoot = m_attached == m_view->getRoot();
    m_attached = nullptr;
    m_changes.clear();
    m_silences.clear();
    if (wasRoot)
        m_view->setSceneGraph(nullptr);
    else if (m_isForContainer)
        containerDied();
    else
        follow(m_view->getRoot());
}

/// The root lives on, at least for the moment; other top-level rows do not.
void SoGraphTopologyManager::containerDied()
{
    m_container = nullptr;
    follow(m_view->getRoot());
    if (m_patching) {
        m_isContainerNew = true;
        requestUpdate();
        return;
    }
    const SoMiraboTreeView::PatchScope scope(*m_view);
    const QScopedValueRollback<bool> patching(m_patching, true);
    if (!m_view->patcher().syncTops())
        return;
    m_view->graphChanged();
    m_structureChangedElsewhere = true; // told in the next pass
    requestUpdate();
}

void SoGraphTopologyManager::nodeDied(const SoNode* node)
{
    if (node == m_container && node != m_attached)
        m_container = nullptr;
    m_recent.forget(node);
    if (std::find(m_lastChange.begin(), m_lastChange.end(), node) != m_lastChange.end())
        m_lastChange.clear();
}

void SoGraphTopologyManager::changedElsewhere(std::uint64_t stamp)
{
    if (!SoDB::isWritelocked() && !m_unlockedReported.exchange(true))
        SoDebugError::post("SoGraphTopologyManager",
                           "the scene graph is changed outside of the GUI thread without the "
                           "write lock");
    std::uint64_t none = 0;
    m_elsewhereSince.compare_exchange_strong(none, stamp);
    if (!m_view->context().changedElsewhere.exchange(true))
        QMetaObject::invokeMethod(
            this, [this] { requestUpdate(); }, Qt::QueuedConnection);
}

void SoGraphTopologyManager::bringUpToDate()
{
    // Within a patch the rows are between two states.
    if (m_applying)
        return;
    m_view->context().news.deliver();
    if (m_watchedDied && m_isForContainer && m_view->rootItem() && !m_view->rootItem()->isDead())
        containerDied();
    if (m_isContainerNew)
        applyContainer();
    compareChangesElsewhere();
    dropDeadRows();
}

bool SoGraphTopologyManager::tryToBringUpToDate()
{
    const mirabo::GraphReading graph;
    if (graph)
        bringUpToDate();
    return static_cast<bool>(graph);
}

void SoGraphTopologyManager::compareChangesElsewhere()
{
    SoNode* next = nullptr;
    if (!m_view->context().changedElsewhere || hasAnotherScene(next))
        return; // another scene is shown by the next pass, as signals go with it
    m_view->context().changedElsewhere = false;
    const std::uint64_t since = m_elsewhereSince.exchange(0);
    m_structureChangedElsewhere = true;
    requestUpdate();
    if (!m_view->rootItem())
        return;
    const SoMiraboTreeView::PatchScope scope(*m_view);
    const QScopedValueRollback<bool> patching(m_patching, true);
    m_view->graphChanged();
    m_view->patcher().syncTopsSince(since);
}

/// Whether another thread has given the watched container another scene, or the root died.
bool SoGraphTopologyManager::hasAnotherScene(SoNode*& next) const
{
    next = nullptr;
    if (!m_view->hasLivingRoot())
        return true;
    if (!m_attached || m_attached == m_view->getRoot())
        return false;
    const SoChildList* children = m_attached->getInternalChildren();
    if (!children || (m_view->getRoot() && children->find(m_view->getRoot()) >= 0))
        return false;
    const std::vector<SoNode*>& nodes = children->getNodes();
    const auto last = std::find_if(nodes.rbegin(), nodes.rend(),
                                   [this](const SoNode* node) { return !isShownAtTop(node); });
    next = last == nodes.rend() ? nullptr : *last;
    return next != m_view->getRoot();
}

/// A further top-level row does not become the root when that goes.
bool SoGraphTopologyManager::isShownAtTop(const SoNode* node) const
{
    for (const SoTreeViewItem* item : m_view->itemsOf(node))
        if (!item->parentItem())
            return true;
    return false;
}

void SoGraphTopologyManager::showAnotherScene()
{
    SoRef<SoNode> next;
    {
        const mirabo::GraphReading graph;
        SoNode* node = nullptr;
        if (!graph || !hasAnotherScene(node))
            return;
        next = node;
        m_view->context().changedElsewhere = false;
        m_elsewhereSince = 0;
        m_structureChangedElsewhere = true;
    }
    m_view->setSceneGraph(next.get());
}

/// Nodes that died without a word of their removal: their rows go with the next comparison.
void SoGraphTopologyManager::dropDeadRows()
{
    const QScopedValueRollback<bool> patching(m_patching, true);
    auto& dead = m_view->context().dead;
    while (!dead.empty() && m_view->hasLivingRoot()) {
        SoTreeViewItem* row = *dead.begin();
        m_view->verify(row);
        dead.erase(row); // gone already, as a rule
    }
}

void SoGraphTopologyManager::setRootLater(SoNode* root)
{
    m_laterRoot = SoRef<SoNode>(root);
    requestUpdate();
}

void SoGraphTopologyManager::requestUpdate()
{
    if (!m_timer.isActive())
        m_timer.start(0);
}

void SoGraphTopologyManager::updateTreeViewDisplay()
{
    m_timer.stop();
    if (const auto root = std::exchange(m_laterRoot, std::nullopt))
        m_view->setSceneGraph(root->get());
    if (!tryToBringUpToDate()) {
        m_timer.start(mirabo::GraphReading::kRetryMilliseconds);
        return;
    }
    if (m_view->context().changedElsewhere || !m_view->hasLivingRoot())
        showAnotherScene();
    if (std::exchange(m_structureChangedElsewhere, false))
        Q_EMIT structureChanged();
    m_view->catchUp();
}
