#include <kalmyr/sensors/SoSensorManager.h>

#include <kalmyr/core/SoNotification.h>
#include <kalmyr/sensors/SoDelayQueueSensor.h>
#include <kalmyr/sensors/SoTimerSensor.h>

#include "core/Threads.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

using kalmyr::detail::HandOver;
using kalmyr::detail::threadNumber;

/// The sensors that wait for one thread. Guarded, all of them by one mutex: a sensor may pass from
/// one to another.
struct SoSensorQueues {
    using DelayKey = std::pair<std::uint32_t, std::uint64_t>; // priority, order of scheduling
    using TimerKey = std::pair<double, std::uint64_t>;        // time, order of scheduling
    using DelayQueue = std::map<DelayKey, SoDelayQueueSensor*>;

    DelayQueue delay;
    DelayQueue idle;
    std::map<TimerKey, SoTimerQueueSensor*> timers;
    bool isServed = false; ///< its thread has processed them

    void add(SoDelayQueueSensor* sensor, std::uint64_t ticket)
    {
        sensor->m_scheduled.store(true, std::memory_order_relaxed);
        sensor->m_queues = this;
        sensor->m_ticket = ticket;
        sensor->m_queuedPriority = sensor->m_priority;
        (sensor->isIdleOnly() ? idle : delay).emplace(keyOf(sensor), sensor);
    }
    void add(SoTimerQueueSensor* sensor, std::uint64_t ticket)
    {
        sensor->m_scheduled.store(true, std::memory_order_relaxed);
        sensor->m_queues = this;
        sensor->m_ticket = ticket;
        timers.emplace(TimerKey(sensor->getTriggerTime().getValue(), ticket), sensor);
    }
    /// Out of the queues that it waits in.
    static void drop(SoDelayQueueSensor* sensor)
    {
        SoSensorQueues* queues = std::exchange(sensor->m_queues, nullptr);
        // One that is being destroyed does not know any more whether it is an idle one.
        if (queues->delay.erase(keyOf(sensor)) == 0)
            queues->idle.erase(keyOf(sensor));
        sensor->m_scheduled.store(false, std::memory_order_relaxed);
    }
    static void drop(SoTimerQueueSensor* sensor)
    {
        SoSensorQueues* queues = std::exchange(sensor->m_queues, nullptr);
        queues->timers.erase({sensor->getTriggerTime().getValue(), sensor->m_ticket});
        sensor->m_scheduled.store(false, std::memory_order_relaxed);
    }
    bool isEmpty() const { return delay.empty() && idle.empty() && timers.empty(); }
    /// All that waits here; the sensors are those of that thread now.
    void moveTo(SoSensorQueues& other, std::uint32_t owner)
    {
        move(delay, other, other.delay, owner);
        move(idle, other, other.idle, owner);
        move(timers, other, other.timers, owner);
    }

private:
    static DelayKey keyOf(const SoDelayQueueSensor* sensor)
    {
        return {sensor->m_queuedPriority, sensor->m_ticket};
    }
    template <class Queue>
    static void move(Queue& from, SoSensorQueues& other, Queue& to, std::uint32_t owner)
    {
        for (const auto& [key, sensor] : from) {
            sensor->m_queues = &other;
            if (sensor->m_owner != 0)
                sensor->m_owner = owner;
        }
        to.merge(from); // tickets are unique
    }
};

namespace {

/// All that waits, and whom to wake up.
struct Manager {
    std::mutex mutex;
    SoSensorQueues application;
    std::unordered_map<std::uint32_t, std::unique_ptr<SoSensorQueues>> others; ///< by thread
    std::uint64_t ticket = 0;
    std::atomic<std::uint32_t> applicationThread{0};
    bool isApplicationChosen = false; ///< by the callback, or by processing queues

    // Held for the call, so that nobody is called who has taken the callback away.
    std::recursive_mutex callbackMutex;
    void (*changed)(void*) = nullptr;
    void* changedData = nullptr;
};

Manager& manager()
{
    static auto* m = new Manager; // sensors with static storage may outlive it otherwise
    return *m;
}

/// Not taken while there is one thread.
template <class Mutex>
class Guard {
public:
    explicit Guard(Mutex& mutex) : m_mutex(kalmyr::detail::isOnlyThread() ? nullptr : &mutex)
    {
        if (m_mutex)
            m_mutex->lock();
    }
    ~Guard()
    {
        if (m_mutex)
            m_mutex->unlock();
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    Mutex* m_mutex;
};

bool isApplication()
{
    return manager().applicationThread.load(std::memory_order_relaxed) == threadNumber();
}

/// The calling thread's; null when it has none yet.
SoSensorQueues* findOwnQueues()
{
    Manager& m = manager();
    if (isApplication())
        return &m.application;
    const auto found = m.others.find(threadNumber());
    return found == m.others.end() ? nullptr : found->second.get();
}

/// True once the thread has handed over for the last time.
constinit thread_local bool t_hasEnded = false;

SoSensorQueues& ownQueues()
{
    if (t_hasEnded)
        return manager().application;
    if (SoSensorQueues* known = findOwnQueues())
        return *known;
    auto& own = manager().others[threadNumber()];
    own = std::make_unique<SoSensorQueues>();
    return *own;
}

/// Where a sensor of that owner is to wait; see the class.
SoSensorQueues& queuesFor(std::uint32_t owner)
{
    Manager& m = manager();
    if (owner != 0 && owner != threadNumber()) {
        if (owner == m.applicationThread)
            return m.application;
        if (const auto found = m.others.find(owner);
            found != m.others.end() && found->second->isServed)
            return *found->second;
    }
    if (kalmyr::detail::isEditingShared()) {
        SoSensorQueues* own = kalmyr::detail::isServing() ? findOwnQueues() : nullptr;
        return own && owner == threadNumber() ? *own : m.application;
    }
    return ownQueues();
}

void tellChanged()
{
    Manager& m = manager();
    const Guard guard(m.callbackMutex);
    if (m.changed)
        m.changed(m.changedData);
}

/// Makes the calling thread the application's, guarded; its queues become part of those.
void becomeApplication()
{
    Manager& m = manager();
    if (isApplication())
        return;
    // It may be processing its own queues now: they stay where they are, and empty.
    if (const auto own = m.others.find(threadNumber()); own != m.others.end())
        own->second->moveTo(m.application, threadNumber());
    m.applicationThread = threadNumber();
}

/// The calling thread's queues, which it is about to process; and the number of the first ticket
/// that is not to be processed now.
std::pair<SoSensorQueues*, std::uint64_t> beginProcessing()
{
    Manager& m = manager();
    const Guard guard(m.mutex);
    if (!std::exchange(m.isApplicationChosen, true))
        becomeApplication();
    SoSensorQueues& own = ownQueues();
    own.isServed = true;
    kalmyr::detail::setServing(!isApplication());
    return {&own, m.ticket};
}

/// Takes out the first sensor of the queue with a key from `from` on and a ticket before `end`.
template <class Queue, class Key>
typename Queue::mapped_type takeNext(Queue& queue, Key& from, std::uint64_t end)
{
    const Guard guard(manager().mutex);
    for (auto at = queue.lower_bound(from); at != queue.end(); ++at) {
        if (at->first.second >= end)
            continue;
        from.first = at->first.first;
        auto* sensor = at->second;
        SoSensorQueues::drop(sensor);
        return sensor;
    }
    return nullptr;
}

/// Triggers everything queued before this call; what is scheduled meanwhile waits for the next.
void run(SoSensorQueues::DelayQueue SoSensorQueues::*queue)
{
    const auto [own, end] = beginProcessing();
    SoSensorQueues::DelayKey from{0, 0};
    while (SoDelayQueueSensor* sensor = takeNext(own->*queue, from, end))
        sensor->trigger();
}

/// Sensors of priority 0: collected on a walk and run right after it, in the same thread.
struct Immediate {
    std::vector<SoDelayQueueSensor*> queue;   ///< null once removed
    std::size_t next = 0;                     ///< those before it had their turn
    std::vector<SoDelayQueueSensor*> running; ///< inside their callback; null once deleted there
};
/// Asked after every change, so these are plain objects. A thread's last edits may come after its
/// other objects have gone.
constinit thread_local Immediate* t_immediate = nullptr;
constinit thread_local bool t_anyImmediate = false;
constinit thread_local std::uint64_t t_cascade = 0;

/// Numbers of cascades of one thread.
constexpr int kCascadeBits = 40;

std::uint64_t nextCascade(std::uint64_t last)
{
    return last ? last + 1 : (std::uint64_t{threadNumber()} << kCascadeBits) + 1;
}

Immediate& immediate()
{
    if (!t_immediate)
        t_immediate = new Immediate;
    return *t_immediate;
}

/// Moves what waits for this thread to the application; whether there was anything.
bool moveToApplication(HandOver how)
{
    Manager& m = manager();
    const Guard guard(m.mutex);
    if (isApplication() && how == HandOver::END)
        m.isApplicationChosen = false; // whoever processes the queues next goes on
    const auto own = m.others.find(threadNumber());
    if (own == m.others.end())
        return false;
    const bool any = !own->second->isEmpty();
    own->second->moveTo(m.application, m.applicationThread);
    if (how == HandOver::END)
        m.others.erase(own);
    return any;
}

void handOverQueues(HandOver how)
{
    if (moveToApplication(how))
        tellChanged();
    if (how != HandOver::END)
        return;
    t_hasEnded = true;
    delete std::exchange(t_immediate, nullptr);
}

} // namespace

void SoSensorManager::init()
{
    SoNotification::setAfterWalk(&SoSensorManager::processImmediateQueue);
    kalmyr::detail::addHandOver(&handOverQueues);
    const Guard guard(manager().mutex);
    if (manager().applicationThread == 0)
        becomeApplication();
}

void SoSensorManager::setChangedCallback(void (*function)(void*), void* data)
{
    Manager& m = manager();
    if (function) {
        const Guard guard(m.mutex);
        m.isApplicationChosen = true;
        becomeApplication();
    }
    const Guard guard(m.callbackMutex);
    m.changed = function;
    m.changedData = data;
}

bool SoSensorManager::isDelaySensorPending()
{
    const Guard guard(manager().mutex);
    const SoSensorQueues* own = findOwnQueues();
    return own && !own->delay.empty();
}

bool SoSensorManager::isIdleSensorPending()
{
    const Guard guard(manager().mutex);
    const SoSensorQueues* own = findOwnQueues();
    return own && !own->idle.empty();
}

bool SoSensorManager::isTimerSensorPending(SbTime& next)
{
    const Guard guard(manager().mutex);
    const SoSensorQueues* own = findOwnQueues();
    if (!own || own->timers.empty())
        return false;
    next = SbTime(own->timers.begin()->first.first);
    return true;
}

void SoSensorManager::processDelayQueue(bool idle)
{
    run(&SoSensorQueues::delay);
    if (idle)
        run(&SoSensorQueues::idle);
}

void SoSensorManager::processTimerQueue()
{
    const auto [own, end] = beginProcessing();
    const double now = SbTime::getTimeOfDay().getValue();
    for (;;) {
        SoTimerQueueSensor* sensor = nullptr;
        {
            const Guard guard(manager().mutex);
            auto at = own->timers.begin();
            while (at != own->timers.end() && at->first.second >= end)
                ++at;
            if (at == own->timers.end() || !(at->first.first <= now))
                return;
            sensor = at->second;
            SoSensorQueues::drop(sensor);
        }
        sensor->trigger();
    }
}

void SoSensorManager::handOver()
{
    kalmyr::detail::handOver(HandOver::EXPLICIT);
}

bool SoSensorManager::isApplicationThread()
{
    return isApplication();
}

void SoSensorManager::processImmediateQueue()
{
    if (!t_anyImmediate)
        return;
    Immediate& i = immediate();
    if (i.running.empty())
        t_cascade = nextCascade(t_cascade);
    while (i.next < i.queue.size())
        runImmediate(i.queue[i.next++]);
    if (i.running.empty()) {
        i.queue.clear();
        i.next = 0;
        t_anyImmediate = false;
    }
}

void SoSensorManager::runImmediate(SoDelayQueueSensor* sensor)
{
    if (!sensor)
        return;
    // A sensor inside its own callback is not called again before that returns; an edit made
    // there is reported to it afterwards, as the last change.
    if (sensor->m_running) {
        sensor->m_again = true;
        return;
    }
    Immediate& i = immediate();
    sensor->m_running = true;
    sensor->m_runningAt = i.running.size();
    i.running.push_back(sensor);
    sensor->m_scheduled.store(false, std::memory_order_relaxed);
    sensor->trigger();
    sensor = i.running.back();
    i.running.pop_back();
    if (!sensor)
        return;
    sensor->m_running = false;
    if (std::exchange(sensor->m_again, false)) {
        sensor->m_ticket = i.queue.size();
        i.queue.push_back(sensor);
    }
}

void SoSensorManager::forgetRunning(const SoDelayQueueSensor* sensor)
{
    immediate().running[sensor->m_runningAt] = nullptr;
}

std::uint64_t SoSensorManager::getCascade()
{
    return t_cascade;
}

void SoSensorManager::insertImmediate(SoDelayQueueSensor* sensor)
{
    sensor->m_scheduled.store(true, std::memory_order_relaxed);
    sensor->m_ticket = immediate().queue.size();
    immediate().queue.push_back(sensor);
    t_anyImmediate = true;
    if (!SoNotification::isWalking())
        processImmediateQueue();
}

void SoSensorManager::insert(SoDelayQueueSensor* sensor)
{
    Manager& m = manager();
    bool isApplications = false;
    {
        const Guard guard(m.mutex);
        if (sensor->isScheduled())
            return; // another thread was faster
        SoSensorQueues& queues = queuesFor(sensor->m_owner);
        queues.add(sensor, m.ticket++);
        isApplications = &queues == &m.application;
    }
    if (isApplications)
        tellChanged();
}

void SoSensorManager::remove(SoDelayQueueSensor* sensor)
{
    {
        const Guard guard(manager().mutex);
        if (sensor->m_queues) {
            SoSensorQueues::drop(sensor);
            return;
        }
    }
    Immediate& i = immediate();
    if (sensor->m_ticket < i.queue.size() && i.queue[sensor->m_ticket] == sensor)
        i.queue[sensor->m_ticket] = nullptr;
    sensor->m_scheduled.store(false, std::memory_order_relaxed);
    sensor->m_again = false;
}

void SoSensorManager::insert(SoTimerQueueSensor* sensor, const SbTime& when)
{
    Manager& m = manager();
    bool isApplications = false;
    {
        const Guard guard(m.mutex);
        if (sensor->m_queues)
            SoSensorQueues::drop(sensor); // another thread was faster
        sensor->m_time = when;
        SoSensorQueues& queues = queuesFor(sensor->m_owner);
        queues.add(sensor, m.ticket++);
        isApplications = &queues == &m.application;
    }
    if (isApplications)
        tellChanged();
}

void SoSensorManager::remove(SoTimerQueueSensor* sensor)
{
    const Guard guard(manager().mutex);
    if (sensor->m_queues)
        SoSensorQueues::drop(sensor);
}
