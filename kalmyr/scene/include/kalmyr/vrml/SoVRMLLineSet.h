#pragma once

#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>

/// Polylines from positions in their order. Lines are not lit.
class KALMYR_API SoVRMLLineSet : public SoVRMLGeometry {
    SO_NODE_HEADER(SoVRMLLineSet)

public:
    SoVRMLLineSet();
    static void initClass();

    SoSFNode color; ///< one for each position
    SoSFNode coord;
    SoMFInt32 vertexCount; ///< positions of each line

    bool isLit() const override { return false; }

protected:
    ~SoVRMLLineSet() override;

    void fillSource(SoState* state, kalmyr::ShapeSource& source) const override;
    std::uint64_t stateKey(SoState* state) const override;
};
