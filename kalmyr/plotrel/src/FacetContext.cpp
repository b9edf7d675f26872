#include "FacetContext.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

constexpr int kNearPlane = 4;

bool isFinite(const SbVec3f& v)
{
    return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]);
}

double distanceTo(int plane, const ClipPoint& p)
{
    const double along = plane / 2 == 0 ? p.x : plane / 2 == 1 ? p.y : p.z;
    return plane % 2 ? p.w - along : p.w + along;
}

double distanceTo(const SbVec4f& plane, const SbVec3f& p)
{
    return static_cast<double>(p[0]) * plane[0] + static_cast<double>(p[1]) * plane[1]
           + static_cast<double>(p[2]) * plane[2] + plane[3];
}

SbColor fromBits(std::uint32_t bits)
{
    return SbColor(static_cast<float>(bits >> 24) / 255,
                   static_cast<float>(bits >> 16 & 0xff) / 255,
                   static_cast<float>(bits >> 8 & 0xff) / 255);
}

/// Cofactors, as the renderer takes: a flattening matrix has no inverse.
SbMatrix normalMatrix(const SoSceneView::Item& item)
{
    SbMatrix normals;
    const SbMatrix& m = item.toEye;
    for (int row = 0; row < 3; ++row) {
        const SbVec3f a(m[(row + 1) % 3]), b(m[(row + 2) % 3]);
        const SbVec3f cofactors = a.cross(b) * (item.mirrored ? -1.0f : 1.0f);
        std::copy_n(cofactors.getValue(), 3, normals[row]);
    }
    return normals;
}

} // namespace

unsigned outsideOf(const ClipPoint& p)
{
    unsigned bits = 0;
    for (int plane = 0; plane < 6; ++plane)
        bits |= distanceTo(plane, p) < 0 ? 1u << plane : 0;
    return bits;
}

double orientation(const ClipPoint& a, const ClipPoint& b, const ClipPoint& c)
{
    return a.x * (b.y * c.w - c.y * b.w) - a.y * (b.x * c.w - c.x * b.w)
           + a.w * (b.x * c.y - c.x * b.y);
}

bool mirrors(const SoRenderAppearance& look)
{
    return look.extras && !look.extras->stages.empty()
           && look.extras->stages[0].coordinates == SoTextureStage::SPHERE;
}

FacetContext::FacetContext(const SoSceneView& view, const SoSceneView::Item& drawn,
                           FacetLayer& into, CollectRun& collecting)
    : item(drawn),
      geometry(*drawn.geometry),
      look(*drawn.appearance),
      lighting(view, drawn),
      projection(view.cameras[drawn.camera], collecting.options.area),
      planes(view.surroundings[drawn.surroundings].clipPlanes),
      layer(into),
      run(collecting),
      normals(normalMatrix(drawn)),
      translucent(drawn.transparent)
{
    facet.width =
        static_cast<float>(std::max(1.0f, look.drawStyle.lineWidth) * collecting.options.pixelSize);
}

/// Whether a texture is painted on the surface before it is lit.
bool FacetContext::paintsSurface() const
{
    return baker && look.texture.model == SoTextureValues::SURFACE
           && (!look.extras || look.extras->stages.empty()
               || look.extras->stages[0].mode == SoTextureStage::AS_MODEL);
}

TextureBaker::BakeLight FacetContext::bakeLight(const LitCorner& corner) const
{
    TextureBaker::BakeLight light;
    light.clear = lighting.getClearness(corner.surface.eye);
    SbVec3f color(corner.page.color[0], corner.page.color[1], corner.page.color[2]);
    if (paintsSurface()) {
        const LightShares shares = lighting.split(corner.surface, front);
        color = shares.diffuse;
        light.other = shares.other;
    }
    light.color = {color[0], color[1], color[2], corner.surface.color[3]};
    return light;
}

/// Where a sphere map shows what the surface mirrors, as the renderer's shaders have it.
SbVec2f FacetContext::mirrored(const SurfacePoint& surface) const
{
    const SbVec3f towards = projection.isParallel() ? SbVec3f(0, 0, -1) : surface.eye.normalized();
    SbVec3f n = surface.normal.normalized();
    if (n.dot(towards) > 0)
        n = -n;
    const SbVec3f r = towards - n * (2 * n.dot(towards));
    const float m =
        2 * std::sqrt(std::max(r[0] * r[0] + r[1] * r[1] + (r[2] + 1) * (r[2] + 1), 1e-12f));
    return SbVec2f(r[0] / m + 0.5f, r[1] / m + 0.5f);
}

FacetVertex FacetContext::vertex(std::uint32_t index) const
{
    FacetVertex v;
    v.surface.eye = item.toEye.point(geometry.positions[index]);
    if (lighting.isLit())
        v.surface.normal = normals.direction(geometry.normals[index]);
    if (index < geometry.colors.size()) {
        const std::uint32_t bits = geometry.colors[index];
        const SbColor color = fromBits(bits);
        v.surface.color = {color[0], color[1], color[2], static_cast<float>(bits & 0xff) / 255};
    } else {
        v.surface.color = {look.diffuse[0], look.diffuse[1], look.diffuse[2],
                           1 - look.transparency};
    }
    // The colours of such an image take the place of the surface's own.
    if (paintsSurface() && look.texture.hasColors())
        std::fill_n(v.surface.color.begin(), 3, 1.0f);
    if (index < geometry.texCoords.size())
        v.surface.texCoord = geometry.texCoords[index];
    if (mirrors(look) && lighting.isLit())
        v.surface.texCoord = mirrored(v.surface);
    v.clip = projection.toClip(v.surface.eye);
    if (index < geometry.pixelOffsets.size() && v.clip.w > 0) {
        const SbVec2f offset =
            geometry.pixelOffsets[index] * static_cast<float>(run.options.pixelSize);
        v.surface.eye += projection.onPage(offset[0], offset[1], v.clip.w);
        v.clip = projection.toClip(v.surface.eye);
    }
    return v;
}

FacetVertex FacetContext::vertex(const SurfacePoint& surface) const
{
    return {surface, projection.toClip(surface.eye)};
}

LitCorner FacetContext::lit(const SurfacePoint& surface) const
{
    LitCorner corner{surface, projection.toClip(surface.eye), {}, {}};
    corner.page = projection.toPage(corner.clip);
    corner.color = fixedColor        ? *fixedColor
                   : paintsSurface() ? lighting.split(surface, front).sum()
                   : baker           ? lighting.light(surface, front)
                                     : lighting.shade(surface, front);
    for (std::size_t c = 0; c < 3; ++c)
        corner.page.color[c] = std::clamp(corner.color[static_cast<int>(c)], 0.0f, 1.0f);
    return corner;
}

FacetVertex FacetContext::cross(const FacetVertex& a, const FacetVertex& b, double distanceA,
                                double distanceB) const
{
    return vertex(SurfacePoint::between(a.surface, b.surface,
                                        static_cast<float>(distanceA / (distanceA - distanceB))));
}

/// Keeps what has a distance of 0 or more.
template <class Distance>
void FacetContext::cutPolygon(std::vector<FacetVertex>& polygon, Distance distance) const
{
    std::vector<FacetVertex> kept;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const FacetVertex& a = polygon[i];
        const FacetVertex& b = polygon[(i + 1) % polygon.size()];
        const double da = distance(a), db = distance(b);
        if (da >= 0)
            kept.push_back(a);
        if ((da < 0) != (db < 0))
            kept.push_back(cross(a, b, da, db));
    }
    polygon.swap(kept);
}

/// False when nothing is left.
template <class Distance>
bool FacetContext::cutSegment(FacetVertex& a, FacetVertex& b, Distance distance) const
{
    const double da = distance(a), db = distance(b);
    if (da < 0 && db < 0)
        return false;
    if ((da < 0) != (db < 0))
        (da < 0 ? a : b) = cross(a, b, da, db);
    return true;
}

void FacetContext::cut(std::vector<FacetVertex>& polygon) const
{
    unsigned beyond = 0;
    for (const FacetVertex& v : polygon)
        beyond |= outsideOf(v.clip);
    for (int plane = 0; plane < 6; ++plane)
        if (beyond & 1u << plane)
            cutPolygon(polygon,
                       [plane](const FacetVertex& v) { return distanceTo(plane, v.clip); });
    for (const SbVec4f& plane : planes)
        cutPolygon(polygon,
                   [&plane](const FacetVertex& v) { return distanceTo(plane, v.surface.eye); });
}

bool FacetContext::cut(FacetVertex& a, FacetVertex& b) const
{
    for (int plane = 0; plane < 6; ++plane)
        if (!cutSegment(a, b, [plane](const FacetVertex& v) { return distanceTo(plane, v.clip); }))
            return false;
    for (const SbVec4f& plane : planes)
        if (!cutSegment(
                a, b, [&plane](const FacetVertex& v) { return distanceTo(plane, v.surface.eye); }))
            return false;
    return true;
}

bool FacetContext::cutNear(FacetVertex& a, FacetVertex& b) const
{
    return isFinite(a.surface.eye) && isFinite(b.surface.eye)
           && cutSegment(a, b, [](const FacetVertex& v) { return distanceTo(kNearPlane, v.clip); });
}

bool FacetContext::isWithin(const FacetVertex& v) const
{
    return outsideOf(v.clip) == 0
           && std::all_of(planes.begin(), planes.end(), [&v](const SbVec4f& plane) {
                  return !(distanceTo(plane, v.surface.eye) < 0);
              });
}

bool FacetContext::isSound(std::span<const FacetVertex> vertices)
{
    const bool sound = std::all_of(vertices.begin(), vertices.end(),
                                   [](const FacetVertex& v) { return isFinite(v.surface.eye); });
    run.numBroken += sound ? 0 : 1;
    return sound;
}

void FacetContext::add(FacetList& list, float opacity, std::span<const Corner> corners)
{
    Facet added = facet;
    added.order = run.order++;
    added.opacity = opacity;
    added.isOpaque = corners.size() > 2 && !translucent;
    if (opacity > 0)
        list.add(added, corners);
}

} // namespace kalmyr::detail
