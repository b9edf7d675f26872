#include <kalmyr/shapes/SoText2.h>

#include "PixelText.h"
#include "ShapeActions.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/details/SoDetail.h>

namespace {

/// Weights of the corners of a triangle for a point on it.
SbVec3f weightsOf(const SbVec3f& a, const SbVec3f& b, const SbVec3f& c, const SbVec3f& point)
{
    const SbVec3d ab(b - a), ac(c - a), ap(point - a);
    const SbVec3d normal = ab.cross(ac);
    const double square = normal.dot(normal);
    if (!(square > 0))
        return {1, 0, 0};
    const double v = ap.cross(ac).dot(normal) / square, w = ab.cross(ap).dot(normal) / square;
    return SbVec3f(SbVec3d(1 - v - w, v, w));
}

} // namespace

SO_NODE_SOURCE(SoText2)

SoText2::SoText2()
{
    SO_NODE_CONSTRUCTOR(SoTextShape);
}

SoText2::~SoText2() = default;

void SoText2::initClass()
{
    SO_NODE_INIT_CLASS(SoText2, SoTextShape, "Text2");
    kalmyr::detail::addPixelShapeMethods(getClassTypeId());
}

void SoText2::buildGeometry(SoState* state, SoGeometry& geometry)
{
    kalmyr::detail::TextLayout layout;
    fillLayout(state, layout);
    if (layout.font.size > kMaxSize) {
        SoDebugError::postWarning("Text2", "\"%s\": a font of %g pixels is not possible",
                                  getName().getString(), static_cast<double>(layout.font.size));
        return;
    }
    kalmyr::detail::PixelText text;
    if (!text.paint(layout))
        SoDebugError::postWarning("Text2", "\"%s\": the text has too many pixels; cut",
                                  getName().getString());
    text.write(geometry);
}

std::unique_ptr<SoDetail> SoText2::createDetail(SoState* state, const SoGeometry& geometry,
                                                Primitive, std::size_t index, const SbVec3f& point)
{
    // That of the view has the same triangles, for all stand at one position.
    const SoRef<SoGeometry> pixels = getGeometry(state);
    const std::uint32_t* corners = &geometry.triangles[3 * index];
    SbVec2f place;
    if (pixels && pixels->positions.size() == geometry.positions.size()) {
        const SbVec3f weights =
            weightsOf(geometry.positions[corners[0]], geometry.positions[corners[1]],
                      geometry.positions[corners[2]], point);
        for (int i = 0; i < 3; ++i)
            place += pixels->pixelOffsets[corners[i]] * weights[i];
    }
    kalmyr::detail::TextLayout layout;
    fillLayout(state, layout);
    return layout.createDetail(geometry, index, place);
}
