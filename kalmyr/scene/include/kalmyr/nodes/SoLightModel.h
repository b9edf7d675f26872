#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFEnum.h>

/// Lights the shapes that follow, or shows their colours as they are.
class KALMYR_API SoLightModel : public SoNode {
    SO_NODE_HEADER(SoLightModel)

public:
    enum Model { BASE_COLOR = 0, PHONG = 1 };

    SoLightModel();
    static void initClass();

    SoSFEnum model;

    void doAction(SoAction* action) override;

protected:
    ~SoLightModel() override;
};
