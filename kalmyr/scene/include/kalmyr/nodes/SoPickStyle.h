#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>

/// How the shapes that follow are picked.
class KALMYR_API SoPickStyle : public SoNode {
    SO_NODE_HEADER(SoPickStyle)

public:
    enum Style { SHAPE = 0, BOUNDING_BOX = 1, UNPICKABLE = 2 };

    SoPickStyle();
    static void initClass();

    SoSFEnum style;

    void doAction(SoAction* action) override;

protected:
    ~SoPickStyle() override;
};
