#pragma once

#include <kalmyr/base/SbBox.h>
#include <kalmyr/core/SoNode.h>

#include <string>
#include <vector>

namespace io {

/// A small picture of a scene, as bytes of red, green and blue.
struct Picture {
    static constexpr int kSize = 96;
    std::vector<unsigned char> bytes;

    /// Part of the picture that is not background.
    double coverage() const;
    /// Part of the picture that looks different in the other.
    double differenceTo(const Picture& other) const;
};

/// Whether there is an OpenGL to draw with.
bool canDraw();

/// The scene's bounds; empty when they are not finite.
SbBox3f boundsOf(SoNode* scene);

/// Looks at `box` from in front, the right and above, with a light of its own. Cameras are taken
/// out of the scene. Empty when drawing failed.
Picture draw(SoNode* scene, const SbBox3f& box);

/// Draws with nothing but the cameras of the scene.
Picture drawAsSeen(SoNode* scene);

/// Draws as viewers and pictures show a file at first.
Picture drawAsShown(SoNode* scene);

} // namespace io
