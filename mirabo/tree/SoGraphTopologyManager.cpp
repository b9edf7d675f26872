#include "mirabo/tree/SoGraphTopologyManager.h"

#include "mirabo/tree/ChildRules.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/SoMiraboTreeView.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/tree/TreeContext.h"
#include "mirabo/tree/TreePatcher.h"

#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/io/SoReadLock.h>
#include <kalmyr/nodes/SoWWWInline.h>
#include <kalmyr/vrml/SoVRMLInline.h>

#include <QScopedValueRollback>
#include <QThread>

#include <algorithm>
#include <utility>

namespace {

std::atomic<bool> s_otherThreadsAllowed{false};

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

/// An edit of a child list, or of the field that stands for it. What other fields hold is compared.
bool isOfChildList(const SoNotification& notification)
{
    return notification.kind >= SoNotification::CHILD_ADDED
           && notification.kind <= SoNotification::ALL_REMOVED
           && (!notification.field
               || static_cast<const SoMNodeField*>(notification.field)->isBound());
}

/// The nodes from the watched one down to the change.
void followChain(const SoNotification& notification, std::vector<const SoNode*>& nodes)
{
    nodes.clear();
    for (const auto* link = notification.chain; link; link = link->below)
        nodes.push_back(asNode(link->container));
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
    : m_view(view),
      m_recorder(*this),
      m_sensor([](void* data, SoSensor*) { static_cast<SoGraphTopologyManager*>(data)->changed(); },
               this)
{
    m_sensor.setPriority(0);
    m_sensor.setDeleteCallback(
        [](void* data, SoSensor*) { static_cast<SoGraphTopologyManager*>(data)->watchedDied(); },
        this);
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

void SoGraphTopologyManager::allowOtherThreads(bool allow)
{
    s_otherThreadsAllowed = allow;
}

void SoGraphTopologyManager::attach(SoNode* node)
{
    if (m_attached)
        m_attached->removeAuditor(&m_recorder);
    m_attached = node;
    m_changes.clear();
    m_lastChange.clear();
    m_recent.begin();
    m_sensor.attach(node);
    if (node)
        node->addAuditor(&m_recorder, SoAuditor::SENSOR);
}

void SoGraphTopologyManager::follow(SoNode* root)
{
    if (m_attached == root)
        return;
    if (m_attached) {
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

/// Runs inside the notification walk, for every change below the watched node.
void SoGraphTopologyManager::record(const SoNotification& notification)
{
    const bool isEdit = isOfChildList(notification);
    if (!isEdit) {
        if (notification.kind == SoNotification::OTHER)
            return;
        if (notification.field && !mirabo::isNodeField(notification.field)) {
            recordValue(notification);
            return;
        }
    }
    if (isOtherThread()) {
        changedElsewhere();
        return;
    }
    SoNode* node = asNode(notification.container);
    if (!node || node->getRefCount() == 0)
        return;
    m_changes.push_back({isEdit ? notification.kind : SoNotification::UNSPECIFIED,
                         notification.index,
                         node,
                         notification.child,
                         notification.field != nullptr,
                         {}});
    if (!isAddition(notification.kind))
        followChain(notification, m_changes.back().chain);
}

/// A value that no row depends on; this may happen very often.
void SoGraphTopologyManager::recordValue(const SoNotification& notification)
{
    if (m_highlighting || isOtherThread())
        return;
    followChain(notification, m_lastChange);
    m_view->showLater(nullptr);
    requestUpdate();
}

/// Runs right after the walk, still inside the call that made the change.
void SoGraphTopologyManager::changed()
{
    if (m_applying || m_changes.empty() || isOtherThread())
        return;
    m_applying = true;
    {
        const SoMiraboTreeView::PatchScope scope(*m_view);
        // A new root in the middle of it empties the list.
        for (std::size_t i = 0; i < m_changes.size(); ++i) {
            const Change change = std::move(m_changes[i]);
            apply(change);
        }
        m_changes.clear();
    }
    m_applying = false;
    if (std::exchange(m_structureChanged, false))
        Q_EMIT structureChanged();
    if (std::exchange(m_contentReplaced, false))
        Q_EMIT contentReplaced();
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
    for (SoTreeViewItem* item : m_view->itemsOf(change.node.get()))
        if (!item->isDisabledNode())
            rowsChanged = applyTo(item, change) || rowsChanged;
    tellWhere(change);
    const mirabo::NodeTraits& traits = mirabo::traitsOf(change.node->getTypeId());
    if ((traits.isFile || traits.isInline) && !change.fromField) {
        m_contentReplaced = true;
        if (change.kind == SoNotification::UNSPECIFIED && !m_fetching)
            m_toFetch.push_back(change.node);
    }
    if (rowsChanged || change.kind != SoNotification::UNSPECIFIED)
        m_structureChanged = true;
}

/// What was added is in sight when its parent is; removals and other changes are gone to.
void SoGraphTopologyManager::tellWhere(const Change& change)
{
    requestUpdate();
    if (m_highlighting || isAddition(change.kind))
        return;
    const bool isEdit = change.kind != SoNotification::UNSPECIFIED;
    if (isEdit && change.kind != SoNotification::CHILD_REMOVED
        && !isEmptied(change.kind, *change.node))
        return;
    m_lastChange.clear();
    m_view->showLater(nullptr);
    if (isEdit)
        m_view->showLater(itemAt(change.chain));
    else
        m_lastChange = change.chain;
}

SoTreeViewItem* SoGraphTopologyManager::takeChangedItem()
{
    const std::vector<const SoNode*> chain = std::exchange(m_lastChange, {});
    SoTreeViewItem* item = chain.empty() ? nullptr : itemAt(chain);
    if (!item || item->isDisabledNode())
        return nullptr;
    // Looking around in the scene moves its camera all the time.
    if (mirabo::categoryOf(item->getNode()->getTypeId()) == mirabo::NodeCategory::Camera)
        return nullptr;
    return m_recent.isNews(item->getNode()) ? item : nullptr;
}

void SoGraphTopologyManager::fetchInlines()
{
    const std::vector<SoRef<SoNode>> nodes = std::exchange(m_toFetch, {});
    if (isVrmlScene())
        return;
    const QScopedValueRollback<bool> fetching(m_fetching, true);
    for (const SoRef<SoNode>& node : nodes)
        fetchContent(node.get());
}

bool SoGraphTopologyManager::applyTo(SoTreeViewItem* item, const Change& change)
{
    mirabo::TreePatcher& patcher = m_view->patcher();
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
        return change.fromField ? patcher.syncFields(item) : patcher.sync(item);
    }
}

void SoGraphTopologyManager::applyToContainer(const Change& change)
{
    const SoChildList* children = m_attached->getInternalChildren();
    if (!children || change.kind == SoNotification::UNSPECIFIED)
        return;
    SoNode* root = m_view->getRoot();
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
        if (!at)
            return item;
    }
    return items.empty() ? nullptr : items.front();
}

/// The watched node is being destroyed; what it holds still lives.
void SoGraphTopologyManager::watchedDied()
{
    const bool wasRoot = m_attached == m_view->getRoot();
    m_attached = nullptr;
    m_changes.clear();
    if (isOtherThread()) {
        m_rootDied = true;
        changedElsewhere();
        return;
    }
    if (wasRoot)
        m_view->setSceneGraph(nullptr);
    else
        follow(m_view->getRoot());
}

void SoGraphTopologyManager::changedElsewhere()
{
    Q_ASSERT_X(s_otherThreadsAllowed, "SoGraphTopologyManager",
               "the scene graph is changed outside of the GUI thread");
    if (!m_changedElsewhere.exchange(true))
        QMetaObject::invokeMethod(
            this, [this] { compareAll(); }, Qt::QueuedConnection);
}

void SoGraphTopologyManager::compareAll()
{
    const SoReadLock lock;
    m_changedElsewhere = false;
    if (m_rootDied) {
        m_view->setSceneGraph(nullptr);
        m_rootDied = false;
    } else {
        const SoMiraboTreeView::PatchScope scope(*m_view);
        m_view->graphChanged();
        m_view->patcher().syncTree();
    }
    requestUpdate();
    Q_EMIT structureChanged();
}

void SoGraphTopologyManager::requestUpdate()
{
    if (!m_timer.isActive())
        m_timer.start(0);
}

void SoGraphTopologyManager::updateTreeViewDisplay()
{
    m_timer.stop();
    m_view->catchUp();
}
