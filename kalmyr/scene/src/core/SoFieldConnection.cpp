#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/fields/SoSFTrigger.h>

#include "core/CacheLock.h"
#include "core/ConnectionSearch.h"
#include "core/LastRites.h"
#include "core/Threads.h"
#include "SoFieldExtra.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace {

/// Errors name at most this many fields of a cycle.
constexpr std::size_t kMaxNamed = 8;
/// Engines that compute inside each other's calls; beyond, what they need is computed first.
constexpr int kMaxNestedPulls = 32;

/// 'Cube "a".width', as far as these are known.
std::string nameOf(const SoField& field)
{
    const SoFieldContainer* container = field.getContainer();
    if (!container)
        return std::string(field.getTypeId().getName().view());
    std::string name(container->getTypeId().getName().view());
    if (!container->getName().isEmpty())
        name += " \"" + std::string(container->getName().view()) + '"';
    return name + '.' + std::string(container->getFieldName(&field).view());
}

/// The search for what a value is made of: a field, and the search step that led to it.
struct Step {
    const SoField* field;
    std::size_t from;
};

/// Adds the fields that `field` gets its value from.
void addSources(const SoField& field, std::size_t step, std::vector<Step>& steps)
{
    if (const SoField* master = field.getConnectedField()) {
        steps.push_back({master, step});
        return;
    }
    const SoFieldContainer* container = field.getContainer();
    if (!container || !container->computes(&field))
        return;
    const SoFieldData* data = container->getFieldData();
    for (int i = 0; data && i < data->getNumFields(); ++i) {
        const SoField* input = data->getField(container, i);
        if (!container->computes(input) && input->isConnected())
            steps.push_back({input, step});
    }
}

/// The fields from `follower` back to itself if it is a source of `master`, else nothing.
std::vector<const SoField*> findCycle(const SoField* follower, const SoField* master)
{
    std::vector<Step> steps{{master, 0}};
    std::unordered_set<const SoField*> seen;
    const SoFieldContainer* computer = follower->getContainer();
    for (std::size_t at = 0; at < steps.size(); ++at) {
        const SoField* field = steps[at].field;
        const bool ownOutput = computer && field->getContainer() == computer
                               && computer->computes(field) && !computer->computes(follower);
        if (field != follower && !ownOutput) {
            if (seen.insert(field).second)
                addSources(*field, at, steps);
            continue;
        }
        std::vector<const SoField*> cycle{follower};
        for (std::size_t back = at; steps[back].field != follower || back != at;
             back = steps[back].from) {
            cycle.push_back(steps[back].field);
            if (back == 0)
                break;
        }
        return cycle;
    }
    return {};
}

std::string describe(const std::vector<const SoField*>& cycle)
{
    std::string text;
    for (std::size_t i = 0; i < cycle.size() && i < kMaxNamed; ++i)
        text += (i ? " -> " : "") + nameOf(*cycle[i]);
    return text + (cycle.size() > kMaxNamed ? " -> ..." : " -> " + nameOf(*cycle.front()));
}

bool isEvent(const SoField& field)
{
    return field.getFieldType() == SoField::EVENT_IN
           || field.isOfType(SoSFTrigger::getClassTypeId());
}

} // namespace

bool SoField::canFollow(const SoField* master) const
{
    if (!kalmyr::holds(master, "a field to follow"))
        return false;
    const SoFieldContainer* container = getContainer();
    const char* reason = nullptr;
    if (!SoFieldConverter::canConvert(master->getTypeId(), getTypeId()))
        reason = "there is no conversion between their types";
    else if (!mayFollow() || (container && container->computes(this)))
        reason = "its value comes from elsewhere";
    if (reason) {
        SoDebugError::post("SoField::connectFrom", "%s (%s) cannot follow %s (%s): %s",
                           nameOf(*this).c_str(), getTypeId().getName().getString(),
                           nameOf(*master).c_str(), master->getTypeId().getName().getString(),
                           reason);
        return false;
    }
    // Nothing can lead back to a field that nobody follows; that keeps building long chains cheap.
    const bool leads = container ? container->m_feeds || master->getContainer() == container
                                 : master == this || getAuditors().getLength() > 0;
    if (!leads || !kalmyr::detail::isMadeOf(*master, *this))
        return true;
    const auto cycle = findCycle(this, master);
    SoDebugError::post("SoField::connectFrom", "%s cannot follow %s: a cycle would close, %s",
                       nameOf(*this).c_str(), nameOf(*master).c_str(), describe(cycle).c_str());
    return false;
}

bool SoField::connectFrom(SoField* master)
{
    if (master)
        master = kalmyr::detail::chooseMaster(master);
    if (!canFollow(master))
        return false;
    // Objects that both the old and the new connection keep alive must survive the change.
    SoFieldContainer* source = master->getContainer();
    if (source && source->computes(master))
        source->ref();
    if (m_extra)
        letGoOfMaster();
    Extra& own = extra();
    own.master = master;
    own.convert = master->getTypeId() == getTypeId()
                      ? nullptr
                      : SoFieldConverter::find(master->getTypeId(), getTypeId());
    // Both have to part before either is half destroyed.
    if (source)
        source->m_feeds = true;
    if (m_container)
        m_container->m_feeds = true;
    master->addAuditor(this, SoAuditor::FIELD);
    changeFlags(kConnectionOff, 0);
    if (isEvent(*this))
        return true; // to be connected is none
    changeFlags(kDefault, kDirty);
    valueChanged(false);
    return true;
}

void SoField::letGoOfMaster()
{
    SoField* master = m_extra->master;
    if (!master)
        return;
    m_extra->master = nullptr;
    m_extra->convert = nullptr;
    changeFlags(kDirty, 0);
    SoFieldContainer* source = master->getContainer();
    const bool kept = source && source->computes(master);
    master->removeAuditor(this);
    if (kept)
        kalmyr::detail::releaseInTurn(source);
}

void SoField::disconnect()
{
    if (!isConnected())
        return;
    evaluate();
    letGoOfMaster();
    changeFlags(kConnectionOff, 0);
    if (isEvent(*this) || !isNotifyEnabled())
        return;
    SoNotification notification;
    notification.keepsValue = true;
    notifyChange(notification);
}

void SoField::releaseFollowers()
{
    // One by one: sensors that are told may take other followers away.
    for (int i = getAuditors().getLength(); --i >= 0;) {
        const SoAuditorList& auditors = getAuditors();
        if (i >= auditors.getLength()) {
            i = auditors.getLength();
            continue;
        }
        if (auditors.getType(i) != SoAuditor::FIELD)
            continue;
        auto* field = static_cast<SoField*>(auditors.getObject(i));
        if (field->getConnectedField() == this)
            field->disconnect();
    }
}

std::vector<SoField*> SoField::getFollowers() const
{
    std::vector<SoField*> followers;
    const SoAuditorList& auditors = getAuditors();
    for (int i = 0; i < auditors.getLength(); ++i) {
        if (auditors.getType(i) != SoAuditor::FIELD)
            continue;
        auto* field = static_cast<SoField*>(auditors.getObject(i));
        if (field->getConnectedField() == this)
            followers.push_back(field);
    }
    return followers;
}

bool SoField::isConnected() const
{
    return m_extra && m_extra->master;
}

SoField* SoField::getConnectedField() const
{
    return m_extra ? m_extra->master : nullptr;
}

void SoField::enableConnection(bool on)
{
    if (on == isConnectionEnabled())
        return;
    if (!on) {
        evaluate();
        changeFlags(0, kConnectionOff);
        return;
    }
    changeFlags(kConnectionOff, 0);
    if (!isConnected() || isEvent(*this))
        return;
    changeFlags(0, kDirty);
    valueChanged(false);
}

/// Logically constant: the value is what the connection says it is.
void SoField::pull() const
{
    const kalmyr::detail::CacheLock lock;
    if (!(flags() & kDirty) || (flags() & kPulling))
        return; // another thread was faster, or an engine looks at an output of its own
    thread_local int t_depth = 0;
    if (t_depth >= kMaxNestedPulls)
        pullSources();
    ++t_depth;
    auto* self = const_cast<SoField*>(this);
    if (isConnected()) {
        self->pullChain();
    } else {
        if (m_container)
            m_container->compute(self);
        changeFlags(kDirty, 0);
    }
    --t_depth;
}

void SoField::pullChain()
{
    // From the top of a chain down, so that its length costs no stack.
    std::vector<SoField*> stale{this};
    SoField* master = m_extra->master;
    for (; (master->flags() & kDirty) && master->isConnected(); master = master->m_extra->master)
        stale.push_back(master);
    master->evaluate();
    for (auto at = stale.rbegin(); at != stale.rend(); ++at)
        (*at)->pullFrom((*at)->m_extra->master);
}

void SoField::pullFrom(const SoField* master)
{
    const bool wasDefault = isDefault(); // connecting decided on it
    changeFlags(0, kPulling);
    if (m_extra->convert)
        m_extra->convert(*master, *this);
    else
        copyFrom(*master);
    setDefault(wasDefault);
    changeFlags(kPulling | kDirty, 0);
}

/// Returns the first direct source of this field's value that is out of date, from number `next`
/// on.
const SoField* SoField::findStaleSource(int& next) const
{
    const auto isStale = [](const SoField* field) {
        return (field->flags() & (kDirty | kPulling)) == kDirty;
    };
    if (isConnected())
        return next++ == 0 && isStale(m_extra->master) ? m_extra->master : nullptr;
    const SoFieldData* data =
        m_container && m_container->computes(this) ? m_container->getFieldData() : nullptr;
    while (data && next < data->getNumFields()) {
        const SoField* input = data->getField(m_container, next++);
        if (!m_container->computes(input) && isStale(input))
            return input;
    }
    return nullptr;
}

/// Brings everything up to date that the value is made of, sources first, so that engines behind
/// engines cost no stack. Only far up: an engine need not read all of its inputs.
void SoField::pullSources() const
{
    struct Step {
        const SoField* field;
        int next;
    };
    std::vector<Step> steps{{this, 0}};
    while (!steps.empty()) {
        if (const SoField* source = steps.back().field->findStaleSource(steps.back().next)) {
            steps.push_back({source, 0});
            continue;
        }
        const SoField* done = steps.back().field;
        steps.pop_back();
        if (done != this)
            done->evaluate();
    }
}
