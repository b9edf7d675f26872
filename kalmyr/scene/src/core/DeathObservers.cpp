#include "core/DeathObservers.h"

#include <kalmyr/core/SoDeathObserver.h>

#include <mutex>
#include <vector>

namespace {

struct Observers {
    std::mutex mutex;
    std::vector<SoDeathObserver*> all;
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

SoDeathObserver::SoDeathObserver()
{
    const std::scoped_lock lock(observers().mutex);
    observers().all.push_back(this);
}

SoDeathObserver::~SoDeathObserver()
{
    const std::scoped_lock lock(observers().mutex);
    std::erase(observers().all, this);
}
