#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/lights/SoLight.h>

/// A light that shines from a point into all directions.
class KALMYR_API SoPointLight : public SoLight {
    SO_NODE_HEADER(SoPointLight)

public:
    SoPointLight();
    static void initClass();

    SoSFVec3f location;

protected:
    ~SoPointLight() override;

    void describe(SoLightRecord& record) const override;
};
