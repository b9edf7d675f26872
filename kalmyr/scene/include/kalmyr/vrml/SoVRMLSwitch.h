#pragma once

#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/nodes/SoGroup.h>

/// Shows one of its children, or none when `whichChoice` is no index. `choice` is the child list.
class KALMYR_API SoVRMLSwitch : public SoGroup {
    SO_NODE_HEADER(SoVRMLSwitch)

public:
    SoVRMLSwitch();
    static void initClass();

    SoMFNode choice;
    SoSFInt32 whichChoice;

    bool affectsState() const override { return false; }
    void doAction(SoAction* action) override;

protected:
    ~SoVRMLSwitch() override;
};
