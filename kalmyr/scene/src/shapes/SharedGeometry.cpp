#include "SharedGeometry.h"

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
    Registry& all = registry();
    const auto at = all.keys.find(geometry);
    if (at == all.keys.end())
        return;
    all.byKey.erase(at->second);
    all.keys.erase(at);
}

} // namespace

SoRef<SoGeometry> sharedGeometry(const SharedKey& key, BuildFunction build)
{
    Registry& all = registry();
    if (const auto at = all.byKey.find(key); at != all.byKey.end())
        return at->second;
    SoRef<SoGeometry> geometry(new SoGeometry);
    build(key, *geometry);
    geometry->setDeathFunction(forget);
    all.byKey.emplace(key, geometry.get());
    all.keys.emplace(geometry.get(), key);
    return geometry;
}

} // namespace kalmyr::detail
