#include <kalmyr/sensors/SoSensorManager.h>

#include <kalmyr/core/SoNotification.h>
#include <kalmyr/sensors/SoDelayQueueSensor.h>
#include <kalmyr/sensors/SoTimerSensor.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace {

using DelayKey = std::pair<std::uint32_t, std::uint64_t>; // priority, then order of scheduling

struct Queues {
    std::vector<SoDelayQueueSensor*> immediate; // collected on a walk; null once removed
    std::vector<SoDelayQueueSensor*> running;   // immediate sensors inside their callback
    std::map<DelayKey, SoDelayQueueSensor*> delay;
    std::map<DelayKey, SoDelayQueueSensor*> idle;
    std::set<std::pair<double, SoTimerQueueSensor*>> timers;
    std::uint64_t ticket = 0;
    std::uint64_t cascade = 0;
    void (*changed)(void*) = nullptr;
    void* changedData = nullptr;
};

Queues& queues()
{
    static auto* q = new Queues; // sensors with static storage may outlive it otherwise
    return *q;
}

void tellChanged()
{
    if (queues().changed)
        queues().changed(queues().changedData);
}

/// Triggers everything queued before this call; what is scheduled meanwhile waits for the next.
void run(std::map<DelayKey, SoDelayQueueSensor*>& queue)
{
    const std::uint64_t end = queues().ticket;
    std::uint32_t priority = 0;
    for (auto at = queue.begin(); at != queue.end();) {
        if (at->first.second >= end) {
            ++at;
            continue;
        }
        priority = at->first.first;
        at->second->trigger();
        at = queue.lower_bound({priority, 0}); // the callback may have changed everything
    }
}

} // namespace

void SoSensorManager::init()
{
    SoNotification::setAfterWalk(&SoSensorManager::processImmediateQueue);
}

void SoSensorManager::setChangedCallback(void (*function)(void*), void* data)
{
    queues().changed = function;
    queues().changedData = data;
}

bool SoSensorManager::isDelaySensorPending()
{
    return !queues().delay.empty();
}

bool SoSensorManager::isIdleSensorPending()
{
    return !queues().idle.empty();
}

bool SoSensorManager::isTimerSensorPending(SbTime& next)
{
    if (queues().timers.empty())
        return false;
    next = SbTime(queues().timers.begin()->first);
    return true;
}

void SoSensorManager::processDelayQueue(bool idle)
{
    run(queues().delay);
    if (idle)
        run(queues().idle);
}

void SoSensorManager::processTimerQueue()
{
    Queues& q = queues();
    const double now = SbTime::getTimeOfDay().getValue();
    while (!q.timers.empty() && q.timers.begin()->first <= now) {
        SoTimerQueueSensor* sensor = q.timers.begin()->second;
        sensor->unschedule();
        sensor->trigger();
    }
}

void SoSensorManager::processImmediateQueue()
{
    Queues& q = queues();
    if (q.immediate.empty())
        return;
    if (q.running.empty())
        ++q.cascade;
    do {
        runImmediate();
        if (!q.running.empty())
            return;
        std::erase(q.immediate, nullptr);
    } while (!q.immediate.empty());
}

void SoSensorManager::runImmediate()
{
    Queues& q = queues();
    // A sensor inside its own callback is not called again before that returns; an edit made
    // there is reported to it afterwards, as the last change.
    for (std::size_t i = 0; i < q.immediate.size(); ++i) {
        SoDelayQueueSensor* sensor = q.immediate[i];
        if (!sensor || std::find(q.running.begin(), q.running.end(), sensor) != q.running.end())
            continue;
        q.immediate[i] = nullptr;
        const std::size_t depth = q.running.size();
        q.running.push_back(sensor);
        sensor->m_scheduled = false;
        sensor->trigger();
        q.running.resize(depth);
    }
}

std::uint64_t SoSensorManager::getCascade()
{
    return queues().cascade;
}

void SoSensorManager::insert(SoDelayQueueSensor* sensor)
{
    Queues& q = queues();
    if (sensor->getPriority() == 0 && !sensor->isIdleOnly()) {
        q.immediate.push_back(sensor);
        if (!SoNotification::isWalking())
            processImmediateQueue();
        return;
    }
    sensor->m_ticket = q.ticket++;
    auto& queue = sensor->isIdleOnly() ? q.idle : q.delay;
    queue.emplace(DelayKey{sensor->getPriority(), sensor->m_ticket}, sensor);
    tellChanged();
}

void SoSensorManager::remove(SoDelayQueueSensor* sensor)
{
    Queues& q = queues();
    std::replace(q.immediate.begin(), q.immediate.end(), sensor,
                 static_cast<SoDelayQueueSensor*>(nullptr));
    const auto drop = [sensor](auto& queue) {
        for (auto at = queue.begin(); at != queue.end(); ++at)
            if (at->second == sensor) {
                queue.erase(at);
                return;
            }
    };
    const DelayKey key{sensor->getPriority(), sensor->m_ticket};
    auto& queue = sensor->isIdleOnly() ? q.idle : q.delay;
    const auto at = queue.find(key);
    if (at != queue.end() && at->second == sensor)
        queue.erase(at);
    else
        drop(queue); // its priority was changed while it waited
}

void SoSensorManager::insert(SoTimerQueueSensor* sensor)
{
    queues().timers.emplace(sensor->getTriggerTime().getValue(), sensor);
    tellChanged();
}

void SoSensorManager::remove(SoTimerQueueSensor* sensor)
{
    queues().timers.erase({sensor->getTriggerTime().getValue(), sensor});
}
