#include "core/DeathObservers.h"

#include <kalmyr/core/SoDeathObserver.h>

#include <atomic>
#include <mutex>
#include <vector>

namespace {

struct Observers {
    std::mutex mutex;
    std::vector<SoDeathObserver*> all;
    std::atomic<bool> any{false};
};

Observers& observers()
{
    static auto* o = new Observers; // never freed: objects may outlive statics
    return *o;
}

} // namespace

void kalmyr::detail::tellDeathObservers(const SoBase* object)
{
    const std::scoped_lock lock(observers().mutex);
    for (SoDeathObserver* observer : observers().all)
        observer->objectDies(object);
}

void kalmyr::detail::tellObserversOfName(const SoBase* object)
{
    const std::scoped_lock lock(observers().mutex);
    for (SoDeathObserver* observer : observers().all)
        observer->nameChanged(object);
}

bool kalmyr::detail::tellObserversOfUnheardChange(const SoFieldContainer* container)
{
    if (!observers().any.load(std::memory_order_relaxed))
        return false;
    const std::scoped_lock lock(observers().mutex);
    for (SoDeathObserver* observer : observers().all)
        observer->changedUnheard(container);
    return true;
}

SoDeathObserver::SoDeathObserver()
{
    const std::scoped_lock lock(observers().mutex);
    observers().all.push_back(this);
    observers().any = true;
}

SoDeathObserver::~SoDeathObserver()
{
    const std::scoped_lock lock(observers().mutex);
    std::erase(observers().all, this);
    observers().any = !observers().all.empty();
}
