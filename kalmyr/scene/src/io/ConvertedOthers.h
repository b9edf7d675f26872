#pragma once

class SoNode;

namespace kalmyr::detail {

/// Titles, remarks, fog and backgrounds in the form of VRML97; null for other nodes.
SoNode* vrml97Other(const SoNode* node);
/// The same in the form of VRML 1.0, which has remarks only.
SoNode* vrml1Other(const SoNode* node);

/// Whether a node has a meaning of its own that shapes, cameras and lights do not carry along:
/// sensors, interpolators, scripts, sounds, surroundings.
bool isLostWhenFlattened(const SoNode* node);

} // namespace kalmyr::detail
