#include "FacetCollector.h"

#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/shapes/SoAsciiText.h>
#include <kalmyr/vrml/SoVRMLText.h>

#include <algorithm>
#include <bit>
#include <cmath>

namespace kalmyr::detail {

namespace {

/// Edges shorter than this, in millimetres, are not divided, however much the light changes.
constexpr double kMinEdge = 0.4;
constexpr int kMaxDivisions = 9;
/// Triangles of less than this, in square millimetres, are not seen.
constexpr double kMinDoubleArea = 1e-9;
/// The nearest thing gets this nearness, about the size of a page.
constexpr double kNearness = 200;
constexpr int kPatternPixels = 16;
constexpr std::size_t kItemsPerStep = 64;

bool isFinite(const SbVec3f& v)
{
    return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]);
}

double distanceTo(int plane, const ClipPoint& p)
{
    const double along = plane / 2 == 0 ? p.x : plane / 2 == 1 ? p.y : p.z;
    return plane % 2 ? p.w - along : p.w + along;
}

unsigned outsideOf(const ClipPoint& p)
{
    unsigned bits = 0;
    for (int plane = 0; plane < 6; ++plane)
        bits |= distanceTo(plane, p) < 0 ? 1u << plane : 0;
    return bits;
}

/// Positive when the corners run counter-clockwise on the page, wherever they lie.
double orientation(const ClipPoint& a, const ClipPoint& b, const ClipPoint& c)
{
    return a.x * (b.y * c.w - c.y * b.w) - a.y * (b.x * c.w - c.x * b.w)
           + a.w * (b.x * c.y - c.x * b.y);
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

double distanceTo(const SbVec4f& plane, const SbVec3f& p)
{
    return static_cast<double>(p[0]) * plane[0] + static_cast<double>(p[1]) * plane[1]
           + static_cast<double>(p[2]) * plane[2] + plane[3];
}

bool isText(const SoNode* node)
{
    return node
           && (node->isOfType(SoAsciiText::getClassTypeId())
               || node->isOfType(SoVRMLText::getClassTypeId()));
}

std::vector<std::string> stringsOf(const SoNode& text)
{
    std::vector<std::string> strings;
    for (const SbString& one :
         static_cast<const SoMFString*>(text.getField(SbName("string")))->values())
        strings.emplace_back(one.getString());
    return strings;
}

bool mirrors(const SoRenderAppearance& look)
{
    return look.extras && !look.extras->stages.empty()
           && look.extras->stages[0].coordinates == SoTextureStage::SPHERE;
}

/// Whether a page can show the unit: a flat picture by the coordinates that all units share. The
/// others are left out.
bool canBake(const SoRenderAppearance& look, const SoGeometry& geometry, std::size_t unit)
{
    const bool isStage = look.extras && unit < look.extras->stages.size();
    const SoTextureValues& values = unit == 0 ? look.texture : look.extras->stages[unit].texture;
    if (values.image.isNull())
        return false;
    if (!isStage)
        return true;
    const SoTextureStage& stage = look.extras->stages[unit];
    const bool hasOwn =
        geometry.extras
        && std::any_of(geometry.extras->texCoordSets.begin(), geometry.extras->texCoordSets.end(),
                       [unit](const auto& set) { return set.unit == static_cast<int>(unit); });
    return stage.kind == SoTextureStage::FLAT && stage.mode != SoTextureStage::OFF
           && (stage.coordinates == SoTextureStage::GIVEN
               || (unit == 0 && stage.coordinates == SoTextureStage::SPHERE))
           && (unit == 0 || (!hasOwn && !mirrors(look)));
}

float difference(const SbColor& a, const SbColor& b)
{
    return std::max({std::abs(a[0] - b[0]), std::abs(a[1] - b[1]), std::abs(a[2] - b[2])});
}

} // namespace

/// The values that all triangles of one item share.
struct FacetCollector::Context {
    const SoSceneView::Item& item;
    const SoGeometry& geometry;
    const SoRenderAppearance& look;
    Lighting lighting;
    Projection projection;
    const std::vector<SbVec4f>& planes;
    FacetLayer& layer;
    SbMatrix normals;
    double pixelSize = 0; ///< millimetres
    TextureBaker* baker = nullptr;
    Facet facet;
    bool front = true;
    bool even = false; ///< one colour and one normal in the present triangle
    bool fixedColor = false;
    SbColor color{0, 0, 0};
    bool translucent = false; ///< goes above what is opaque
    double dashStart = 0;     ///< of the present segment in the pattern, in pixels

    Vertex vertex(std::uint32_t index) const;
    /// Whether a texture is painted on the surface before it is lit.
    bool paintsSurface() const
    {
        return baker && look.texture.model == SoTextureValues::SURFACE
               && (!look.extras || look.extras->stages.empty()
                   || look.extras->stages[0].mode == SoTextureStage::AS_MODEL);
    }
    SbVec2f mirrored(const SurfacePoint& surface) const;
    TextureBaker::BakeLight bakeLight(const LitCorner& corner) const;
};

TextureBaker::BakeLight FacetCollector::Context::bakeLight(const LitCorner& corner) const
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
SbVec2f FacetCollector::Context::mirrored(const SurfacePoint& surface) const
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

FacetCollector::Vertex FacetCollector::Context::vertex(std::uint32_t index) const
{
    Vertex v;
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
        const SbVec2f offset = geometry.pixelOffsets[index] * static_cast<float>(pixelSize);
        v.surface.eye += projection.onPage(offset[0], offset[1], v.clip.w);
        v.clip = projection.toClip(v.surface.eye);
    }
    return v;
}

FacetCollector::FacetCollector(const SoSceneView& view, const CollectOptions& options)
    : m_view(view), m_options(options)
{
    for (const SoSceneView::Camera& camera : view.cameras)
        m_isParallel = m_isParallel || Projection(camera, options.area).isParallel();
    for (const SoSceneView::Item& item : view.items)
        if (isText(item.node)) // asked now: the node may go while the work goes on
            m_strings[&item] = stringsOf(*item.node);
    m_depthTolerance =
        m_isParallel ? DepthTolerance{0, kNearness * 1e-6} : DepthTolerance{4e-6, 1e-12};
}

FacetLayer& FacetCollector::layer(int index)
{
    const auto i = static_cast<std::size_t>(std::max(0, index));
    if (m_layers.size() <= i)
        m_layers.resize(i + 1);
    return m_layers[i];
}

bool FacetCollector::collect(const std::function<bool(float)>& progress)
{
    int layers = 0;
    for (const SoSceneView::Item& item : m_view.items)
        layers = std::max(layers, item.layer);
    layer(layers);
    std::size_t done = 0;
    for (const SoSceneView::Item& item : m_view.items) {
        if (done++ % kItemsPerStep == 0 && progress
            && !progress(static_cast<float>(done) / static_cast<float>(m_view.items.size())))
            return false;
        collectItem(item);
    }
    scaleNearness();
    return true;
}

void FacetCollector::scaleNearness()
{
    double largest = 0;
    const auto forAll = [this](auto function) {
        for (FacetLayer& one : m_layers)
            for (FacetList* list : {&one.opaque, &one.above})
                for (Corner& corner : list->corners)
                    function(corner);
    };
    forAll([&](const Corner& corner) { largest = std::max(largest, std::abs(corner.z)); });
    const double scale = largest > 0 ? kNearness / largest : 1;
    forAll([&](Corner& corner) { corner.z *= scale; });
}

void FacetCollector::collectItem(const SoSceneView::Item& item)
{
    const SoRenderAppearance& look = *item.appearance;
    Context context{item,
                    *item.geometry,
                    look,
                    Lighting(m_view, item),
                    Projection(m_view.cameras[item.camera], m_options.area),
                    m_view.surroundings[item.surroundings].clipPlanes,
                    layer(item.layer),
                    normalMatrix(item),
                    m_options.pixelSize,
                    nullptr,
                    {}};
    context.facet.width =
        static_cast<float>(std::max(1.0f, look.drawStyle.lineWidth) * m_options.pixelSize);
    context.translucent = item.transparent;
    if (look.drawStyle.style == SoDrawStyleValues::FILLED) {
        collectFaces(context);
        collectTexts(context);
        if (m_options.isLineDrawing)
            collectOutline(context);
    } else if (look.drawStyle.style == SoDrawStyleValues::LINES) {
        collectSegments(context, getFaceEdges(context.geometry, isDashed(context)));
    }
    if (look.drawStyle.style != SoDrawStyleValues::POINTS)
        collectSegments(context, context.geometry.lines);
    collectPoints(context);
}

void FacetCollector::collectFaces(Context& context)
{
    const SoGeometry& geometry = context.geometry;
    const SoRenderAppearance& look = context.look;
    const std::size_t units =
        std::max<std::size_t>(1, look.extras ? look.extras->stages.size() : 0);
    TextureBaker::Levels levels(units);
    bool any = false;
    for (std::size_t unit = 0; unit < units; ++unit) {
        if (!canBake(look, geometry, unit))
            continue;
        const SbImage& image =
            unit == 0 ? look.texture.image : look.extras->stages[unit].texture.image;
        auto& known = m_textures[image.getBytes()];
        if (!known)
            known = std::make_unique<TextureLevels>(image);
        levels[unit] = known.get();
        any = true;
    }
    if (!any || m_options.isLineDrawing || geometry.texCoords.size() < geometry.positions.size())
        return collectTriangles(context);
    TextureBaker baker(look, levels, context.lighting.getFogColor());
    context.baker = &baker;
    context.facet.image = static_cast<std::int32_t>(m_images.size());
    collectTriangles(context);
    context.baker = nullptr;
    context.facet.image = -1;
    VectorImage image; // a null one, to which nothing refers, when nothing is seen
    baker.bake(m_options.area, m_options.resolution, image);
    m_images.push_back(std::move(image));
}

void FacetCollector::collectTriangles(Context& context)
{
    const auto& indices = context.geometry.triangles;
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
        addTriangle(context, {context.vertex(indices[i]), context.vertex(indices[i + 1]),
                              context.vertex(indices[i + 2])});
}

/// The strings of a text shape, which has one face a line, each over the box of its letters.
void FacetCollector::collectTexts(const Context& context)
{
    const SoGeometry& geometry = context.geometry;
    const auto known = m_strings.find(&context.item);
    if (known == m_strings.end() || geometry.triangleFaces.size() < geometry.getNumTriangles())
        return;
    const std::vector<std::string>& strings = known->second;
    std::vector<SbBox3f> boxes(strings.size());
    for (std::size_t t = 0; t < geometry.getNumTriangles(); ++t) {
        const auto line = static_cast<std::size_t>(geometry.triangleFaces[t]);
        for (std::size_t k = 0; line < boxes.size() && k < 3; ++k)
            boxes[line].extendBy(geometry.positions[geometry.triangles[3 * t + k]]);
    }
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        if (boxes[i].isEmpty())
            continue;
        const SbVec3f low = boxes[i].getMin(), high = boxes[i].getMax();
        Corner places[3];
        bool isSeen = true;
        std::size_t k = 0;
        for (const SbVec3f& corner :
             {low, SbVec3f(high[0], low[1], 0), SbVec3f(low[0], high[1], 0)}) {
            const ClipPoint clip = context.projection.toClip(context.item.toEye.point(corner));
            isSeen = isSeen && outsideOf(clip) == 0;
            places[k++] = context.projection.toPage(clip);
        }
        const double length = std::hypot(places[1].x - places[0].x, places[1].y - places[0].y);
        const double size = std::hypot(places[2].x - places[0].x, places[2].y - places[0].y);
        if (!isSeen || !(length > 0) || !(size > 0))
            continue;
        m_texts.push_back({strings[i], static_cast<float>(places[0].x),
                           static_cast<float>(places[0].y),
                           static_cast<float>((places[1].x - places[0].x) / length),
                           static_cast<float>((places[1].y - places[0].y) / length),
                           static_cast<float>(size), static_cast<float>(length)});
    }
}

void FacetCollector::collectOutline(Context& context)
{
    const SceneOutline outline = getOutline(context.geometry);
    context.fixedColor = true;
    context.color = m_options.ink;
    collectSegments(context, outline.sharp);
    for (std::size_t i = 0; i + 3 < outline.smooth.size(); i += 4) {
        const std::uint32_t* at = &outline.smooth[i];
        const Vertex a = context.vertex(at[1]), b = context.vertex(at[2]);
        const bool one = orientation(a.clip, b.clip, context.vertex(at[0]).clip) > 0;
        const bool other = orientation(b.clip, a.clip, context.vertex(at[3]).clip) > 0;
        if (one != other)
            addSegment(context, a, b);
    }
    context.fixedColor = false;
}

void FacetCollector::collectSegments(Context& context, const std::vector<std::uint32_t>& indices)
{
    context.facet.width = std::max(context.facet.width, static_cast<float>(m_options.minLineWidth));
    const bool dashed = isDashed(context);
    const std::vector<SbVec3f>& positions = context.geometry.positions;
    double at = 0;
    for (std::size_t i = 0; i + 1 < indices.size(); i += 2) {
        const Vertex a = context.vertex(indices[i]), b = context.vertex(indices[i + 1]);
        if (dashed) {
            const bool goesOn = i > 0 && positions[indices[i]] == positions[indices[i - 1]];
            context.dashStart = goesOn ? at : 0;
            at = std::fmod(context.dashStart + pixelsAlong(context, a, b, b), kPatternPixels);
        }
        addSegment(context, a, b);
    }
}

bool FacetCollector::isDashed(const Context& context)
{
    return (context.look.drawStyle.linePattern & 0xffffu) != 0xffff && !context.fixedColor;
}

/// How many pixels of the segment from a to b, cut at the near plane, lie before a point of it.
double FacetCollector::pixelsAlong(const Context& context, const Vertex& a, const Vertex& b,
                                   const Vertex& point) const
{
    constexpr int kNearPlane = 4;
    const auto nearness = [](const Vertex& v) { return distanceTo(kNearPlane, v.clip); };
    Vertex from = a, to = b;
    if (!isFinite(a.surface.eye) || !isFinite(b.surface.eye)
        || !cutSegment(context, from, to, nearness))
        return 0;
    const Corner begin = context.projection.toPage(from.clip);
    const Corner end = context.projection.toPage(nearness(point) < 0 ? to.clip : point.clip);
    return std::hypot(end.x - begin.x, end.y - begin.y) / m_options.pixelSize;
}

void FacetCollector::collectPoints(Context& context)
{
    const SoGeometry& geometry = context.geometry;
    const SoDrawStyleValues& style = context.look.drawStyle;
    context.facet.width = static_cast<float>(
        std::max(std::max(1.0f, style.pointSize) * m_options.pixelSize, m_options.minLineWidth));
    if (style.style == SoDrawStyleValues::POINTS) {
        for (std::uint32_t i = 0; i < geometry.positions.size(); ++i)
            addPoint(context, context.vertex(i));
    } else {
        for (const std::uint32_t i : geometry.points)
            addPoint(context, context.vertex(i));
    }
}

FacetCollector::LitCorner FacetCollector::lit(const Context& context,
                                              const SurfacePoint& surface) const
{
    LitCorner corner{surface, context.projection.toClip(surface.eye), {}, {}};
    corner.page = context.projection.toPage(corner.clip);
    corner.color = context.fixedColor        ? context.color
                   : context.paintsSurface() ? context.lighting.split(surface, context.front).sum()
                   : context.baker           ? context.lighting.light(surface, context.front)
                                             : context.lighting.shade(surface, context.front);
    for (std::size_t c = 0; c < 3; ++c)
        corner.page.color[c] = std::clamp(corner.color[static_cast<int>(c)], 0.0f, 1.0f);
    return corner;
}

FacetCollector::Vertex FacetCollector::cross(const Context& context, const Vertex& a,
                                             const Vertex& b, double distanceA, double distanceB)
{
    Vertex between;
    between.surface = SurfacePoint::between(
        a.surface, b.surface, static_cast<float>(distanceA / (distanceA - distanceB)));
    between.clip = context.projection.toClip(between.surface.eye);
    return between;
}

/// Keeps what has a distance of 0 or more.
template <class Distance>
void FacetCollector::cutPolygon(const Context& context, std::vector<Vertex>& polygon,
                                Distance distance)
{
    std::vector<Vertex> kept;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Vertex& a = polygon[i];
        const Vertex& b = polygon[(i + 1) % polygon.size()];
        const double da = distance(a), db = distance(b);
        if (da >= 0)
            kept.push_back(a);
        if ((da < 0) != (db < 0))
            kept.push_back(cross(context, a, b, da, db));
    }
    polygon.swap(kept);
}

/// False when nothing is left.
template <class Distance>
bool FacetCollector::cutSegment(const Context& context, Vertex& a, Vertex& b, Distance distance)
{
    const double da = distance(a), db = distance(b);
    if (da < 0 && db < 0)
        return false;
    if ((da < 0) != (db < 0))
        (da < 0 ? a : b) = cross(context, a, b, da, db);
    return true;
}

void FacetCollector::addTriangle(Context& context, const std::array<Vertex, 3>& corners)
{
    if (!isFinite(corners[0].surface.eye) || !isFinite(corners[1].surface.eye)
        || !isFinite(corners[2].surface.eye)) {
        ++m_numBroken;
        return;
    }
    const unsigned out[] = {outsideOf(corners[0].clip), outsideOf(corners[1].clip),
                            outsideOf(corners[2].clip)};
    if (out[0] & out[1] & out[2])
        return;
    const double turn = orientation(corners[0].clip, corners[1].clip, corners[2].clip);
    context.front = (turn > 0) != context.item.mirrored;
    if (turn == 0 || (context.geometry.solid && !context.front))
        return;
    context.even = context.lighting.isEven() && corners[0].surface.color == corners[1].surface.color
                   && corners[0].surface.color == corners[2].surface.color
                   && corners[0].surface.normal == corners[1].surface.normal
                   && corners[0].surface.normal == corners[2].surface.normal;
    if ((out[0] | out[1] | out[2]) == 0 && context.planes.empty()) {
        divide(context, lit(context, corners[0].surface), lit(context, corners[1].surface),
               lit(context, corners[2].surface), 0);
        return;
    }
    std::vector<Vertex> polygon(corners.begin(), corners.end());
    for (int plane = 0; plane < 6; ++plane)
        if ((out[0] | out[1] | out[2]) & 1u << plane)
            cutPolygon(context, polygon,
                       [plane](const Vertex& v) { return distanceTo(plane, v.clip); });
    for (const SbVec4f& plane : context.planes)
        cutPolygon(context, polygon,
                   [&plane](const Vertex& v) { return distanceTo(plane, v.surface.eye); });
    if (polygon.size() < 3)
        return;
    const LitCorner first = lit(context, polygon[0].surface);
    for (std::size_t i = 2; i < polygon.size(); ++i)
        divide(context, first, lit(context, polygon[i - 1].surface),
               lit(context, polygon[i].surface), 0);
}

FacetCollector::LitCorner FacetCollector::middle(const Context& context, const LitCorner& a,
                                                 const LitCorner& b) const
{
    return lit(context, SurfacePoint::between(a.surface, b.surface, 0.5f));
}

/// Whether the colour between two corners is not what lies between their colours on the page. Goes
/// by the edge alone, so that both triangles beside it are divided alike.
bool FacetCollector::isBent(const LitCorner& a, const LitCorner& b, const LitCorner& between) const
{
    const auto t =
        static_cast<float>(b.clip.w == a.clip.w ? 0.5 : b.clip.w / (a.clip.w + b.clip.w));
    SbColor even;
    for (int c = 0; c < 3; ++c)
        even[c] = b.color[c] + (a.color[c] - b.color[c]) * (1 - t);
    return difference(even, between.color) > m_options.tolerance;
}

/// Whether the edge of a spot light, or the end of a light's reach, crosses between two corners.
bool FacetCollector::hasSpot(const Context& context, const LitCorner& a, const LitCorner& b) const
{
    return context.lighting.hasSpots() && isBent(a, b, middle(context, a, b));
}

void FacetCollector::divide(Context& context, const LitCorner& a, const LitCorner& b,
                            const LitCorner& c, int depth)
{
    if (context.even || m_options.isLineDrawing || depth >= kMaxDivisions)
        return addFacet(context, a, b, c);
    const LitCorner* corner[] = {&a, &b, &c};
    LitCorner between[3];
    bool isDivided[3] = {};
    int divisions = 0;
    double longest = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const LitCorner& p = *corner[i];
        const LitCorner& q = *corner[(i + 1) % 3];
        const double length = std::hypot(p.page.x - q.page.x, p.page.y - q.page.y);
        longest = std::max(longest, length);
        if (length < kMinEdge)
            continue;
        between[i] = middle(context, p, q);
        isDivided[i] = isBent(p, q, between[i]) || hasSpot(context, p, between[i])
                       || hasSpot(context, between[i], q);
        divisions += isDivided[i] ? 1 : 0;
    }
    if (divisions == 3) {
        divide(context, a, between[0], between[2], depth + 1);
        divide(context, between[0], b, between[1], depth + 1);
        divide(context, between[2], between[1], c, depth + 1);
        return divide(context, between[0], between[1], between[2], depth + 1);
    }
    // Turned so that the first edge is divided, and the third one is not.
    const std::size_t first = isDivided[0] && !isDivided[2]   ? 0
                              : isDivided[1] && !isDivided[0] ? 1
                                                              : 2;
    const LitCorner& p = *corner[first];
    const LitCorner& q = *corner[(first + 1) % 3];
    const LitCorner& r = *corner[(first + 2) % 3];
    if (divisions == 2) {
        const LitCorner& pq = between[first];
        const LitCorner& qr = between[(first + 1) % 3];
        divide(context, pq, q, qr, depth + 1);
        divide(context, p, pq, qr, depth + 1);
        return divide(context, p, qr, r, depth + 1);
    }
    if (divisions == 1) {
        divide(context, p, between[first], r, depth + 1);
        return divide(context, between[first], q, r, depth + 1);
    }
    if (longest > 4 * kMinEdge) {
        // A spot of light in the middle that no edge sees.
        const LitCorner heart =
            lit(context, SurfacePoint::between(SurfacePoint::between(a.surface, b.surface, 0.5f),
                                               c.surface, 1.0f / 3));
        SbColor even;
        for (int k = 0; k < 3; ++k)
            even[k] = (a.color[k] + b.color[k] + c.color[k]) / 3;
        if (difference(even, heart.color) > 2 * m_options.tolerance) {
            divide(context, a, b, heart, depth + 1);
            divide(context, b, c, heart, depth + 1);
            return divide(context, c, a, heart, depth + 1);
        }
    }
    addFacet(context, a, b, c);
}

void FacetCollector::addFacet(Context& context, const LitCorner& a, const LitCorner& b,
                              const LitCorner& c)
{
    std::array<Corner, 3> corners{a.page, b.page, c.page};
    const double area = doubleArea(corners);
    if (!(std::abs(area) > kMinDoubleArea))
        return;
    if (area < 0)
        std::swap(corners[1], corners[2]);
    if (planeOf(corners).isSteep)
        return;
    if (context.baker) {
        TextureBaker::Triangle triangle;
        std::size_t i = 0;
        for (const LitCorner* from : {&a, &b, &c})
            triangle[i++] = {from->page.x,     from->page.y,           from->page.z,
                             1 / from->clip.w, from->surface.texCoord, context.bakeLight(*from)};
        context.baker->add(triangle);
    }
    Facet facet = context.facet;
    facet.order = m_order++;
    facet.opacity = context.translucent && !context.baker
                        ? (a.surface.color[3] + b.surface.color[3] + c.surface.color[3]) / 3
                        : 1;
    FacetList& list = context.translucent ? context.layer.above : context.layer.opaque;
    facet.isOpaque = !context.translucent;
    const bool isSeen = facet.opacity > 0 && !(m_options.isLineDrawing && context.translucent);
    if (isSeen)
        list.add(facet, corners);
}

void FacetCollector::addSegment(Context& context, Vertex a, Vertex b)
{
    if (!isFinite(a.surface.eye) || !isFinite(b.surface.eye)) {
        ++m_numBroken;
        return;
    }
    const Vertex start = a, end = b;
    for (int plane = 0; plane < 6; ++plane)
        if (!cutSegment(context, a, b,
                        [plane](const Vertex& v) { return distanceTo(plane, v.clip); }))
            return;
    for (const SbVec4f& plane : context.planes)
        if (!cutSegment(context, a, b,
                        [&plane](const Vertex& v) { return distanceTo(plane, v.surface.eye); }))
            return;
    context.front = true;
    const LitCorner from = lit(context, a.surface), to = lit(context, b.surface);
    if (!isDashed(context))
        return addDash(context, from, to);
    const double cut = pixelsAlong(context, start, end, a);
    addDashes(context, from, to, std::fmod(context.dashStart + cut, kPatternPixels));
}

/// Bits of the pattern are pixels along the line, as the renderer counts them: `start` lie before
/// the segment.
void FacetCollector::addDashes(Context& context, const LitCorner& from, const LitCorner& to,
                               double start)
{
    const unsigned pattern = context.look.drawStyle.linePattern & 0xffffu;
    const double pixels =
        std::hypot(to.page.x - from.page.x, to.page.y - from.page.y) / m_options.pixelSize;
    const auto at = [&](double share) {
        // The share is one of the page; its place in space depends on the distances.
        const double wa = from.clip.w, wb = to.clip.w;
        const double t = share * wa / (share * wa + (1 - share) * wb);
        return lit(context, SurfacePoint::between(from.surface, to.surface, static_cast<float>(t)));
    };
    constexpr double kMaxDashes = 20'000;
    if (pixels / kPatternPixels > kMaxDashes)
        return addDash(context, from, to);
    for (double begin = -start; begin < pixels; begin += kPatternPixels) {
        for (int bit = 0; bit < kPatternPixels;) {
            if (!(pattern >> bit & 1)) {
                ++bit;
                continue;
            }
            const int length = std::countr_one(pattern >> bit);
            const double end = std::min(pixels, begin + bit + length);
            const double first = std::max(0.0, begin + bit);
            if (first < end)
                addDash(context, at(first / pixels), at(end / pixels));
            bit += length;
        }
    }
}

void FacetCollector::addDash(Context& context, const LitCorner& a, const LitCorner& b)
{
    Facet facet = context.facet;
    facet.order = m_order++;
    facet.opacity = context.translucent && !context.fixedColor
                        ? (a.surface.color[3] + b.surface.color[3]) / 2
                        : 1;
    if (facet.opacity > 0)
        context.layer.above.add(facet, std::array{a.page, b.page});
}

void FacetCollector::addPoint(Context& context, const Vertex& vertex)
{
    if (!isFinite(vertex.surface.eye)) {
        ++m_numBroken;
        return;
    }
    if (outsideOf(vertex.clip))
        return;
    for (const SbVec4f& plane : context.planes)
        if (distanceTo(plane, vertex.surface.eye) < 0)
            return;
    context.front = true;
    const LitCorner place = lit(context, vertex.surface);
    Facet facet = context.facet;
    facet.order = m_order++;
    facet.opacity = context.translucent ? vertex.surface.color[3] : 1;
    if (facet.opacity > 0)
        context.layer.above.add(facet, std::array{place.page});
}

} // namespace kalmyr::detail
