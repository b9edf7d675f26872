#pragma once

#include "shapes/SharedGeometry.h"

#include <kalmyr/base/SbVec.h>

namespace kalmyr::detail {

/// The key of a box, sphere, cone or cylinder of VRML97, which are those of the toolkit at one
/// fineness. `parts` is the sum of the numbers below.
SharedKey bodyKey(SharedKey::Kind kind, const SbVec3f& sizes, int parts = 0);
enum BodyParts { BODY_SIDE = 1, CONE_BASE = 2, CYLINDER_LID = 2, CYLINDER_BASE = 4 };

/// The geometry that equal bodies share, or null for an open one.
SoRef<SoGeometry> sharedBody(const SharedKey& key, bool isClosed);

/// Builds a body. Open ones, too, are seen from outside only.
void buildBody(const SharedKey& key, SoGeometry& geometry);

} // namespace kalmyr::detail
