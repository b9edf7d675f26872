#include <kalmyr/cameras/SoCamerasInit.h>

#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>

void kalmyr::initCameras()
{
    SoCamera::initClass();
    SoPerspectiveCamera::initClass();
    SoOrthographicCamera::initClass();
}
