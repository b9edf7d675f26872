#include <kalmyr/sensors/SoRoute.h>

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoFieldConverter.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

/// Few fields have more than one source, so the others are kept beside them, by the field that
/// takes the values and by the one that gives them: either may have any number.
struct SoRouteTable {
    struct Entry {
        std::uint64_t number; ///< rising
        std::unique_ptr<SoRoute> route;
    };
    using Routes = std::unordered_map<const SoField*, Entry>;
    std::unordered_map<const SoField*, Routes> routes;
    std::uint64_t last = 0;
    std::mutex mutex;                  ///< graphs are edited in several threads
    std::atomic<std::size_t> size = 0; ///< asked for every field that is written or copied

    // Routes attach and detach their sensors, which tells others, outside the lock.
    bool drop(const SoField* from, const SoField* to)
    {
        Routes::node_type dropped;
        const std::scoped_lock lock(mutex);
        const auto found = routes.find(to);
        if (found == routes.end())
            return false;
        dropped = found->second.extract(from);
        if (found->second.empty())
            routes.erase(found);
        size = routes.size();
        return !dropped.empty();
    }
    bool add(SoField* from, SoField* to)
    {
        if (has(from, to))
            return false;
        std::unique_ptr<SoRoute> route(new SoRoute(from, to));
        const std::scoped_lock lock(mutex);
        routes[to].insert_or_assign(from, Entry{++last, std::move(route)});
        size = routes.size();
        return true;
    }
    bool has(const SoField* from, const SoField* to)
    {
        const std::scoped_lock lock(mutex);
        const auto found = routes.find(to);
        return found != routes.end() && found->second.count(from) > 0;
    }
    static SoField* sourceOf(const SoRoute& route) { return route.m_from.getAttachedField(); }
};

namespace {

/// A container that dies has no references left and must not get new ones.
SoFieldContainer* alive(const SoField* field)
{
    SoFieldContainer* container = field->getContainer();
    return container && container->getRefCount() > 0 ? container : nullptr;
}

SoRouteTable& table()
{
    static auto* t = new SoRouteTable; // never freed: fields may outlive statics
    return *t;
}

} // namespace

SoRoute::SoRoute(SoField* from, SoField* to)
    : m_from([](void* self, SoSensor*) { static_cast<SoRoute*>(self)->pass(); }, this),
      m_source(from),
      m_target(to)
{
    m_from.setPriority(0);
    m_to.setPriority(0);
    m_from.attach(from);
    m_to.attach(to);
    const auto forget = [](void* self, SoSensor*) {
        const auto* route = static_cast<SoRoute*>(self);
        table().drop(route->m_source, route->m_target);
    };
    m_from.setDeleteCallback(forget, this);
    m_to.setDeleteCallback(forget, this);
}

void SoRoute::pass()
{
    SoField* from = m_from.getAttachedField();
    SoField* to = m_to.getAttachedField();
    if (m_passing || !from || !to || !m_cascade.mayReact())
        return;
    // Whoever is told may drop the nodes, and the route with them.
    const SoRef<SoFieldContainer> source(alive(from)), target(alive(to));
    m_passing = true;
    from->evaluate();
    to->evaluate();
    if (from->getTypeId() != to->getTypeId()) {
        if (auto* convert = SoFieldConverter::find(from->getTypeId(), to->getTypeId()))
            convert(*from, *to);
    } else if (to->getFieldType() == SoField::EVENT_IN || !to->isSame(*from)) {
        to->copyFrom(*from); // the same value ends circles; an event is one whatever it was before
    }
    m_passing = false;
}

bool SoRoute::add(SoField* from, SoField* to)
{
    return from && to && from != to
           && SoFieldConverter::canConvert(from->getTypeId(), to->getTypeId())
           && table().add(from, to);
}

bool SoRoute::remove(const SoField* from, const SoField* to)
{
    return table().drop(from, to);
}

bool SoRoute::hasSources(const SoField* to)
{
    SoRouteTable& all = table();
    if (all.size == 0)
        return false;
    const std::scoped_lock lock(all.mutex);
    return all.routes.count(to) > 0;
}

std::vector<SoField*> SoRoute::getSources(const SoField* to)
{
    SoRouteTable& all = table();
    if (all.size == 0)
        return {};
    const std::scoped_lock lock(all.mutex);
    const auto found = all.routes.find(to);
    if (found == all.routes.end())
        return {};
    std::vector<std::pair<std::uint64_t, SoField*>> known;
    for (const auto& [source, entry] : found->second)
        if (SoField* from = SoRouteTable::sourceOf(*entry.route))
            known.emplace_back(entry.number, from);
    std::sort(known.begin(), known.end());
    std::vector<SoField*> sources;
    for (const auto& [number, from] : known)
        sources.push_back(from);
    return sources;
}
