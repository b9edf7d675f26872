#include <kalmyr/nodekits/SoCameraKit.h>

#include <kalmyr/cameras/SoCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>

SO_KIT_SOURCE(SoCameraKit)

SoCameraKit::SoCameraKit()
{
    SO_NODE_CONSTRUCTOR(SoBaseKit);
    SO_KIT_PART(camera);
    SO_KIT_MAKE_PARTS();
}

SoCameraKit::~SoCameraKit() = default;

void SoCameraKit::initClass()
{
    SO_KIT_INIT_CLASS(SoCameraKit, SoBaseKit, "CameraKit");
    s_catalog->addPart("camera", SoCamera::getClassTypeId(), SoPerspectiveCamera::getClassTypeId(),
                       {"this", ""});
    s_catalog->setNullByDefault("camera", false);
}
