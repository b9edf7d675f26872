#pragma once

#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbVec.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/fields/SoSFFieldContainer.h>
#include <kalmyr/gui/SoRenderAreaCore.h>
#include <kalmyr/gui/SoSceneManager.h>

class SoEvent;
class SoNode;
class SoOffscreenRenderer;

/// A render area without a window: scene manager, size, events. A window binding owns one, gives
/// it size and events, and draws when the scene manager's render callback asks for it.
///
/// The inspector's shortcut key, pressed in any render area, opens the inspector on it.
class KALMYRGUI_API SoGuiRenderArea : public SoRenderAreaCore {
public:
    SoGuiRenderArea();

    static SoType getClassTypeId();
    static void initClass();
    SoType getTypeId() const override;
    const SoFieldData* getFieldData() const override;

    /// Holds the scene manager; among the auditors of its root field (SoSceneManagerImpl).
    SoSFFieldContainer sceneManager;

    SoSceneManager* getSceneManager() const override { return m_manager.get(); }
    virtual void setSceneGraph(SoNode* root);
    /// The graph given to setSceneGraph(), without what a viewer adds around it.
    virtual SoNode* getSceneGraph() const;
    void setBackgroundColor(const SbColor& color) { m_manager->setBackgroundColor(color); }

    /// In device pixels; below 1 counts as 1.
    void setSize(const SbVec2i32& size);
    SbVec2i32 getSize() const;
    /// Device pixels of one point; 1 at first and for what is not above 0. What is drawn of a given
    /// size on the screen, as an outline, grows with it.
    void setPixelRatio(float ratio);
    float getPixelRatio() const;

    /// Brings everything up to date that a frame needs (a viewer's camera); the two below call it.
    virtual void prepareFrame() {}
    /// Draws into the current OpenGL context; false when it could not.
    bool render();
    /// Draws into memory, with the scene manager's action and background, at the area's size.
    bool renderOffscreen(SoOffscreenRenderer& renderer);

    /// True when somebody used the event, which is not null.
    virtual bool processEvent(const SoEvent* event);

protected:
    ~SoGuiRenderArea() override;

    class Frame;
    /// The scene is being drawn, or gets an event: its graph is being traversed.
    bool isInFrame() const { return m_frames > 0; }

private:
    void followClick(const SoEvent& event, bool isHandled);

    SoRef<SoSceneManager> m_manager;
    SbVec2s m_pressedAt;
    bool m_isPressed = false; ///< the first button, and nothing has come between since
    int m_frames = 0;         ///< drawings and events under way, one inside the other
};
