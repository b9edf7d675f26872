#pragma once

#include <kalmyr/nodekits/SoBaseKit.h>

/// A whole scene: cameras of which one is in use, lights, and what they show.
class KALMYR_API SoSceneKit : public SoBaseKit {
    SO_KIT_HEADER(SoSceneKit)

public:
    SoSceneKit();
    static void initClass();

    SoSFNode topSeparator; ///< private
    SoSFNode cameraList;   ///< of SoCameraKit, in a switch
    SoSFNode lightList;    ///< of SoLightKit
    SoSFNode childList;    ///< of kits

    /// Number of the camera in use, -1 for none (as at first).
    int getCameraNumber() const;
    /// False, after a debug error, for a number without a camera. The camera list is there
    /// afterwards.
    bool setCameraNumber(int number);

protected:
    ~SoSceneKit() override;
};
