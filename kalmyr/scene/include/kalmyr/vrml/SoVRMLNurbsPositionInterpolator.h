#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/sensors/SoCascade.h>
#include <kalmyr/sensors/SoFieldSensor.h>

/// Moves along a curve: setting `set_fraction` sets `value_changed` to the place at that parameter.
class KALMYR_API SoVRMLNurbsPositionInterpolator : public SoNode {
    SO_NODE_HEADER(SoVRMLNurbsPositionInterpolator)

public:
    SoVRMLNurbsPositionInterpolator();
    static void initClass();

    SoSFFloat set_fraction; ///< event in; taken to the nearest parameter of the curve
    SoSFInt32 dimension;    ///< number of control points; 0: as many as there are
    SoMFVec3f keyValue;
    SoMFFloat keyWeight;
    SoMFFloat knot;
    SoSFInt32 order;
    SoSFVec3f value_changed; ///< event out

    bool affectsState() const override { return false; }

protected:
    ~SoVRMLNurbsPositionInterpolator() override;

private:
    void follow();

    SoFieldSensor m_sensor;
    SoCascade m_cascade;
};
