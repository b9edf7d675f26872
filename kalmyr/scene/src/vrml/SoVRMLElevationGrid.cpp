#include <kalmyr/vrml/SoVRMLElevationGrid.h>

#include "GeometryInput.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/shapes/ShapeSource.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

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

void SoVRMLElevationGrid::fillGrid(kalmyr::ShapeSource& source) const
{
    const int nx = xDimension.getValue();
    const int nz = zDimension.getValue();
    const auto count = static_cast<std::size_t>(nx) * static_cast<std::size_t>(nz);
    source.positions.reserve(count);
    source.texCoords.reserve(count);
    source.coordIndex.reserve(count * 5);
    for (int z = 0; z < nz; ++z) {
        for (int x = 0; x < nx; ++x) {
            const std::int32_t at = z * nx + x;
            source.positions.emplace_back(static_cast<float>(x) * xSpacing.getValue(), height[at],
                                          static_cast<float>(z) * zSpacing.getValue());
            source.texCoords.emplace_back(static_cast<float>(x) / static_cast<float>(nx - 1),
                                          static_cast<float>(z) / static_cast<float>(nz - 1));
            if (x + 1 < nx && z + 1 < nz) {
                source.coordIndex.insert(source.coordIndex.end(),
                                         {at, at + nx, at + nx + 1, at + 1, -1});
            }
        }
    }
    source.input.positions = source.positions;
    source.input.coordIndex = source.coordIndex;
}

void SoVRMLElevationGrid::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    using namespace kalmyr::detail;
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
    source.kind = kalmyr::ShapeSource::FACES;
    if (source.wantsLists())
        fillGrid(source);
    fillGridAttributes(*this, state, source);
}
