#pragma once

#include "Scene.h"

#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/base/SoRef.h>

#include <string>

/// The scene as it is shown: through the named camera or viewpoint, the one that SoSceneCamera
/// finds, or whole. Null when no camera has that name. `showsAll`: the camera looks the same way at
/// all of the scene.
SoRef<SoNode> seenByCamera(const Scene& scene, const std::string& cameraName, bool showsAll,
                           const SbViewportRegion& region);
