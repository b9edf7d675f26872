#include <kalmyr/sensors/SoRoute.h>

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoFieldConverter.h>

#include <algorithm>
#include <memory>
#include <unordered_map>

/// Few fields have more than one source, so the others are kept beside them, by the field that
/// takes the values.
struct SoRouteTable {
    using Routes = std::vector<std::unique_ptr<SoRoute>>;
    std::unordered_map<const SoField*, Routes> routes;

    void drop(const SoField* to, const SoRoute* route)
    {
        const auto found = routes.find(to);
        if (found == routes.end())
            return;
        std::erase_if(found->second, [route](const auto& one) { return one.get() == route; });
        if (found->second.empty())
            routes.erase(found);
    }
    static std::unique_ptr<SoRoute> make(SoField* from, SoField* to)
    {
        return std::unique_ptr<SoRoute>(new SoRoute(from, to));
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
    : m_from([](void* self, SoSensor*) { static_cast<SoRoute*>(self)->pass(); }, this), m_key(to)
{
    m_from.setPriority(0);
    m_to.setPriority(0);
    m_from.attach(from);
    m_to.attach(to);
    const auto forget = [](void* self, SoSensor*) {
        table().drop(static_cast<SoRoute*>(self)->m_key, static_cast<SoRoute*>(self));
    };
    m_from.setDeleteCallback(forget, this);
    m_to.setDeleteCallback(forget, this);
}

void SoRoute::pass()
{
    SoField* from = m_from.getAttachedField();
    SoField* to = m_to.getAttachedField();
    if (m_passing || !from || !to)
        return;
    // Whoever is told may drop the nodes, and the route with them.
    const SoRef<SoFieldContainer> source(alive(from)), target(alive(to));
    m_passing = true;
    from->evaluate();
    to->evaluate();
    if (from->getTypeId() != to->getTypeId()) {
        if (auto* convert = SoFieldConverter::find(from->getTypeId(), to->getTypeId()))
            convert(*from, *to);
    } else if (!to->isSame(*from)) {
        to->copyFrom(*from); // the same value ends circles
    }
    m_passing = false;
}

bool SoRoute::add(SoField* from, SoField* to)
{
    if (!from || !to || from == to
        || !SoFieldConverter::canConvert(from->getTypeId(), to->getTypeId()))
        return false;
    const std::vector<SoField*> known = getSources(to);
    if (std::find(known.begin(), known.end(), from) != known.end())
        return false;
    table().routes[to].push_back(SoRouteTable::make(from, to));
    return true;
}

bool SoRoute::remove(const SoField* from, const SoField* to)
{
    const auto found = table().routes.find(to);
    if (found == table().routes.end())
        return false;
    for (const auto& route : found->second) {
        if (SoRouteTable::sourceOf(*route) != from)
            continue;
        table().drop(to, route.get());
        return true;
    }
    return false;
}

std::vector<SoField*> SoRoute::getSources(const SoField* to)
{
    std::vector<SoField*> sources;
    if (table().routes.empty())
        return sources; // writers ask for every field
    const auto found = table().routes.find(to);
    if (found == table().routes.end())
        return sources;
    for (const auto& route : found->second)
        if (SoField* from = SoRouteTable::sourceOf(*route))
            sources.push_back(from);
    return sources;
}
