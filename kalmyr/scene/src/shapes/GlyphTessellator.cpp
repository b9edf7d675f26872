#include "GlyphTessellator.h"

#include <array>
#include <deque>
#include <memory>

#include <GL/glu.h>

namespace kalmyr::detail {

namespace {

using Callback = void (*)();

struct Corner {
    std::array<double, 3> position;
    std::uint32_t number;
};

struct Run {
    Glyph& glyph;
    std::deque<Corner> corners; // addresses are handed to the tessellator and must stay
    bool failed = false;

    Corner* add(double x, double y)
    {
        corners.push_back({{x, y, 0}, static_cast<std::uint32_t>(glyph.points.size())});
        glyph.points.emplace_back(static_cast<float>(x), static_cast<float>(y));
        return &corners.back();
    }
};

void setCallbacks(GLUtesselator* tess)
{
    void (*vertex)(void*, void*) = [](void* corner, void* run) {
        static_cast<Run*>(run)->glyph.triangles.push_back(static_cast<Corner*>(corner)->number);
    };
    void (*combine)(GLdouble*, void**, GLfloat*, void**,
                    void*) = [](GLdouble* position, void**, GLfloat*, void** out, void* run) {
        *out = static_cast<Run*>(run)->add(position[0], position[1]);
    };
    void (*error)(GLenum, void*) = [](GLenum, void* run) { static_cast<Run*>(run)->failed = true; };
    // Asking for edge flags makes it hand out single triangles instead of fans and strips.
    void (*edge)(GLboolean, void*) = [](GLboolean, void*) {};
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<Callback>(vertex));
    gluTessCallback(tess, GLU_TESS_COMBINE_DATA, reinterpret_cast<Callback>(combine));
    gluTessCallback(tess, GLU_TESS_ERROR_DATA, reinterpret_cast<Callback>(error));
    gluTessCallback(tess, GLU_TESS_EDGE_FLAG_DATA, reinterpret_cast<Callback>(edge));
    gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_NONZERO);
    gluTessNormal(tess, 0, 0, 1);
}

} // namespace

void tessellateContours(const std::vector<std::vector<SbVec2f>>& contours, Glyph& glyph)
{
    const std::unique_ptr<GLUtesselator, decltype(&gluDeleteTess)> tess(gluNewTess(),
                                                                        gluDeleteTess);
    if (!tess)
        return;
    Run run{glyph, {}};
    setCallbacks(tess.get());
    gluTessBeginPolygon(tess.get(), &run);
    for (const std::vector<SbVec2f>& contour : contours) {
        gluTessBeginContour(tess.get());
        for (const SbVec2f& p : contour) {
            Corner* corner = run.add(p[0], p[1]);
            gluTessVertex(tess.get(), corner->position.data(), corner);
        }
        gluTessEndContour(tess.get());
    }
    gluTessEndPolygon(tess.get());
    if (run.failed || glyph.triangles.size() % 3)
        glyph.triangles.clear();
}

} // namespace kalmyr::detail
