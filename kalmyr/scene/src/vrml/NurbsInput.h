#pragma once

#include "GeometryInput.h"

#include <kalmyr/vrml/SoVRMLMacros.h>
#include <kalmyr/vrml/SoVRMLNurbs.h>
#include <kalmyr/vrml/SoVRMLProto.h>

#include "shapes/Nurbs.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// \file
/// Curves and nets from the fields of VRML97 nodes. The functions return what is wrong with the
/// fields, or an empty text.

/// Adds the fields of NurbsNetFields, to be used like SO_VRML_FIELD.
#define SO_VRML_NET_FIELDS(defaultOrder)                                                           \
    SO_VRML_FIELD(uDimension, (0));                                                                \
    SO_VRML_EMPTY_FIELD(uKnot);                                                                    \
    SO_VRML_FIELD(uOrder, (defaultOrder));                                                         \
    SO_VRML_FIELD(vDimension, (0));                                                                \
    SO_VRML_EMPTY_FIELD(vKnot);                                                                    \
    SO_VRML_FIELD(vOrder, (defaultOrder))

namespace kalmyr::detail {

/// Returns the node, or the one that an instance of a prototype stands for, if it is a T.
template <class T>
T* nodeAs(SoNode* node)
{
    node = SoVRMLProtoInstance::resolve(node);
    return node && node->isOfType(T::getClassTypeId()) ? static_cast<T*>(node) : nullptr;
}
template <class T>
T* nodeAs(const SoSFNode& field)
{
    return nodeAs<T>(field.isIgnored() ? nullptr : field.getValue());
}

/// Returns the knots of a curve from its first control point to its last one.
std::vector<float> evenKnots(int numPoints, int order);

/// Sets even knots where there are none. `most` is how many control points are given.
std::string setKnots(NurbsKnots& to, std::span<const float> knots, int numPoints, int order,
                     int most);

/// Appends homogeneous points to `to`; weights that are missing are 1.
template <class Vec>
std::string fillPoints(std::vector<SbVec4d>& to, std::span<const Vec> points,
                       std::span<const float> weights, std::size_t count)
{
    if (points.size() < count)
        return "there are " + std::to_string(points.size()) + " control points where "
               + std::to_string(count) + " are needed";
    to.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double w = i < weights.size() ? weights[i] : 1;
        const Vec& p = points[i];
        double z = 0;
        if constexpr (Vec::kSize > 2)
            z = p[2];
        to.emplace_back(p[0] * w, p[1] * w, z * w, w);
    }
    return checkPoints(to);
}

template <class Vec>
std::string fillCurve(NurbsCurve& curve, std::span<const Vec> points,
                      std::span<const float> weights, std::span<const float> knots, int numPoints,
                      int order)
{
    std::string fault =
        setKnots(curve.knots, knots, numPoints, order, static_cast<int>(points.size()));
    if (fault.empty())
        fault = fillPoints(curve.points, points, weights, static_cast<std::size_t>(numPoints));
    return fault;
}

/// Fills in knots and points of a net; of `numLayers` nets one after another all points, and the
/// knots of one.
template <class Vec>
std::string fillNet(const NurbsNetFields& fields, std::span<const Vec> points,
                    std::span<const float> weights, NurbsSurface& net, int numLayers = 1)
{
    const auto given = static_cast<int>(points.size());
    const int numU = fields.uDimension.getValue(), numV = fields.vDimension.getValue();
    std::string fault =
        setKnots(net.u, fields.uKnot.values(), numU, fields.uOrder.getValue(), given);
    if (fault.empty())
        fault = setKnots(net.v, fields.vKnot.values(), numV, fields.vOrder.getValue(), given);
    if (!fault.empty())
        return fault;
    const std::size_t layer = static_cast<std::size_t>(numU) * static_cast<std::size_t>(numV);
    return fillPoints(net.points, points, weights, layer * static_cast<std::size_t>(numLayers));
}

/// Returns the key of what the shapes take from the state.
std::uint64_t nurbsShapeKey(SoState* state);

} // namespace kalmyr::detail
