#include "rendering/RenderTraversal.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/rendering/SoRenderingInit.h>
#include <kalmyr/rendering/SoRenderItem.h>

namespace kalmyr {

namespace {

using detail::RenderList;
using detail::Surroundings;

/// Where a list stands: in the world, and what is around it, in world space.
struct WorldPlace {
    SbMatrix toWorld;
    std::vector<SoLightRecord> lights;
    std::vector<SbVec4f> clipPlanes;
    int layer = 0;
};

void addSurroundings(const Surroundings* local, const SbMatrix& toWorld, WorldPlace& place)
{
    if (!local) {
        return;
    }
    for (SoLightRecord light : local->lights) {
        light.toWorld = light.toWorld * toWorld;
        place.lights.push_back(light);
    }
    const SbMatrix fromWorld = toWorld.inverse();
    for (const SbVec4f& plane : local->clipPlanes) {
        SbVec4f out;
        for (int row = 0; row < 4; ++row) {
            for (int c = 0; c < 4; ++c) {
                out[row] += fromWorld[row][c] * plane[c];
            }
        }
        place.clipPlanes.push_back(out);
    }
}

void collect(const RenderList& list, const WorldPlace& outer, std::vector<SoRenderItem>& items)
{
    for (const RenderList::Entry& entry : list.getEntries()) {
        if (entry.kind != RenderList::ITEM && entry.kind != RenderList::LIST) {
            continue;
        }
        WorldPlace place = outer;
        addSurroundings(entry.surroundings.get(), outer.toWorld, place);
        place.toWorld = entry.matrix * outer.toWorld;
        place.layer += entry.layer;
        if (entry.kind == RenderList::LIST) {
            collect(*entry.list, place, items);
        } else {
            items.push_back({entry.geometry, entry.appearance, place.toWorld,
                             std::move(place.lights), std::move(place.clipPlanes), entry.node,
                             place.layer});
        }
    }
}

} // namespace

std::vector<SoRenderItem> collectRenderItems(SoGLRenderAction& action, SoNode* root)
{
    initRendering();
    std::vector<SoRenderItem> items;
    action.SoAction::apply(root);
    if (const RenderList* list = action.traversal().getList()) {
        WorldPlace world;
        list->gatherLights(world.toWorld, world.lights);
        collect(*list, world, items);
    }
    return items;
}

} // namespace kalmyr

bool operator==(const SoRenderAppearance& a, const SoRenderAppearance& b)
{
    const SoDrawStyleValues& da = a.drawStyle;
    const SoDrawStyleValues& db = b.drawStyle;
    const SoTextureValues& ta = a.texture;
    const SoTextureValues& tb = b.texture;
    const SoEnvironmentValues& ea = a.environment;
    const SoEnvironmentValues& eb = b.environment;
    return a.diffuse == b.diffuse && a.ambient == b.ambient && a.specular == b.specular
           && a.emissive == b.emissive && a.shininess == b.shininess
           && a.transparency == b.transparency && a.lit == b.lit && a.hiding == b.hiding
           && a.textureMatrix == b.textureMatrix && da.style == db.style
           && da.pointSize == db.pointSize && da.lineWidth == db.lineWidth
           && da.linePattern == db.linePattern && ta.image == tb.image && ta.wrapS == tb.wrapS
           && ta.wrapT == tb.wrapT && ta.model == tb.model && ta.blendColor == tb.blendColor
           && ea.ambientIntensity == eb.ambientIntensity && ea.ambientColor == eb.ambientColor
           && ea.fogType == eb.fogType && ea.fogColor == eb.fogColor
           && ea.fogVisibility == eb.fogVisibility
           && (a.extras == b.extras || (a.extras && b.extras && *a.extras == *b.extras));
}
