#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>

/// A sound in space. Its values are kept; nothing is heard.
class KALMYR_API SoVRMLSound : public SoNode {
    SO_NODE_HEADER(SoVRMLSound)

public:
    SoVRMLSound();
    static void initClass();

    SoSFVec3f direction;
    SoSFFloat intensity;
    SoSFVec3f location;
    SoSFFloat maxBack;
    SoSFFloat maxFront;
    SoSFFloat minBack;
    SoSFFloat minFront;
    SoSFFloat priority;
    SoSFNode source;
    SoSFBool spatialize;

protected:
    ~SoVRMLSound() override;
};

/// The recording that a sound plays.
class KALMYR_API SoVRMLAudioClip : public SoNode {
    SO_NODE_HEADER(SoVRMLAudioClip)

public:
    SoVRMLAudioClip();
    static void initClass();

    SoSFString description;
    SoSFBool loop;
    SoSFFloat pitch;
    SoSFTime startTime;
    SoSFTime stopTime;
    SoMFString url;
    SoSFTime duration_changed; ///< event out
    SoSFBool isActive;         ///< event out

protected:
    ~SoVRMLAudioClip() override;
};
