#pragma once

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/actions/SoHandleEventAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/gui/SoSceneManager.h>
#include <kalmyr/sensors/SoNodeSensor.h>

/// The inside of a scene manager, for the bindings and the inspector's launch code.
class KALMYRGUI_API SoSceneManagerImpl {
public:
    explicit SoSceneManagerImpl(SoSceneManager* owner);
    ~SoSceneManagerImpl();

    /// The field that holds the scene. Its auditors of type SoAuditor::FIELD are the fields of the
    /// render areas that show the manager.
    SoSFNode& getRootField() { return m_root; }

    /// Whether the inspector is attached to this manager (1) or not (0).
    void setOwnMirabo(int on) { m_ownMirabo = on; }
    int getOwnMirabo() const { return m_ownMirabo; }

    /// For whoever draws by other means than SoSceneManager::render(): what is to be drawn, and
    /// that it is being drawn now; the action is told how. Never null.
    SoNode* beginFrame();

private:
    friend class SoSceneManager;
    static void sceneChanged(void* data, SoSensor* sensor);

    SoSceneManager* m_owner; // Not owned; owns us.
    SoSFNode m_root;
    SbViewportRegion m_region;
    SbColor m_background{0, 0, 0};
    SoGLRenderAction::DrawStyle m_drawStyle = SoGLRenderAction::AS_IS;
    SoGLRenderAction::Stereo m_stereo;
    SoGLRenderAction m_ownAction;
    SoGLRenderAction* m_action = &m_ownAction;
    SoHandleEventAction m_eventAction;
    SoSceneManager::RenderCallback* m_callback = nullptr;
    void* m_callbackData = nullptr;
    SoNodeSensor m_sensor;
    SoOneShotSensor m_redraw;
    SoRef<SoNode> m_nothing; ///< drawn while there is no scene
    int m_ownMirabo = 0;
};
