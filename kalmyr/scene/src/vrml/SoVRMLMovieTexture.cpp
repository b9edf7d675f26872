#include <kalmyr/vrml/SoVRMLMovieTexture.h>

#include <kalmyr/vrml/SoVRMLMacros.h>

SO_NODE_SOURCE(SoVRMLMovieTexture)

SoVRMLMovieTexture::SoVRMLMovieTexture()
{
    SO_NODE_CONSTRUCTOR(SoVRMLTexture);
    SO_VRML_EXPOSED(loop, (false));
    SO_VRML_EXPOSED(speed, (1.0f));
    SO_VRML_EXPOSED_EMPTY(startTime);
    SO_VRML_EXPOSED_EMPTY(stopTime);
    SO_VRML_EXPOSED_EMPTY(url);
    SO_VRML_EVENT_OUT(duration_changed);
    SO_VRML_EVENT_OUT(isActive);
}

SoVRMLMovieTexture::~SoVRMLMovieTexture() = default;

void SoVRMLMovieTexture::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLMovieTexture, SoVRMLTexture, "VRMLMovieTexture");
}

const SbImage& SoVRMLMovieTexture::getPicture()
{
    static const SbImage none;
    return none;
}
