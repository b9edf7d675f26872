#pragma once

#include <kalmyr/base/SbRotation.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/gui/SoGuiViewer.h>

/// The view, whatever the kind of camera: it shows `height` at the point of interest.
/// In the space that the camera stands in.
struct SoGuiViewer::View {
    SbVec3f center;
    SbRotation orientation;
    float height = 2;
};

/// Where somebody stands in the world, and how he looks from there.
struct SoGuiViewer::Pose {
    SbVec3f position;
    SbRotation orientation;
};
