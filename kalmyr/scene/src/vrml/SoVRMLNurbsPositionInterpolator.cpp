#include <kalmyr/vrml/SoVRMLNurbsPositionInterpolator.h>

#include "NurbsInput.h"

#include <kalmyr/base/SoDebugError.h>

#include <cmath>

using namespace kalmyr::detail;

SO_NODE_SOURCE(SoVRMLNurbsPositionInterpolator)

SoVRMLNurbsPositionInterpolator::SoVRMLNurbsPositionInterpolator()
    : m_sensor([](void* self,
                  SoSensor*) { static_cast<SoVRMLNurbsPositionInterpolator*>(self)->follow(); },
               this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(set_fraction);
    SO_VRML_EXPOSED(dimension, (0));
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EXPOSED_EMPTY(keyWeight);
    SO_VRML_EXPOSED_EMPTY(knot);
    SO_VRML_EXPOSED(order, (4));
    SO_VRML_EVENT_OUT(value_changed);
    m_sensor.setPriority(0);
    m_sensor.attach(&set_fraction);
}

SoVRMLNurbsPositionInterpolator::~SoVRMLNurbsPositionInterpolator()
{
    m_sensor.detach();
}

void SoVRMLNurbsPositionInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsPositionInterpolator, SoNode, "VRMLNurbsPositionInterpolator");
}

void SoVRMLNurbsPositionInterpolator::follow()
{
    if (keyValue.getNum() == 0 || !m_cascade.mayReact())
        return;
    const int count = dimension.getValue() > 0 ? dimension.getValue() : keyValue.getNum();
    NurbsCurve curve;
    std::string fault = fillCurve(curve, keyValue.values(), keyWeight.values(), knot.values(),
                                  count, order.getValue());
    const float fraction = set_fraction.getValue();
    if (fault.empty() && !std::isfinite(fraction))
        fault = "the fraction is not finite";
    if (fault.empty())
        value_changed = SbVec3f(curve.at(fraction));
    else
        SoDebugError::postWarning("NurbsPositionInterpolator", "\"%s\": %s", getName().getString(),
                                  fault.c_str());
}
