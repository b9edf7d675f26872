#pragma once

#include <kalmyr/vrml/SoVRMLTexture.h>

/// A film. Its values are kept; no picture is shown.
class KALMYR_API SoVRMLMovieTexture : public SoVRMLTexture {
    SO_NODE_HEADER(SoVRMLMovieTexture)

public:
    SoVRMLMovieTexture();
    static void initClass();

    SoSFBool loop;
    SoSFFloat speed;
    SoSFTime startTime;
    SoSFTime stopTime;
    SoMFString url;
    SoSFTime duration_changed; ///< event out
    SoSFBool isActive;         ///< event out

    const SbImage& getPicture() override;

protected:
    ~SoVRMLMovieTexture() override;
};
