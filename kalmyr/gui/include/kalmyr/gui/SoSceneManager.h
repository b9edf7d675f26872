#pragma once

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/core/SoFieldContainer.h>

#include <memory>

class SoEvent;
class SoNode;
class SoSceneManagerImpl;

/// Renders a scene graph into whatever window its owner provides, and passes events to it.
///
/// Watches the scene: any change asks for one redraw through the render callback, however many
/// changes come before it. Holds a reference on the scene.
class KALMYRGUI_API SoSceneManager : public SoFieldContainer {
public:
    SoSceneManager();

    static SoType getClassTypeId();
    static void initClass();
    SoType getTypeId() const override;

    void setSceneGraph(SoNode* root);
    SoNode* getSceneGraph() const;

    /// The action that renders. Not owned: whoever sets one keeps it alive; null goes back to the
    /// manager's own. Viewport region, background, clearing, draw style and stereo are set on it
    /// before each frame.
    void setGLRenderAction(SoGLRenderAction* action);
    SoGLRenderAction* getGLRenderAction() const;

    void setBackgroundColor(const SbColor& color);
    const SbColor& getBackgroundColor() const;
    void setViewportRegion(const SbViewportRegion& region);
    const SbViewportRegion& getViewportRegion() const;

    /// Sets the draw style in which shapes are shown; see the action.
    void setDrawStyle(SoGLRenderAction::DrawStyle style);
    SoGLRenderAction::DrawStyle getDrawStyle() const;
    void setStereo(const SoGLRenderAction::Stereo& stereo);
    const SoGLRenderAction::Stereo& getStereo() const;

    /// Called when the scene wants to be drawn again: at most once between two calls of render(),
    /// when the delay queue is processed. The callee draws, or arranges to.
    using RenderCallback = void(void* data, SoSceneManager* manager);
    void setRenderCallback(RenderCallback* function, void* data);
    /// Asks for a redraw as a change of the scene would.
    void scheduleRedraw();
    /// True from the change until the callback is called or the scene drawn.
    bool isRedrawScheduled() const;

    /// Clears, and draws the scene into the current OpenGL context; true when it did.
    bool render();
    /// Passes an event, which is not null, to the scene; true when a node handled it.
    bool processEvent(const SoEvent* event);

    SoSceneManagerImpl* getImpl() const { return m_impl.get(); }

protected:
    ~SoSceneManager() override;

private:
    std::unique_ptr<SoSceneManagerImpl> m_impl;
};
