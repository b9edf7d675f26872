#pragma once

#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

/// Heights over a grid of x and z.
class KALMYR_API SoVRMLElevationGrid : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLElevationGrid)

public:
    SoVRMLElevationGrid();
    static void initClass();

    SoSFNode color;
    SoSFNode normal;
    SoSFNode texCoord;
    SoSFBool ccw;
    SoSFBool colorPerVertex;
    SoSFFloat creaseAngle; ///< radians
    SoMFFloat height;      ///< y, row by row along x
    SoSFBool normalPerVertex;
    SoSFBool solid;
    SoSFInt32 xDimension;
    SoSFFloat xSpacing;
    SoSFInt32 zDimension;
    SoSFFloat zSpacing;
    SoMFFloat set_height; ///< event in

protected:
    ~SoVRMLElevationGrid() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
    std::uint64_t stateKey(SoState* state) const override;

private:
    /// Positions and indices of the grid, and texture coordinates across it.
    void fillGrid(kalmyr::ShapeSource& source) const;
};
