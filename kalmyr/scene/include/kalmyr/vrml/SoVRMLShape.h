#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFNode.h>

/// One visible thing: a geometry with its appearance. Without a material it is drawn unlit in
/// white.
class KALMYR_API SoVRMLShape : public SoNode {
    SO_NODE_HEADER(SoVRMLShape)

public:
    SoVRMLShape();
    static void initClass();

    SoSFNode appearance;
    SoSFNode geometry;

    bool affectsState() const override { return false; }
    void doAction(SoAction* action) override;

protected:
    ~SoVRMLShape() override;
};
