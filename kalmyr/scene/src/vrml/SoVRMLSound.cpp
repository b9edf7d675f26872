#include <kalmyr/vrml/SoVRMLSound.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLSound)

SoVRMLSound::SoVRMLSound()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED(direction, (0.0f, 0.0f, 1.0f));
    SO_VRML_EXPOSED(intensity, (1.0f));
    SO_VRML_EXPOSED(location, (0.0f, 0.0f, 0.0f));
    SO_VRML_EXPOSED(maxBack, (10.0f));
    SO_VRML_EXPOSED(maxFront, (10.0f));
    SO_VRML_EXPOSED(minBack, (1.0f));
    SO_VRML_EXPOSED(minFront, (1.0f));
    SO_VRML_EXPOSED(priority, (0.0f));
    SO_VRML_EXPOSED_EMPTY(source);
    SO_VRML_FIELD(spatialize, (true));
}

SoVRMLSound::~SoVRMLSound() = default;

void SoVRMLSound::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLSound, SoNode, "VRMLSound");
}

SO_NODE_SOURCE(SoVRMLAudioClip)

SoVRMLAudioClip::SoVRMLAudioClip()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(description);
    SO_VRML_EXPOSED(loop, (false));
    SO_VRML_EXPOSED(pitch, (1.0f));
    SO_VRML_EXPOSED_EMPTY(startTime);
    SO_VRML_EXPOSED_EMPTY(stopTime);
    SO_VRML_EXPOSED_EMPTY(url);
    SO_VRML_EVENT_OUT(duration_changed);
    SO_VRML_EVENT_OUT(isActive);
}

SoVRMLAudioClip::~SoVRMLAudioClip() = default;

void SoVRMLAudioClip::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLAudioClip, SoNode, "VRMLAudioClip");
}
