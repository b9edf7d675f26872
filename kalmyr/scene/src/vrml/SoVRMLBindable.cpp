#include <kalmyr/vrml/SoVRMLBindable.h>

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/core/SoRecursiveRWLock.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLMacros.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include "core/Threads.h"
#include "vrml/PathRank.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

using kalmyr::detail::sceneLock;
using kalmyr::detail::threadNumber;

namespace {

/// Somebody who is told in the thread that added it: of what others bind there, later.
struct Listener {
    SoVRMLBindable::BoundCallback* function;
    void* data;
    std::uint32_t thread;
    SoOneShotSensor later;
    std::vector<SoRef<SoVRMLBindable>> bound; ///< by other threads, not told yet

    Listener(SoVRMLBindable::BoundCallback* f, void* d)
        : function(f), data(d), thread(threadNumber()), later(&tellLater, this)
    {
    }
    static void tellLater(void* self, SoSensor*);
};

/// A node on a stack, and the thread that owns its graph; 0 where the write lock guards it.
struct Stacked {
    SoVRMLBindable* node; // Not owned; it goes when it dies.
    SoType type;
    std::uint32_t owner;
};

/// The stacks of all worlds in one, since nodes may be put under another root at any time; which
/// world they are of is looked up. Few nodes are ever bound. Which nodes a thread may look at is
/// written beside them: those of others may be changing.
struct Stacks {
    std::mutex mutex;
    std::vector<Stacked> nodes; // The last is on top.
    std::vector<std::shared_ptr<Listener>> listeners;
};

Stacks& stacks()
{
    static auto* s = new Stacks; // nodes may outlive statics
    return *s;
}

/// Owner of what this thread edits now.
std::uint32_t ownerNow()
{
    return kalmyr::detail::isOnlyThread() || kalmyr::detail::isEditingShared() ? 0 : threadNumber();
}

/// Viewpoints of both kinds are bound in one stack.
SoType stackOf(SoType type)
{
    const SoType geo = SoVRMLGeoViewpoint::getClassTypeId();
    return !type.isBad() && type == geo ? SoVRMLViewpoint::getClassTypeId() : type;
}

/// The stacked nodes of a type that this thread may look at, as long as this object lives. While
/// another thread edits, what this one reads without the lock is its own.
class Visible {
public:
    explicit Visible(SoType type)
    {
        const auto fits = [stack = stackOf(type)](const Stacked& one) {
            return stack.isBad() || one.type == stack;
        };
        if (hasAny([&](const Stacked& one) { return one.owner == 0 && fits(one); }))
            m_guardsShared = sceneLock().tryReadLock();
        const std::scoped_lock lock(stacks().mutex);
        for (const Stacked& one : stacks().nodes) {
            const bool isOwn = one.owner != 0 && one.owner == threadNumber();
            const bool isShared = one.owner == 0 && m_guardsShared;
            if ((isOwn || isShared) && fits(one))
                m_nodes.push_back(one.node);
        }
    }
    ~Visible()
    {
        if (m_guardsShared)
            sceneLock().readUnlock();
    }
    Visible(const Visible&) = delete;
    Visible& operator=(const Visible&) = delete;

    const std::vector<SoVRMLBindable*>& nodes() const { return m_nodes; }

private:
    template <class Test>
    static bool hasAny(Test test)
    {
        const std::scoped_lock lock(stacks().mutex);
        const auto& nodes = stacks().nodes;
        return std::any_of(nodes.begin(), nodes.end(), test);
    }

    bool m_guardsShared = false;
    std::vector<SoVRMLBindable*> m_nodes;
};

void push(SoVRMLBindable* node)
{
    const std::scoped_lock lock(stacks().mutex);
    stacks().nodes.push_back({node, stackOf(node->getTypeId()), ownerNow()});
}

void take(const SoVRMLBindable* node)
{
    const std::scoped_lock lock(stacks().mutex);
    std::erase_if(stacks().nodes, [node](const Stacked& one) { return one.node == node; });
}

/// Lets all threads find the nodes that this one bound in its own graphs.
void handOverStacks(kalmyr::detail::HandOver)
{
    const std::scoped_lock lock(stacks().mutex);
    for (Stacked& one : stacks().nodes)
        if (one.owner == threadNumber())
            one.owner = 0;
}

std::vector<std::shared_ptr<Listener>> listenersNow()
{
    const std::scoped_lock lock(stacks().mutex);
    return stacks().listeners;
}

/// Null once it was removed.
std::shared_ptr<Listener> findListener(const void* one)
{
    for (const auto& listener : listenersNow())
        if (listener.get() == one)
            return listener;
    return nullptr;
}

void Listener::tellLater(void* self, SoSensor* sensor)
{
    const kalmyr::detail::SharedEdit edit(SoSensorManager::isApplicationThread());
    if (!edit) {
        sensor->schedule(); // somebody reads
        return;
    }
    std::vector<SoRef<SoVRMLBindable>> nodes;
    const std::shared_ptr<Listener> listener = findListener(self);
    {
        const std::scoped_lock lock(stacks().mutex);
        nodes.swap(listener->bound);
    }
    for (const auto& node : nodes) {
        if (!findListener(self))
            return; // whoever was told before has removed it
        if (node->isBound.getValue())
            listener->function(listener->data, node.get());
    }
}

const SoNode* holderOf(const SoAuditorList::Entry& entry)
{
    if (entry.type == SoAuditor::PARENT)
        return static_cast<const SoChildList*>(entry.auditor)->getParent();
    const SoFieldContainer* container =
        entry.type == SoAuditor::FIELD ? static_cast<const SoField*>(entry.auditor)->getContainer()
                                       : nullptr;
    return container && container->isOfType(SoNode::getClassTypeId())
               ? static_cast<const SoNode*>(container)
               : nullptr;
}

/// The topmost node above, by the first parent everywhere; a field's node only where there is no
/// parent.
const SoNode* worldOf(const SoNode* node)
{
    for (const SoNode* above = node; above;) {
        node = above;
        above = nullptr;
        const SoAuditorList& auditors = node->getAuditors();
        for (int i = 0; i < auditors.getLength(); ++i) {
            const SoNode* holder = holderOf(auditors[i]);
            if (holder && (!above || auditors[i].type == SoAuditor::PARENT))
                above = holder;
            if (holder && auditors[i].type == SoAuditor::PARENT)
                break;
        }
    }
    return node;
}

} // namespace

SO_NODE_SOURCE(SoVRMLBindable)

/// Binds what comes next after a bound node has died. Deletes itself.
class SoVRMLBindable::SettleLater {
public:
    SettleLater() : m_sensor(&run, this)
    {
        m_sensor.setPartOfGraph();
        m_sensor.schedule();
    }

private:
    static void run(void* self, SoSensor* sensor)
    {
        const kalmyr::detail::SharedEdit edit(SoSensorManager::isApplicationThread());
        if (!edit) {
            sensor->schedule();
            return;
        }
        delete static_cast<SettleLater*>(self);
        settleAll();
    }

    SoOneShotSensor m_sensor;
};

SoVRMLBindable::SoVRMLBindable()
    : m_sensor([](void* self, SoSensor*) { static_cast<SoVRMLBindable*>(self)->bindOrRelease(); },
               this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(set_bind);
    SO_VRML_EVENT_OUT(isBound);
    m_sensor.setPriority(0);
    m_sensor.attach(&set_bind);
}

SoVRMLBindable::~SoVRMLBindable()
{
    m_sensor.detach();
    if (!m_isStacked)
        return;
    take(this);
    // The node that is bound next cannot be told while this one goes.
    if (isBound.getValue() && !Visible(SoType()).nodes().empty())
        new SettleLater;
}

void SoVRMLBindable::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoVRMLBindable, SoNode, "VRMLBindable");
    kalmyr::detail::addHandOver(&handOverStacks);
}

void SoVRMLBindable::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoNode::copyContents(from, copier);
    isBound = false;
    isBound.setDefault(true);
}

SoVRMLBindable* SoVRMLBindable::getBound(const SoNode* node, SoType type)
{
    const Visible visible(type);
    const auto& nodes = visible.nodes();
    if (!node || nodes.empty())
        return nullptr;
    const SoNode* world = worldOf(node);
    const auto found = std::find_if(nodes.rbegin(), nodes.rend(),
                                    [&](const auto* one) { return worldOf(one) == world; });
    return found == nodes.rend() ? nullptr : *found;
}

bool SoVRMLBindable::isInForce() const
{
    if (isBound.getValue())
        return true;
    const SoVRMLBindable* bound = getBound(this, getTypeId());
    return !bound || bound == this;
}

bool SoVRMLBindable::isInWorldOf(const SoNode* other) const
{
    return worldOf(this) == worldOf(other);
}

void SoVRMLBindable::bindOrRelease()
{
    const bool on = set_bind.getValue();
    const bool told = set_bind.enableNotify(false);
    set_bind = false; // an event leaves nothing behind
    set_bind.setDefault(true);
    set_bind.enableNotify(told);
    if (getRefCount() == 0 || !m_cascade.mayReact())
        return;
    const SoRef<SoVRMLBindable> self(this); // whoever is told may drop us
    if (!on && !m_isStacked)
        return;
    take(this);
    if (on)
        push(this);
    m_isStacked = on;
    if (!on)
        tellBound(false);
    settle(worldOf(this), getTypeId());
}

void SoVRMLBindable::settle(const SoNode* world, SoType type)
{
    std::vector<SoRef<SoVRMLBindable>> others;
    {
        const Visible visible(type);
        for (SoVRMLBindable* one : visible.nodes())
            if (worldOf(one) == world)
                others.emplace_back(one);
    }
    if (others.empty())
        return;
    const SoRef<SoVRMLBindable> top = others.back();
    others.pop_back();
    // Whoever is told may bind others meanwhile.
    for (const auto& one : others)
        if (getBound(one.get(), type) != one.get())
            one->tellBound(false);
    if (getBound(top.get(), type) == top.get())
        top->tellBound(true);
}

void SoVRMLBindable::settleAll()
{
    std::vector<std::pair<const SoNode*, SoType>> done;
    std::vector<SoRef<SoVRMLBindable>> all;
    {
        const Visible visible{SoType()};
        all.assign(visible.nodes().begin(), visible.nodes().end());
    }
    for (const auto& one : all) {
        const std::pair key(worldOf(one.get()), stackOf(one->getTypeId()));
        if (std::find(done.begin(), done.end(), key) != done.end())
            continue;
        done.push_back(key);
        settle(key.first, key.second);
    }
}

void SoVRMLBindable::tellBound(bool on)
{
    if (isBound.getValue() == on)
        return;
    boundChanged(SbTime::getTimeOfDay());
    isBound = on;
    if (!on)
        return;
    for (const auto& one : listenersNow()) {
        if (one->thread == threadNumber()) {
            if (findListener(one.get()))
                one->function(one->data, this);
        } else if (kalmyr::detail::isEditingShared()) {
            {
                const std::scoped_lock lock(stacks().mutex);
                one->bound.emplace_back(this);
            }
            one->later.schedule();
        }
    }
}

void SoVRMLBindable::bindFirst(SoNode* world)
{
    if (!world || getClassTypeId().isBad())
        return;
    SoSearchAction search;
    search.setType(getClassTypeId());
    search.setInterest(SoSearchAction::ALL);
    search.setSearchingAll(true); // parts of prototypes as well
    search.apply(world);
    std::vector<SoRef<SoVRMLBindable>> found;
    for (const SoPath* path : kalmyr::detail::rankedPaths(search))
        found.emplace_back(static_cast<SoVRMLBindable*>(path->getTail()));
    std::vector<SoType> known;
    for (const auto& one : found) {
        const SoType stack = stackOf(one->getTypeId());
        if (std::find(known.begin(), known.end(), stack) != known.end())
            continue;
        known.push_back(stack);
        if (!getBound(one.get(), stack))
            one->set_bind = true;
    }
}

void SoVRMLBindable::addBoundCallback(BoundCallback* function, void* data)
{
    auto listener = std::make_shared<Listener>(function, data);
    const std::scoped_lock lock(stacks().mutex);
    stacks().listeners.push_back(std::move(listener));
}

void SoVRMLBindable::removeBoundCallback(BoundCallback* function, void* data)
{
    std::vector<std::shared_ptr<Listener>> removed; // they let go of nodes
    const std::scoped_lock lock(stacks().mutex);
    auto& all = stacks().listeners;
    const auto end = std::stable_partition(all.begin(), all.end(), [&](const auto& one) {
        return one->function != function || one->data != data;
    });
    removed.assign(end, all.end());
    all.erase(end, all.end());
}
