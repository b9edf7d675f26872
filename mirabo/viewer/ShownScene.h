#pragma once

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>

#include <optional>

class SoOffscreenRenderer;

namespace mirabo {

/// The scene as its view shows it, to be exported or printed: the graph of the scene manager with
/// its camera and lights, its size and its background; without a scene manager the root that is
/// inspected, in a picture of 1280 by 1024. One without a camera is seen whole.
///
/// Made and used under a GraphReading.
class ShownScene {
public:
    ShownScene();
    /// Lets go of the graph; under the lock, if need be later.
    ~ShownScene();
    ShownScene(const ShownScene&) = delete;
    ShownScene& operator=(const ShownScene&) = delete;

    /// Null when there is nothing to show.
    SoNode* getRoot() const { return m_root.get(); }
    const SbViewportRegion& getRegion() const { return m_region; }
    /// None without a scene manager.
    const std::optional<SbColor>& getBackground() const { return m_background; }

    /// Draws a smooth picture of the scene. False, with an error posted, when it cannot.
    bool render(SoOffscreenRenderer& renderer) const;

private:
    SoRef<SoNode> m_root;
    SbViewportRegion m_region{1280, 1024};
    std::optional<SbColor> m_background;
    std::optional<int> m_transparencyType;
    SoGLRenderAction::DrawStyle m_drawStyle = SoGLRenderAction::AS_IS;
    SoGLRenderAction::Stereo m_stereo;
};

} // namespace mirabo
