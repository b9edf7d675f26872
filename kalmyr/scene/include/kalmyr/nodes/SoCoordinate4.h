#pragma once

#include <kalmyr/base/SbVec.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Homogeneous positions for the vertex shapes that follow; each is divided by its last component.
/// NURBS shapes take the last components as weights.
class KALMYR_API SoCoordinate4 : public SoNode {
    SO_NODE_HEADER(SoCoordinate4)

public:
    SoCoordinate4();
    static void initClass();

    SoMFVec4f point;

    void doAction(SoAction* action) override;

protected:
    ~SoCoordinate4() override;

private:
    void project();

    std::uint64_t m_projectedId = 0; ///< change id that the positions belong to
    std::vector<SbVec3f> m_projected;
};
