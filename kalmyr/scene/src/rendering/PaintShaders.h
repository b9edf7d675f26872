#pragma once

#include "rendering/Shaders.h"

#include <kalmyr/elements/SoLookExtras.h>
#include <kalmyr/shapes/SoGeometry.h>

#include <string>

class SoRenderAppearance;

namespace kalmyr::detail {

/// How a shape with extras is painted: the part of its program that the standard texts lack.
struct PaintSource {
    std::string defines;  ///< in front of all stages
    std::string vertex;   ///< declarations, and a function paintVertex()
    std::string geometry; ///< the same with paintCorner() for the stage that makes lines wide
    std::string fragment; ///< declarations, and functions paintBefore() and paintAfter()
};

/// Attribute locations of texture coordinate sets, then of the inputs of a scene's own programs, in
/// the order of the geometry; what comes after the last is left out.
constexpr int kFirstExtraLocation = 8;
constexpr int kEndOfLocations = 16;

/// Whether the look is painted in another way than the standard texts do.
bool needsPaint(const SoRenderAppearance& look);
/// Whether shapes of the look have to be drawn by themselves.
bool hasOwnState(const SoRenderAppearance& look);

/// What paints a look's texture units and tests its opacity. `geometry` says which coordinates
/// there are; without texture coordinates no unit is painted that needs them.
PaintSource paintSource(const SoRenderAppearance& look, const SoGeometry& geometry);

/// The texture of a unit as the program sees it; a null image when the unit is not painted.
const SoTextureValues& textureOf(const SoRenderAppearance& look, std::size_t unit);

/// The stage of a unit; a plain one beyond those that are set.
const SoTextureStage& stageOf(const SoRenderAppearance& look, std::size_t unit);
bool isPainted(const SoRenderAppearance& look, const SoGeometry& geometry, std::size_t unit);
std::size_t numUnits(const SoRenderAppearance& look);

} // namespace kalmyr::detail
