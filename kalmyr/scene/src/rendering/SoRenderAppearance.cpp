#include <kalmyr/rendering/SoRenderAppearance.h>

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
