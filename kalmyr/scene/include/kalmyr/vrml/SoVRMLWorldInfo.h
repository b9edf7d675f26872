#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Title of the scene and remarks on it.
class KALMYR_API SoVRMLWorldInfo : public SoNode {
    SO_NODE_HEADER(SoVRMLWorldInfo)

public:
    SoVRMLWorldInfo();
    static void initClass();

    SoMFString info;
    SoSFString title;

protected:
    ~SoVRMLWorldInfo() override;
};
