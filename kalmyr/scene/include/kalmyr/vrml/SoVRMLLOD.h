#pragma once

#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoGroup.h>

class SoState;

/// Shows the child that suits the distance of the eye: child i below range[i], the last beyond all.
/// Without a camera it shows the first; bounding boxes count all. `level` is the child list.
class KALMYR_API SoVRMLLOD : public SoGroup {
    SO_NODE_HEADER(SoVRMLLOD)

public:
    SoVRMLLOD();
    static void initClass();

    SoMFNode level;
    SoSFVec3f center;
    SoMFFloat range; ///< rising distances in object space

    /// Index of the child that the state's camera selects, or -1 without children.
    int chooseChild(SoState* state) const;
    bool affectsState() const override { return false; }
    void doAction(SoAction* action) override;

protected:
    ~SoVRMLLOD() override;
};
