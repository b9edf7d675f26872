#pragma once

class SoCamera;
class SoNode;

namespace kalmyr::detail {

/// Whether a scene looks as it should with nothing but its own cameras, of which `camera` is the
/// one that counts: no shape stands outside of all cameras, and the others keep none that this one
/// should show. Cost: one visit of each distinct node that is shown.
bool reachesAll(SoNode* scene, const SoCamera* camera);

} // namespace kalmyr::detail
