#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Colours for the geometry that holds the node.
class KALMYR_API SoVRMLColor : public SoNode {
    SO_NODE_HEADER(SoVRMLColor)

public:
    SoVRMLColor();
    static void initClass();

    SoMFColor color;

protected:
    ~SoVRMLColor() override;
};
