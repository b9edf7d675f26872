#include <kalmyr/vrml/SoVRMLInterpolators.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLColorInterpolator)

SoVRMLColorInterpolator::SoVRMLColorInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(set_fraction);
    SO_VRML_EXPOSED_EMPTY(key);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLColorInterpolator::~SoVRMLColorInterpolator() = default;

void SoVRMLColorInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLColorInterpolator, SoNode, "VRMLColorInterpolator");
}

SO_NODE_SOURCE(SoVRMLCoordinateInterpolator)

SoVRMLCoordinateInterpolator::SoVRMLCoordinateInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(set_fraction);
    SO_VRML_EXPOSED_EMPTY(key);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLCoordinateInterpolator::~SoVRMLCoordinateInterpolator() = default;

void SoVRMLCoordinateInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLCoordinateInterpolator, SoNode, "VRMLCoordinateInterpolator");
}

SO_NODE_SOURCE(SoVRMLNormalInterpolator)

SoVRMLNormalInterpolator::SoVRMLNormalInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(set_fraction);
    SO_VRML_EXPOSED_EMPTY(key);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLNormalInterpolator::~SoVRMLNormalInterpolator() = default;

void SoVRMLNormalInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNormalInterpolator, SoNode, "VRMLNormalInterpolator");
}

SO_NODE_SOURCE(SoVRMLOrientationInterpolator)

SoVRMLOrientationInterpolator::SoVRMLOrientationInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(set_fraction);
    SO_VRML_EXPOSED_EMPTY(key);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLOrientationInterpolator::~SoVRMLOrientationInterpolator() = default;

void SoVRMLOrientationInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLOrientationInterpolator, SoNode, "VRMLOrientationInterpolator");
}

SO_NODE_SOURCE(SoVRMLPositionInterpolator)

SoVRMLPositionInterpolator::SoVRMLPositionInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(set_fraction);
    SO_VRML_EXPOSED_EMPTY(key);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLPositionInterpolator::~SoVRMLPositionInterpolator() = default;

void SoVRMLPositionInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLPositionInterpolator, SoNode, "VRMLPositionInterpolator");
}

SO_NODE_SOURCE(SoVRMLScalarInterpolator)

SoVRMLScalarInterpolator::SoVRMLScalarInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(set_fraction);
    SO_VRML_EXPOSED_EMPTY(key);
    SO_VRML_EXPOSED_EMPTY(keyValue);
    SO_VRML_EVENT_OUT(value_changed);
}

SoVRMLScalarInterpolator::~SoVRMLScalarInterpolator() = default;

void SoVRMLScalarInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLScalarInterpolator, SoNode, "VRMLScalarInterpolator");
}
