#include <kalmyr/vrml/SoVRMLSensors.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLCylinderSensor)

SoVRMLCylinderSensor::SoVRMLCylinderSensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(autoOffset, (true));
    SO_VRML_EXPOSED(diskAngle, (0.262f));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EXPOSED(maxAngle, (-1.0f));
    SO_VRML_EXPOSED(minAngle, (0.0f));
    SO_VRML_EXPOSED(offset, (0.0f));
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(rotation_changed);
    SO_VRML_EVENT_OUT(trackPoint_changed);
}

SoVRMLCylinderSensor::~SoVRMLCylinderSensor() = default;

void SoVRMLCylinderSensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLCylinderSensor, SoNode, "VRMLCylinderSensor");
}

SO_NODE_SOURCE(SoVRMLPlaneSensor)

SoVRMLPlaneSensor::SoVRMLPlaneSensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(autoOffset, (true));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EXPOSED(maxPosition, (-1.0f, -1.0f));
    SO_VRML_EXPOSED(minPosition, (0.0f, 0.0f));
    SO_VRML_EXPOSED(offset, (0.0f, 0.0f, 0.0f));
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(trackPoint_changed);
    SO_VRML_EVENT_OUT(translation_changed);
}

SoVRMLPlaneSensor::~SoVRMLPlaneSensor() = default;

void SoVRMLPlaneSensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLPlaneSensor, SoNode, "VRMLPlaneSensor");
}

SO_NODE_SOURCE(SoVRMLProximitySensor)

SoVRMLProximitySensor::SoVRMLProximitySensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(center, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(size, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(position_changed);
    SO_VRML_EVENT_OUT(orientation_changed);
    SO_VRML_EVENT_OUT(enterTime);
    SO_VRML_EVENT_OUT(exitTime);
}

SoVRMLProximitySensor::~SoVRMLProximitySensor() = default;

void SoVRMLProximitySensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLProximitySensor, SoNode, "VRMLProximitySensor");
}

SO_NODE_SOURCE(SoVRMLSphereSensor)

SoVRMLSphereSensor::SoVRMLSphereSensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(autoOffset, (true));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EXPOSED(offset, (SbVec3f(0.0f, 1.0f, 0.0f), 0.0f));
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(rotation_changed);
    SO_VRML_EVENT_OUT(trackPoint_changed);
}

SoVRMLSphereSensor::~SoVRMLSphereSensor() = default;

void SoVRMLSphereSensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLSphereSensor, SoNode, "VRMLSphereSensor");
}

SO_NODE_SOURCE(SoVRMLTimeSensor)

SoVRMLTimeSensor::SoVRMLTimeSensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(cycleInterval, (1.0));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EXPOSED(loop, (false));
    SO_VRML_EXPOSED_EMPTY(startTime);
    SO_VRML_EXPOSED_EMPTY(stopTime);
    SO_VRML_EVENT_OUT(cycleTime);
    SO_VRML_EVENT_OUT(fraction_changed);
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(time);
}

SoVRMLTimeSensor::~SoVRMLTimeSensor() = default;

void SoVRMLTimeSensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLTimeSensor, SoNode, "VRMLTimeSensor");
}

SO_NODE_SOURCE(SoVRMLTouchSensor)

SoVRMLTouchSensor::SoVRMLTouchSensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EVENT_OUT(hitNormal_changed);
    SO_VRML_EVENT_OUT(hitPoint_changed);
    SO_VRML_EVENT_OUT(hitTexCoord_changed);
    SO_VRML_EVENT_OUT(isActive);
    SO_VRML_EVENT_OUT(isOver);
    SO_VRML_EVENT_OUT(touchTime);
}

SoVRMLTouchSensor::~SoVRMLTouchSensor() = default;

void SoVRMLTouchSensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLTouchSensor, SoNode, "VRMLTouchSensor");
}

SO_NODE_SOURCE(SoVRMLVisibilitySensor)

SoVRMLVisibilitySensor::SoVRMLVisibilitySensor()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(center, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(enabled, (true));
    SO_VRML_EXPOSED(size, (0.0f, 0.0f, 0.0f));
    SO_VRML_EVENT_OUT(enterTime);
    SO_VRML_EVENT_OUT(exitTime);
    SO_VRML_EVENT_OUT(isActive);
}

SoVRMLVisibilitySensor::~SoVRMLVisibilitySensor() = default;

void SoVRMLVisibilitySensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLVisibilitySensor, SoNode, "VRMLVisibilitySensor");
}
