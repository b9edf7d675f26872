#pragma once

#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/lights/SoLight.h>

/// A light so far away that its rays are parallel.
class KALMYR_API SoDirectionalLight : public SoLight {
    SO_NODE_HEADER(SoDirectionalLight)

public:
    SoDirectionalLight();
    static void initClass();

    SoSFVec3f direction; ///< in which the light travels

protected:
    ~SoDirectionalLight() override;

    void describe(SoLightRecord& record) const override;
};
