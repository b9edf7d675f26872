#include "FaceTessellator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <random>
#include <utility>

#include <GL/glu.h>

namespace kalmyr::detail {

struct FaceTessellator::Glu {
    struct Corner {
        std::array<double, 3> position;
        std::uint32_t number;
    };

    FaceTessellator* owner = nullptr;
    GLUtesselator* tess = gluNewTess();
    std::deque<Corner> corners; // addresses are handed to the tessellator and must stay
    std::uint32_t numGiven = 0;
    bool failed = false;
    bool turned = false; ///< the plane is turned a quarter, about `away`
    int away = 0;

    ~Glu()
    {
        if (tess)
            gluDeleteTess(tess);
    }

    /// A quarter about the axis that the polygon is seen along; back for a negative sign.
    std::array<double, 3> turn(const double* p, int sign) const
    {
        std::array<double, 3> to{p[0], p[1], p[2]};
        if (turned) {
            to[(away + 1) % 3] = sign * p[(away + 2) % 3];
            to[(away + 2) % 3] = -sign * p[(away + 1) % 3];
        }
        return to;
    }

    void* add(const double* position)
    {
        corners.push_back(
            {{position[0], position[1], position[2]}, static_cast<std::uint32_t>(corners.size())});
        return &corners.back();
    }
};

namespace {

using Callback = void (*)();

/// Polygons with fewer corners take no time worth saving.
constexpr std::size_t kFewCorners = 500;
constexpr std::size_t kSamples = 20'000;
constexpr double kCrossingsPerCorner = 30;
/// Half a minute.
constexpr double kMaxSweepSteps = 3e9;

double sideOf(const SbVec2f& from, const SbVec2f& to, const SbVec2f& point)
{
    const double ax = double(to[0]) - from[0];
    const double ay = double(to[1]) - from[1];
    return ax * (double(point[1]) - from[1]) - ay * (double(point[0]) - from[0]);
}

bool cross(const SbVec2f& a, const SbVec2f& b, const SbVec2f& c, const SbVec2f& d)
{
    return sideOf(a, b, c) * sideOf(a, b, d) < 0 && sideOf(c, d, a) * sideOf(c, d, b) < 0;
}

int longestComponent(const SbVec3f& normal)
{
    int longest = 0;
    for (int i = 1; i < 3; ++i)
        if (std::abs(normal[i]) > std::abs(normal[longest]))
            longest = i;
    return longest;
}

/// The polygon as seen along the longest component of its normal.
std::vector<SbVec2f> flatten(std::span<const SbVec3f> polygon, const SbVec3f& normal)
{
    const int away = longestComponent(normal);
    std::vector<SbVec2f> flat;
    flat.reserve(polygon.size());
    for (const SbVec3f& p : polygon)
        flat.emplace_back(p[(away + 1) % 3], p[(away + 2) % 3]);
    return flat;
}

/// Whether the edges cross so often, by a sample of pairs, that cutting them at every crossing
/// would take minutes: nothing that anybody would want to see, but files may hold it.
bool crossesEverywhere(std::span<const SbVec2f> flat)
{
    const std::size_t n = flat.size();
    std::minstd_rand random; // always the same sample, for the same picture every time
    std::size_t crossings = 0;
    for (std::size_t i = 0; i < kSamples; ++i) {
        const std::size_t a = random() % n;
        const std::size_t b = random() % n;
        crossings += cross(flat[a], flat[(a + 1) % n], flat[b], flat[(b + 1) % n]);
    }
    const double pairs = 0.5 * double(n) * double(n);
    return double(crossings) / kSamples * pairs > kCrossingsPerCorner * double(n);
}

/// How many edges a line that sweeps along the axis meets, for each corner where it begins to meet
/// two more: the tessellator looks at that many. By a sample of places.
double sweepSteps(std::span<const SbVec2f> flat, int axis)
{
    constexpr std::size_t kPlaces = 40;
    const std::size_t n = flat.size();
    std::size_t met = 0, begins = 0;
    for (std::size_t i = 0; i < kPlaces; ++i) {
        const float at = flat[i * n / kPlaces][axis];
        float before = flat[n - 1][axis];
        for (const SbVec2f& p : flat) {
            met += (before < at) != (p[axis] < at);
            before = p[axis];
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        const float here = flat[i][axis];
        begins += here < flat[(i + 1) % n][axis] && here <= flat[(i + n - 1) % n][axis];
    }
    return double(met) / kPlaces * double(begins);
}

} // namespace

FaceTessellator::FaceTessellator() : m_glu(std::make_unique<Glu>())
{
    m_glu->owner = this;
    GLUtesselator* tess = m_glu->tess;
    if (!tess)
        return;
    void (*vertex)(void*, void*) = [](void* corner, void* glu) {
        static_cast<Glu*>(glu)->owner->m_triangles.push_back(
            static_cast<Glu::Corner*>(corner)->number);
    };
    void (*combine)(GLdouble*, void**, GLfloat*, void**, void*) = [](GLdouble* position,
                                                                     void** from, GLfloat* weights,
                                                                     void** out, void* data) {
        auto* glu = static_cast<Glu*>(data);
        const auto heaviest = std::max_element(weights, weights + 4) - weights;
        std::uint32_t like = from[heaviest] ? static_cast<Glu::Corner*>(from[heaviest])->number : 0;
        auto& made = glu->owner->m_newPoints;
        if (like >= glu->numGiven)
            like = made[like - glu->numGiven].like;
        *out = glu->add(position);
        const auto back = glu->turn(position, -1);
        made.push_back({SbVec3f(back[0], back[1], back[2]), like});
    };
    void (*error)(GLenum, void*) = [](GLenum, void* data) {
        static_cast<Glu*>(data)->failed = true;
    };
    // Asking for edge flags makes it hand out single triangles instead of fans and strips.
    void (*edge)(GLboolean, void*) = [](GLboolean, void*) {};
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<Callback>(vertex));
    gluTessCallback(tess, GLU_TESS_COMBINE_DATA, reinterpret_cast<Callback>(combine));
    gluTessCallback(tess, GLU_TESS_ERROR_DATA, reinterpret_cast<Callback>(error));
    gluTessCallback(tess, GLU_TESS_EDGE_FLAG_DATA, reinterpret_cast<Callback>(edge));
    gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_ODD);
}

FaceTessellator::~FaceTessellator() = default;

/// Chooses the way to sweep; false when either would take minutes.
bool FaceTessellator::prepare(std::span<const SbVec3f> polygon, const SbVec3f& normal)
{
    m_glu->away = longestComponent(normal);
    m_glu->turned = false;
    if (polygon.size() < kFewCorners)
        return true;
    const std::vector<SbVec2f> flat = flatten(polygon, normal);
    if (crossesEverywhere(flat))
        return false;
    const double across = sweepSteps(flat, 0), along = sweepSteps(flat, 1);
    m_glu->turned = along < across;
    return std::min(across, along) < kMaxSweepSteps;
}

bool FaceTessellator::cutSimple(std::span<const SbVec3f> polygon, const SbVec3f& normal)
{
    if (!m_simple.tessellate(flatten(polygon, normal)))
        return false;
    m_triangles = m_simple.getTriangles();
    if (normal[longestComponent(normal)] < 0) // seen from behind
        for (std::size_t i = 0; i < m_triangles.size(); i += 3)
            std::swap(m_triangles[i + 1], m_triangles[i + 2]);
    return true;
}

bool FaceTessellator::tessellate(std::span<const SbVec3f> polygon, const SbVec3f& normal)
{
    m_triangles.clear();
    m_newPoints.clear();
    if (cutSimple(polygon, normal))
        return true;
    m_glu->corners.clear();
    m_glu->numGiven = static_cast<std::uint32_t>(polygon.size());
    m_glu->failed = !m_glu->tess || !prepare(polygon, normal);
    if (m_glu->failed)
        return false;
    GLUtesselator* tess = m_glu->tess;
    const double given[3] = {normal[0], normal[1], normal[2]};
    const auto facing = m_glu->turn(given, 1);
    gluTessNormal(tess, facing[0], facing[1], facing[2]);
    gluTessBeginPolygon(tess, m_glu.get());
    gluTessBeginContour(tess);
    for (const SbVec3f& p : polygon) {
        const double position[3] = {p[0], p[1], p[2]};
        void* corner = m_glu->add(m_glu->turn(position, 1).data());
        gluTessVertex(tess, static_cast<Glu::Corner*>(corner)->position.data(), corner);
    }
    gluTessEndContour(tess);
    gluTessEndPolygon(tess);
    if (m_glu->failed || m_triangles.size() % 3)
        m_triangles.clear();
    return !m_triangles.empty();
}

} // namespace kalmyr::detail
