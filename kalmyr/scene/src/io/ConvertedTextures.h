#pragma once

#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <functional>

class SoNode;

namespace kalmyr::detail {

/// Whether the first unit of the state shows a flat picture by coordinates that files can hold.
bool hasFileTexture(SoState* state);

/// Whether the units of the state are to be said as several textures.
bool hasSeveralTextures(SoState* state);

/// Units as nodes of VRML97. `first` makes the texture and the transform of the first unit.
SoNode* multiTexture(SoState* state, SoNode* first);
/// Null when no unit has a transform.
SoNode* multiTextureTransform(SoState* state, SoNode* first);
/// Coordinates of a geometry: of several units where it has sets for them.
SoNode* vrml97TexCoords(const SoGeometry& geometry);
/// With opacity where it differs from corner to corner.
SoNode* vrml97Colors(const SoGeometry& geometry);
/// A matrix as VRML97 applies it; null for none.
SoNode* vrml97TextureTransform(const SbMatrix& matrix);

} // namespace kalmyr::detail
