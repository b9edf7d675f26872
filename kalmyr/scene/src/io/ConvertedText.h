#pragma once

class SoGroup;
class SoNode;
class SoShape;
class SoState;

namespace kalmyr::detail {

/// A text in the form of VRML97; null for other shapes.
SoNode* vrml97Text(const SoShape* shape, SoState* state);

/// Adds font and text in the form of VRML 1.0. False for other shapes, and for texts that it
/// cannot express: in columns, from the right or from below, or shrunk to an extent.
bool addVrml1Text(SoGroup& group, const SoShape* shape, SoState* state);

} // namespace kalmyr::detail
