#include "SharedGeometry.h"

#include "core/CacheLock.h"

#include <map>
#include <unordered_map>

namespace kalmyr::detail {

namespace {

struct Registry {
    std::map<SharedKey, SoGeometry*> byKey; // Not owned; each tells when it dies.
    std::unordered_map<const SoGeometry*, SharedKey> keys;
};

Registry& registry()
{
    // Never destroyed: shapes may outlive the library's statics.
    static auto* s_registry = new Registry;
    return *s_registry;
}

void forget(const SoGeometry* geometry)
{
    const CacheLock lock;
    Registry& all = registry();
    const auto at = all.keys.find(geometry);
    if (at == all.keys.end())
        return;
    // Another thread may have put a new one in its place while this one was dying.
    const auto known = all.byKey.find(at->second);
    if (known != all.byKey.end() && known->second == geometry)
        all.byKey.erase(known);
    all.keys.erase(at);
}

} // namespace

SoRef<SoGeometry> sharedGeometry(const SharedKey& key, BuildFunction build)
{
    const CacheLock lock;
    Registry& all = registry();
    const auto at = all.byKey.find(key);
    if (at != all.byKey.end() && at->second->refIfAlive())
        return SoRef<SoGeometry>::adopt(at->second);
    SoRef<SoGeometry> geometry(new SoGeometry);
    build(key, *geometry);
    geometry->setDeathFunction(forget);
    all.byKey.insert_or_assign(key, geometry.get());
    all.keys.emplace(geometry.get(), key);
    return geometry;
}

} // namespace kalmyr::detail
