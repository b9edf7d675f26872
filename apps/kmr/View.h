#pragma once

#include "Scene.h"

#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/base/SoRef.h>

#include <string>

/// The scene with the camera that shows it: the named one, or the first viewpoint or camera of the
/// file. Without either the scene itself. Null when no camera has that name. Takes other cameras
/// out of the scene. `showsAll`: the camera looks the same way at all of the scene.
SoRef<SoNode> seenByCamera(const Scene& scene, const std::string& cameraName, bool showsAll,
                           const SbViewportRegion& region);
