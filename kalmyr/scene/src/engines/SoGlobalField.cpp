#include <kalmyr/engines/SoGlobalField.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/sensors/SoSensorManager.h>
#include <kalmyr/sensors/SoTimerSensor.h>

#include "core/CacheLock.h"
#include "core/Threads.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

using kalmyr::detail::HandOver;

namespace {

constexpr double kDefaultInterval = 1.0 / 60.0;
constexpr char kRealTime[] = "realTime";

SoType s_type;

struct Entry {
    SbName name;
    SoField* field;
    SoRef<SoFieldContainer> holder;
};

/// A handful, in order of creation.
struct Table {
    std::recursive_mutex mutex; ///< files that declare them are read in several threads
    std::vector<Entry> entries;

    auto find(const SbName& name)
    {
        return std::find_if(entries.begin(), entries.end(),
                            [&name](const Entry& e) { return e.name == name; });
    }
};

Table& table()
{
    static auto* t = new Table; // fields of static objects may follow them to the end
    return *t;
}

/// The time of day, on a timer while somebody listens.
class RealTime final : public SoGlobalField {
public:
    RealTime()
        : SoGlobalField(SbName(kRealTime), std::make_unique<SoSFTime>()), m_timer(&tick, this)
    {
        m_timer.setPartOfGraph();
        setToNow();
    }

    SoSFTime& time() { return static_cast<SoSFTime&>(*m_field); }
    bool hasListeners() const
    {
        const kalmyr::detail::CacheLock lock; // guards the listeners of global fields
        return m_field && m_field->getAuditors().getLength() > 0;
    }
    void setToNow() { time().setValue(SbTime::getTimeOfDay()); }
    /// Runs the timer as the interval and the listeners want it.
    void runTimer();

protected:
    void listenersChanged(SoField*) override;

private:
    static void tick(void* data, SoSensor*);

    SoTimerSensor m_timer;
};

/// The time of the application, which the table of fields holds for ever, and those that were
/// handed over to it. Threads that own graphs have one each, so that nothing in those graphs is
/// told by another thread; whole, with its followers and its timer, it passes to the application.
struct Times {
    std::mutex mutex;
    std::atomic<double> interval{kDefaultInterval};
    RealTime* application = nullptr; // Not owned.
    std::vector<SoRef<RealTime>> handedOver;
    std::atomic<bool> isAnyUnused{false}; ///< of those handed over, perhaps
};

Times& times()
{
    static auto* t = new Times;
    return *t;
}

/// The time of a thread that is not the application's; null until it is asked for.
constinit thread_local RealTime* t_time = nullptr; // Owned.

RealTime& timeOfThread()
{
    Times& all = times();
    // A thread that serves its own sensors must not drive what others know.
    if (kalmyr::detail::isOnlyThread() || SoSensorManager::isApplicationThread()
        || (kalmyr::detail::isServing() && kalmyr::detail::isEditingShared()))
        return *all.application;
    if (!t_time) {
        t_time = new RealTime;
        t_time->ref();
    }
    return *t_time;
}

/// The time that fields which are connected in this thread follow.
SoField* chooseTime(SoField* master)
{
    return master->getContainer()->getFieldName(master) == SbName(kRealTime)
               ? &timeOfThread().time()
               : master;
}

std::vector<SoRef<RealTime>> handedOverTimes()
{
    const std::scoped_lock lock(times().mutex);
    return times().handedOver;
}

/// Lets go of the times that nobody follows any more.
void dropUnusedTimes()
{
    if (!times().isAnyUnused.exchange(false))
        return;
    std::vector<SoRef<RealTime>> unused;
    const std::scoped_lock lock(times().mutex);
    auto& all = times().handedOver;
    const auto end =
        std::partition(all.begin(), all.end(), [](const auto& one) { return one->hasListeners(); });
    unused.assign(end, all.end());
    all.erase(end, all.end());
}

void handOverTime(HandOver how)
{
    if (!t_time || (how != HandOver::END && !t_time->hasListeners()))
        return;
    const auto given = SoRef<RealTime>::adopt(std::exchange(t_time, nullptr));
    if (!given->hasListeners())
        return;
    dropUnusedTimes();
    const std::scoped_lock lock(times().mutex);
    times().handedOver.push_back(given);
}

void RealTime::listenersChanged(SoField*)
{
    runTimer();
    if (!hasListeners())
        times().isAnyUnused = true;
}

void RealTime::runTimer()
{
    const SbTime interval(times().interval);
    const bool wanted = hasListeners() && interval > SbTime();
    if (wanted == m_timer.isScheduled() && (!wanted || interval == m_timer.getInterval()))
        return;
    m_timer.unschedule();
    if (!wanted)
        return;
    setToNow();
    m_timer.setInterval(interval);
    m_timer.schedule();
}

void RealTime::tick(void* data, SoSensor*)
{
    const bool isApplication = SoSensorManager::isApplicationThread();
    const kalmyr::detail::SharedEdit edit(isApplication);
    if (!edit)
        return; // somebody reads; the next tick comes soon
    const SoRef<RealTime> self(static_cast<RealTime*>(data));
    self->setToNow();
    self->runTimer();
    if (isApplication)
        dropUnusedTimes();
}

} // namespace

SoType SoGlobalField::getClassTypeId()
{
    return s_type;
}

SoType SoGlobalField::getTypeId() const
{
    return s_type;
}

void SoGlobalField::initClass()
{
    s_type = SoType::createType(SoFieldContainer::getClassTypeId(), SbName("GlobalField"));
}

SoGlobalField::SoGlobalField(const SbName& name, std::unique_ptr<SoField> field)
    : m_field(std::move(field)), m_data(std::make_unique<SoFieldData>())
{
    m_field->setContainer(this);
    m_data->addField(this, name, m_field.get());
}

SoGlobalField::~SoGlobalField() = default;

SoField* SoGlobalField::find(const SbName& name)
{
    if (name == SbName(kRealTime) && times().application) {
        RealTime& time = timeOfThread();
        // It does not tick for those who only look.
        if (!time.hasListeners())
            time.setToNow();
        return &time.time();
    }
    const std::scoped_lock lock(table().mutex);
    const auto at = table().find(name);
    return at == table().entries.end() ? nullptr : at->field;
}

SoField* SoGlobalField::create(const SbName& name, SoType type)
{
    const std::scoped_lock lock(table().mutex);
    if (SoField* known = find(name)) {
        if (known->getTypeId() == type)
            return known;
        SoDebugError::post("SoGlobalField::create", "\"%s\" is there already, as %s",
                           name.getString(), known->getTypeId().getName().getString());
        return nullptr;
    }
    if (name.isEmpty() || !type.isDerivedFrom(SoField::getClassTypeId())
        || !type.canCreateInstance()) {
        SoDebugError::post("SoGlobalField::create", "%s is no type of field",
                           type.getName().getString());
        return nullptr;
    }
    std::unique_ptr<SoField> field(static_cast<SoField*>(type.createInstance()));
    SoField* made = field.get();
    table().entries.push_back({name, made, new SoGlobalField(name, std::move(field))});
    return made;
}

bool SoGlobalField::rename(const SbName& from, const SbName& to)
{
    const std::scoped_lock lock(table().mutex);
    const auto at = table().find(from);
    if (at == table().entries.end() || to.isEmpty() || table().find(to) != table().entries.end()
        || from == kRealTime)
        return false;
    auto* holder = static_cast<SoGlobalField*>(at->holder.get());
    holder->m_data = std::make_unique<SoFieldData>();
    holder->m_data->addField(holder, to, at->field);
    at->name = to;
    return true;
}

bool SoGlobalField::remove(const SbName& name)
{
    SoRef<SoFieldContainer> last; // goes after the lock: its followers are told
    const std::scoped_lock lock(table().mutex);
    const auto at = table().find(name);
    if (at == table().entries.end() || name == kRealTime)
        return false;
    last = at->holder;
    table().entries.erase(at);
    return true;
}

void SoGlobalField::setRealTimeInterval(const SbTime& interval)
{
    times().interval = interval > SbTime() ? interval.getValue() : 0.0;
    if (RealTime* time = times().application)
        time->runTimer();
    for (const auto& time : handedOverTimes())
        time->runTimer();
}

SbTime SoGlobalField::getRealTimeInterval()
{
    return SbTime(times().interval);
}

void kalmyr::detail::initRealTime()
{
    Times& all = times();
    if (all.application)
        return;
    all.application = new RealTime;
    table().entries.push_back({SbName(kRealTime), &all.application->time(), all.application});
    setGlobalFields(SoGlobalField::getClassTypeId(), &chooseTime);
    addHandOver(&handOverTime);
}
