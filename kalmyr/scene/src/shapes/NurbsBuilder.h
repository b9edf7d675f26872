#pragma once

#include "Nurbs.h"

#include <kalmyr/elements/SoNurbsElements.h>

#include <cstdint>

class SoGeometry;
class SoNode;
class SoState;

namespace kalmyr::detail {

/// Control points of the state: homogeneous where the node that set them has such; all of them in
/// order, or those that `indices` name. Says what is wrong when there are not `count`.
std::string controlPoints(SoState* state, std::span<const std::int32_t> indices, std::size_t count,
                          std::vector<SbVec4d>& points);

/// The outlines that the pieces make; each goes on where the one before ended.
std::vector<std::vector<SbVec2d>> outlinesOf(const std::vector<SoProfilePiece>& pieces);

/// The line of a curve in the plane of parameters. Says what is wrong with the knots.
std::string makeProfileLine(NurbsCurve&& curve, std::span<const float> knots, float complexity,
                            std::vector<SbVec2d>& line);

/// Lines along a curve.
void buildNurbsCurve(const NurbsCurve& curve, double tolerance, SoGeometry& geometry,
                     int segments = 0);

struct NurbsSurfaceInput {
    const SoNode* node = nullptr; ///< named in warnings
    NurbsSurface surface;
    double tolerance = 0;                       ///< object space
    std::vector<std::vector<SbVec2d>> outlines; ///< in parameters; empty: the whole surface
    int segments[2] = {0, 0}; ///< along u and v; 0: as many as the tolerance needs
    bool clockwise = false;   ///< the other side is the outside
    bool solid = false;
    bool makesTexCoords = false;
    const NurbsSurface* texCoords = nullptr; ///< null: the parameters, from 0 to 1
};

/// Triangles that stay within the tolerance of the surface, and its own normals. Knots of full
/// multiplicity are creases. The face of a triangle is its patch between knots, row by row.
void buildNurbsSurface(const NurbsSurfaceInput& input, SoGeometry& geometry);

/// The fields of the shapes whose control points are coordinates of the state.
struct SurfaceFields {
    std::span<const std::int32_t> indices, textureIndices;
    int numU = 0, numV = 0, numS = 0, numT = 0;
    std::span<const float> u, v, s, t;
};
void buildCurveOfState(const SoNode* node, SoState* state, std::span<const std::int32_t> indices,
                       int numPoints, std::span<const float> knots, SoGeometry& geometry);
void buildSurfaceOfState(const SoNode* node, SoState* state, const SurfaceFields& fields,
                         SoGeometry& geometry);
/// Of what those look at.
std::uint64_t nurbsKey(SoState* state, bool isSurface);

/// Tells why a shape cannot be drawn.
void warnOfNurbs(const SoNode* node, const std::string& reason);

/// More vertices than this only where there are more patches.
constexpr std::size_t kMaxSurfaceVertices = 1'000'000;
constexpr std::size_t kMaxCurvePoints = 100'000;

} // namespace kalmyr::detail
