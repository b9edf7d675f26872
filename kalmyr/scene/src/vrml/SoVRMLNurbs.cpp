#include <kalmyr/vrml/SoVRMLNurbs.h>

#include "NurbsInput.h"

#include <kalmyr/elements/SoDrawElements.h>

#include "shapes/NurbsBuilder.h"

#include <algorithm>
#include <cmath>

using namespace kalmyr::detail;

namespace {

int segmentsOf(int tessellation, int numPoints)
{
    constexpr std::int64_t kMost = kMaxCurvePoints;
    const std::int64_t count =
        tessellation >= 0 ? tessellation : -std::int64_t(tessellation) * numPoints;
    return static_cast<int>(std::min(count, kMost));
}

} // namespace

SO_NODE_SOURCE(SoVRMLNurbsCurve)

SoVRMLNurbsCurve::SoVRMLNurbsCurve()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EXPOSED_EMPTY(controlPoint);
    SO_VRML_EXPOSED_EMPTY(weight);
    SO_VRML_EXPOSED(tessellation, (0));
    SO_VRML_EMPTY_FIELD(knot);
    SO_VRML_FIELD(order, (3));
}

SoVRMLNurbsCurve::~SoVRMLNurbsCurve() = default;

void SoVRMLNurbsCurve::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsCurve, SoVRMLGeometry, "VRMLNurbsCurve");
}

std::uint64_t SoVRMLNurbsCurve::stateKey(SoState* state) const
{
    return nurbsShapeKey(state);
}

void SoVRMLNurbsCurve::buildGeometry(SoState* state, SoGeometry& geometry)
{
    const int count = controlPoint.getNum();
    if (count == 0)
        return;
    NurbsCurve curve;
    const std::string fault = fillCurve(curve, controlPoint.values(), weight.values(),
                                        knot.values(), count, order.getValue());
    if (!fault.empty())
        return warnOfNurbs(this, fault);
    buildNurbsCurve(curve, toleranceOf(SoComplexityElement::get(state)) * sizeOf(curve.points),
                    geometry, segmentsOf(tessellation.getValue(), count));
}

SO_NODE_SOURCE(SoVRMLNurbsSurface)

SoVRMLNurbsSurface::SoVRMLNurbsSurface()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EXPOSED_EMPTY(controlPoint);
    SO_VRML_EXPOSED_EMPTY(texCoord);
    SO_VRML_EXPOSED(uTessellation, (0));
    SO_VRML_EXPOSED(vTessellation, (0));
    SO_VRML_EXPOSED_EMPTY(weight);
    SO_VRML_FIELD(ccw, (true));
    SO_VRML_FIELD(solid, (true));
    SO_VRML_NET_FIELDS(3);
}

SoVRMLNurbsSurface::~SoVRMLNurbsSurface() = default;

void SoVRMLNurbsSurface::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsSurface, SoVRMLGeometry, "VRMLNurbsSurface");
}

std::uint64_t SoVRMLNurbsSurface::stateKey(SoState* state) const
{
    return nurbsShapeKey(state);
}

std::string SoVRMLNurbsSurface::fill(SoState* state, NurbsSurfaceInput& input,
                                     NurbsSurface& texture) const
{
    NurbsSurface& to = input.surface;
    std::string fault = fillNet(*this, controlPoint.values(), weight.values(), to);
    if (!fault.empty())
        return fault;
    input.tolerance = toleranceOf(SoComplexityElement::get(state)) * sizeOf(to.points);
    input.segments[0] = segmentsOf(uTessellation.getValue(), uDimension.getValue());
    input.segments[1] = segmentsOf(vTessellation.getValue(), vDimension.getValue());
    input.clockwise = !ccw.getValue();
    input.solid = solid.getValue();
    input.makesTexCoords = hasTexture(state);
    if (!input.makesTexCoords)
        return {};
    if (const auto* picture = nodeAs<SoVRMLNurbsTextureSurface>(texCoord)) {
        if (picture->controlPoint.getNum() == 0)
            return {}; // nothing given yet
        fault =
            fillNet(*picture, picture->controlPoint.values(), picture->weight.values(), texture);
    } else {
        const std::span<const SbVec2f> values = texCoordsOf(texCoord);
        if (values.empty())
            return {};
        texture.u = to.u;
        texture.v = to.v;
        fault = fillPoints(texture.points, values, weight.values(), to.points.size());
    }
    input.texCoords = &texture;
    return fault.empty() ? fault : "texCoord: " + fault;
}

void SoVRMLNurbsSurface::buildGeometry(SoState* state, SoGeometry& geometry)
{
    if (controlPoint.getNum() == 0)
        return; // nothing given yet
    NurbsSurfaceInput input;
    NurbsSurface texture;
    input.node = this;
    const std::string fault = fill(state, input, texture);
    if (!fault.empty())
        return warnOfNurbs(this, fault);
    buildNurbsSurface(input, geometry);
}

SO_NODE_SOURCE(SoVRMLNurbsTextureSurface)

SoVRMLNurbsTextureSurface::SoVRMLNurbsTextureSurface()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(controlPoint);
    SO_VRML_EXPOSED_EMPTY(weight);
    SO_VRML_NET_FIELDS(3);
}

SoVRMLNurbsTextureSurface::~SoVRMLNurbsTextureSurface() = default;

void SoVRMLNurbsTextureSurface::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsTextureSurface, SoNode, "VRMLNurbsTextureSurface");
}

SO_NODE_SOURCE(SoVRMLNurbsGroup)

SoVRMLNurbsGroup::SoVRMLNurbsGroup()
{
    SO_NODE_CONSTRUCTOR(SoVRMLParent);
    SO_VRML_EXPOSED(tessellationScale, (1.0f));
}

SoVRMLNurbsGroup::~SoVRMLNurbsGroup() = default;

void SoVRMLNurbsGroup::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsGroup, SoVRMLParent, "VRMLNurbsGroup");
}

/// The number of segments grows tenfold from no complexity to a whole one.
void SoVRMLNurbsGroup::setState(SoState* state)
{
    const float scale = tessellationScale.getValue();
    if (tessellationScale.isIgnored() || !(scale > 0) || !std::isfinite(scale) || scale == 1)
        return;
    const float before = SoComplexityElement::get(state);
    auto& element = state->write<SoComplexityElement>();
    element.value().value = std::clamp(before + std::log10(scale), 0.0f, 1.0f);
    element.accumulatedBy(this);
}
