#pragma once

#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoGroup.h>

class SoState;

/// Traverses one of its children, chosen by the distance of the eye from a point.
///
/// Child i serves distances below range[i], the last child all others. Without a camera the first
/// child is taken. For the bounding box all children count, so that it does not change with the
/// camera.
class KALMYR_API SoLOD : public SoGroup {
    SO_NODE_HEADER(SoLOD)

public:
    SoLOD();
    static void initClass();

    SoMFFloat range;  ///< rising distances in object space
    SoSFVec3f center; ///< in object space

    /// Index of the child that the state's camera selects, or -1 without children.
    int chooseChild(SoState* state) const;
    void doAction(SoAction* action) override;

protected:
    ~SoLOD() override;
};
