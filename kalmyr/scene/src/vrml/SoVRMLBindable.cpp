#include <kalmyr/vrml/SoVRMLBindable.h>

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLLOD.h>
#include <kalmyr/vrml/SoVRMLMacros.h>
#include <kalmyr/vrml/SoVRMLSwitch.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

struct Listener {
    SoVRMLBindable::BoundCallback* function;
    void* data;
    bool operator==(const Listener&) const = default;
};

/// The stacks of all worlds in one, since nodes may be put under another root at any time; which
/// world they are of is looked up. Few nodes are ever bound.
struct Stacks {
    std::vector<SoVRMLBindable*> nodes; // Not owned; they go when they die. The last is on top.
    std::vector<Listener> listeners;
    SoOneShotSensor settleLater;
};

Stacks& stacks()
{
    static auto* s = new Stacks; // nodes may outlive statics
    return *s;
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

/// Which of the first nodes come before others.
enum Rank { SHOWN, INLINED, HIDDEN };

bool isHidden(const SoNode& node, int child)
{
    if (node.isOfType(SoVRMLSwitch::getClassTypeId()))
        return static_cast<const SoVRMLSwitch&>(node).whichChoice.getValue() != child;
    return node.isOfType(SoVRMLLOD::getClassTypeId()) && child > 0;
}

Rank rankOf(const SoPath& path)
{
    Rank rank = SHOWN;
    for (int i = 0; i + 1 < path.getLength(); ++i) {
        const SoNode& node = *path.getNode(i);
        if (isHidden(node, path.getIndex(i + 1)))
            return HIDDEN;
        if (node.isOfType(SoVRMLInline::getClassTypeId()))
            rank = INLINED;
    }
    return rank;
}

} // namespace

SO_NODE_SOURCE(SoVRMLBindable)

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
    Stacks& s = stacks();
    std::erase(s.nodes, this);
    // What is bound next cannot be told while this one goes.
    if (isBound.getValue()) {
        s.settleLater.setFunction([](void*, SoSensor*) { settleAll(); });
        s.settleLater.schedule();
    }
}

void SoVRMLBindable::initClass()
{
    SO_NODE_INIT_ABSTRACT_CLASS(SoVRMLBindable, SoNode, "VRMLBindable");
}

void SoVRMLBindable::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoNode::copyContents(from, copier);
    isBound = false;
    isBound.setDefault(true);
}

SoVRMLBindable* SoVRMLBindable::getBound(const SoNode* node, SoType type)
{
    const SoNode* world = node ? worldOf(node) : nullptr;
    const auto& nodes = stacks().nodes;
    const auto found = std::find_if(nodes.rbegin(), nodes.rend(), [&](const auto* one) {
        return one->getTypeId() == type && worldOf(one) == world;
    });
    return found == nodes.rend() ? nullptr : *found;
}

bool SoVRMLBindable::isInForce() const
{
    const auto& nodes = stacks().nodes;
    const bool isAlone = std::none_of(nodes.begin(), nodes.end(), [this](const auto* one) {
        return one->getTypeId() == getTypeId();
    });
    if (isAlone || isBound.getValue())
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
    std::vector<SoVRMLBindable*>& nodes = stacks().nodes;
    if (!on && !m_isStacked)
        return;
    std::erase(nodes, this);
    if (on)
        nodes.push_back(this);
    m_isStacked = on;
    if (!on)
        tellBound(false);
    settle(worldOf(this), getTypeId());
}

void SoVRMLBindable::settle(const SoNode* world, SoType type)
{
    std::vector<SoRef<SoVRMLBindable>> others;
    for (SoVRMLBindable* one : stacks().nodes)
        if (one->getTypeId() == type && worldOf(one) == world)
            others.emplace_back(one);
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
    const auto& nodes = stacks().nodes;
    const std::vector<SoRef<SoVRMLBindable>> all(nodes.begin(), nodes.end());
    for (const auto& one : all) {
        const std::pair key(worldOf(one.get()), one->getTypeId());
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
    const std::vector<Listener> listeners = stacks().listeners;
    for (const Listener& one : listeners)
        one.function(one.data, this);
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
    for (const Rank rank : {SHOWN, INLINED, HIDDEN})
        for (const SoRef<SoPath>& path : search.getPaths())
            if (rankOf(*path) == rank)
                found.emplace_back(static_cast<SoVRMLBindable*>(path->getTail()));
    std::vector<SoType> known;
    for (const auto& one : found) {
        if (std::find(known.begin(), known.end(), one->getTypeId()) != known.end())
            continue;
        known.push_back(one->getTypeId());
        if (!getBound(one.get(), one->getTypeId()))
            one->set_bind = true;
    }
}

void SoVRMLBindable::addBoundCallback(BoundCallback* function, void* data)
{
    stacks().listeners.push_back({function, data});
}

void SoVRMLBindable::removeBoundCallback(BoundCallback* function, void* data)
{
    std::erase(stacks().listeners, Listener{function, data});
}
