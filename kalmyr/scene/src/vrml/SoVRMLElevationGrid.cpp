#include <kalmyr/vrml/SoVRMLElevationGrid.h>

#include "GeometryInput.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/shapes/FaceBuilder.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include <vector>

SO_NODE_SOURCE(SoVRMLElevationGrid)

SoVRMLElevationGrid::SoVRMLElevationGrid()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EXPOSED_EMPTY(color);
    SO_VRML_EXPOSED_EMPTY(normal);
    SO_VRML_EXPOSED_EMPTY(texCoord);
    SO_VRML_FIELD(ccw, (true));
    SO_VRML_FIELD(colorPerVertex, (true));
    SO_VRML_FIELD(creaseAngle, (0.0f));
    SO_VRML_EMPTY_FIELD(height);
    SO_VRML_FIELD(normalPerVertex, (true));
    SO_VRML_FIELD(solid, (true));
    SO_VRML_FIELD(xDimension, (0));
    SO_VRML_FIELD(xSpacing, (1.0f));
    SO_VRML_FIELD(zDimension, (0));
    SO_VRML_FIELD(zSpacing, (1.0f));
    SO_VRML_EVENT_IN(set_height);
}

SoVRMLElevationGrid::~SoVRMLElevationGrid() = default;

void SoVRMLElevationGrid::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLElevationGrid, SoVRMLGeometry, "VRMLElevationGrid");
}

std::uint64_t SoVRMLElevationGrid::stateKey(SoState* state) const
{
    return kalmyr::detail::lookKey(state, color);
}

void SoVRMLElevationGrid::buildGeometry(SoState* state, SoGeometry& geometry)
{
    const int nx = xDimension.getValue();
    const int nz = zDimension.getValue();
    if (nx < 2 || nz < 2)
        return;
    if (height.getNum() / nx < nz) {
        SoDebugError::postWarning("SoVRMLElevationGrid",
                                  "%s: height has %d values, a grid of %d by %d needs more",
                                  getName().getString(), height.getNum(), nx, nz);
        return;
    }
    std::vector<SbVec3f> points;
    std::vector<SbVec2f> across;
    std::vector<std::int32_t> corners;
    const auto count = static_cast<std::size_t>(nx) * static_cast<std::size_t>(nz);
    points.reserve(count);
    across.reserve(count);
    corners.reserve(count * 5);
    for (int z = 0; z < nz; ++z) {
        for (int x = 0; x < nx; ++x) {
            const std::int32_t at = z * nx + x;
            points.emplace_back(static_cast<float>(x) * xSpacing.getValue(), height[at],
                                static_cast<float>(z) * zSpacing.getValue());
            across.emplace_back(static_cast<float>(x) / static_cast<float>(nx - 1),
                                static_cast<float>(z) / static_cast<float>(nz - 1));
            if (x + 1 < nx && z + 1 < nz)
                corners.insert(corners.end(), {at, at + nx, at + nx + 1, at + 1, -1});
        }
    }
    const auto colors = kalmyr::detail::packedColors(state, color);
    const auto given = kalmyr::detail::texCoordsOf(texCoord);
    const SoMFInt32 none;
    kalmyr::FaceInput in;
    in.node = this;
    in.positions = points;
    in.coordIndex = corners;
    in.normals = kalmyr::detail::attribute<SbVec3f>(kalmyr::detail::normalsOf(normal), none,
                                                    normalPerVertex.getValue(), "normal");
    in.colors =
        kalmyr::detail::attribute<std::uint32_t>(colors, none, colorPerVertex.getValue(), "color");
    in.texCoords = kalmyr::detail::attribute<SbVec2f>(
        given.empty() ? std::span<const SbVec2f>(across) : given, none, true, "texCoord");
    in.clockwise = !ccw.getValue();
    in.solid = solid.getValue();
    in.creaseAngle = creaseAngle.getValue();
    kalmyr::FaceBuilder(in).build(geometry);
}
