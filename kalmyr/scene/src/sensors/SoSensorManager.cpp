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
    std::size_t next = 0;                       // immediate sensors before it had their turn
    std::vector<SoDelayQueueSensor*> running;   // inside their callback; null once deleted there
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
    while (q.next < q.immediate.size())
        runImmediate(q.immediate[q.next++]);
    if (q.running.empty()) {
        q.immediate.clear();
        q.next = 0;
    }
}

void SoSensorManager::runImmediate(SoDelayQueueSensor* sensor)
{
    Queues& q = queues();
    if (!sensor)
        return;
    // A sensor inside its own callback is not called again before that returns; an edit made
    // there is reported to it afterwards, as the last change.
    if (sensor->m_running) {
        sensor->m_again = true;
        return;
    }
    q.running.push_back(sensor);
    sensor->m_running = true;
    sensor->m_scheduled = false;
    sensor->trigger();
    sensor = q.running.back();
    q.running.pop_back();
    if (!sensor)
        return;
    sensor->m_running = false;
    if (std::exchange(sensor->m_again, false))
        q.immediate.push_back(sensor);
}

void SoSensorManager::forgetRunning(const SoDelayQueueSensor* sensor)
{
    std::replace(queues().running.begin(), queues().running.end(),
                 const_cast<SoDelayQueueSensor*>(sensor),
                 static_cast<SoDelayQueueSensor*>(nullptr));
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
    std::replace(q.immediate.begin() + static_cast<std::ptrdiff_t>(q.next), q.immediate.end(),
                 sensor, static_cast<SoDelayQueueSensor*>(nullptr));
    sensor->m_again = false;
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
