#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>
#include <kalmyr/fields/SoValueFields.h>

/// How the shapes that follow are drawn: filled, as lines or points, or not at all.
class KALMYR_API SoDrawStyle : public SoNode {
    SO_NODE_HEADER(SoDrawStyle)

public:
    enum Style { FILLED = 0, LINES = 1, POINTS = 2, INVISIBLE = 3 };

    SoDrawStyle();
    static void initClass();

    SoSFEnum style;
    SoSFFloat pointSize;    ///< pixels; 0: the default of 1
    SoSFFloat lineWidth;    ///< pixels; 0: the default of 1
    SoSFUShort linePattern; ///< bit 0 first; set bits are drawn

    void doAction(SoAction* action) override;

protected:
    ~SoDrawStyle() override;
};
