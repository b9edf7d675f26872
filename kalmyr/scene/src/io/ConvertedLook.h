#pragma once

#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/elements/SoTextureElement.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

class SbMatrix;
class SbString;
class SoGeometry;
class SoNode;
class SoShape;
class SoState;

namespace kalmyr::detail {

/// File name of the picture that the texture node in the state shows; empty when it has none.
SbString textureFile(SoState* state);

/// A texture matrix as translation, rotation and scale about the origin.
struct TextureTransform {
    float translation[2];
    float rotation;
    float scale[2];
};
/// As VRML97 applies them: translation, rotation, scale.
TextureTransform factorTextureMatrix(const SbMatrix& matrix);
/// As VRML 1.0 applies them: scale, rotation, translation.
TextureTransform factorOldTextureMatrix(const SbMatrix& matrix);

/// Whether the shape is one of the solids that both formats have, with all corners of one colour.
bool isPlainSolid(const SoShape* shape, const SoGeometry& geometry);

/// "a b c -1" for each triangle, "a b -1" for each segment.
std::vector<std::int32_t> faceIndices(const SoGeometry& geometry);
std::vector<std::int32_t> lineIndices(const SoGeometry& geometry);

/// A name for the texture's folder: relative file names start there.
SbString textureFolder(SoState* state);

} // namespace kalmyr::detail
