#pragma once

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/sensors/SoTimerSensor.h>

#include <cstdint>
#include <memory>

class SoCamera;
class SoDirectionalLight;
class SoPath;
class SoSeparator;
class SoVRMLBindable;

/// A render area with a camera, a headlight, and two modes: viewing, where the pointer moves the
/// camera, and picking, where events go to the scene.
///
/// The first camera of the scene is the one that moves, where the scene has one; its near and far
/// planes are widened when they would cut the scene. Otherwise the viewer puts a camera of its own
/// in front of the scene, placed by the bound viewpoint or so that everything is in view, and jumps
/// to viewpoints that are bound later (a viewpoint without `jump` leaves it where it is). It goes
/// with the bound viewpoint when that moves. Of the scene it changes no values; of VRML97 nodes
/// that can be bound it binds the first. A camera that is added to the scene or removed from it
/// later is noticed with the next frame.
class KALMYRGUI_API SoGuiViewer : public SoGuiRenderArea {
public:
    enum CameraType { PERSPECTIVE, ORTHOGRAPHIC };

    SoGuiViewer();

    static SoType getClassTypeId();
    static void initClass();
    SoType getTypeId() const override;

    /// Also when it is the present one the camera is placed anew. The headlight goes off when the
    /// scene's navigation info says so, and on again with the next scene that does not.
    void setSceneGraph(SoNode* root) override;
    SoNode* getSceneGraph() const override;

    bool isViewing() const { return m_viewing; }
    virtual void setViewing(bool on);

    SoCamera* getCamera() const { return m_camera.get(); }
    /// Replaces the viewer's own camera by one of the other kind that shows the same. A scene's
    /// camera stays what it is (returns false).
    bool setCameraType(CameraType type);
    CameraType getCameraType() const;
    /// False while the camera is one of the scene's nodes.
    bool hasOwnCamera() const { return m_ownCamera; }

    /// Moves the camera so that the whole scene is in view, looking the way it looks now.
    virtual void viewAll();
    /// The home position is at first where the camera stood when the scene was set.
    void saveHomePosition();
    void resetToHomePosition();

    void setHeadlight(bool on);
    bool isHeadlight() const;

    /// Whether the next click in viewing mode flies to the point under the pointer.
    void setSeekMode(bool on);
    bool isSeekMode() const { return m_seekMode; }
    /// Flies half the way to the point under a window position (pixels, origin lower left), which
    /// becomes the middle of the view; false when there is nothing.
    bool seekToPoint(const SbVec2s& position);
    /// Seconds that a flight to a point or home takes, 0.6 at first; 0 jumps.
    void setSeekTime(float seconds) { m_seekTime = seconds; }
    float getSeekTime() const { return m_seekTime; }
    bool isAnimating() const { return m_flight.isScheduled(); }

    /// Near and far planes follow the scene before each frame (on by default).
    void setAutoClipping(bool on) { m_autoClipping = on; }
    bool isAutoClipping() const { return m_autoClipping; }

    void prepareFrame() override;
    bool processEvent(const SoEvent* event) override;

    /// Called when mode, kind of camera, headlight or seek mode changed, for the decoration around
    /// the viewer.
    using StateCallback = void(void* data, SoGuiViewer* viewer);
    void setStateCallback(StateCallback* function, void* data);

protected:
    ~SoGuiViewer() override;

    /// Pointer and keys in viewing mode; true when used. The base knows the keys.
    virtual bool processViewingEvent(const SoEvent* event);
    /// Ends a flight where it is.
    void stopAnimation();
    /// The part of the window that the camera fills.
    SbViewportRegion cameraViewport() const;

private:
    struct View;
    View currentView() const;
    void applyView(const View& view);
    void flyTo(const View& view);
    static void flightStep(void* data, SoSensor* sensor);

    void stateChanged();
    void replaceRoot();
    void useCamera(SoCamera* sceneCamera, CameraType ownType);
    void placeCamera();
    struct Pose;
    bool findViewpoint();
    Pose viewpointPose() const;
    void followViewpoint();
    bool placeByViewpoint();
    void followSceneCamera();
    void followNavigationInfo();
    /// Method of the nodes that can be bound, for a new one.
    static void nodeBound(void* data, SoVRMLBindable* node);
    SbMatrix cameraSpace() const;
    void adjustClippingPlanes();
    void aimHeadlight();
    void setPlanes(float nearDistance, float farDistance);

    SoRef<SoSeparator> m_root; ///< headlight, own camera, scene
    SoRef<SoDirectionalLight> m_headlight;
    SoRef<SoCamera> m_camera;
    SoRef<SoNode> m_scene;
    SoRef<SoPath> m_viewpoint;             ///< to the bound one; null without
    std::unique_ptr<Pose> m_viewpointPose; ///< when it was looked at last
    SoNodeSensor m_structureSensor;
    std::unique_ptr<View> m_home;
    std::unique_ptr<View> m_from;
    std::unique_ptr<View> m_to;
    SbTime m_flightStart;
    SoTimerSensor m_flight;
    float m_seekTime = 0.6f;
    float m_heightAngle; ///< of the own camera when it has perspective
    /// Change id of the own camera as it was placed before the size of the window or the content of
    /// the scene was known; 0 when its place is final.
    std::uint64_t m_placedProvisionally = 0;
    bool m_ownCamera = true;
    bool m_structureChanged = false;
    bool m_sceneWantsHeadlight = true;
    bool m_viewing = true;
    bool m_seekMode = false;
    bool m_autoClipping = true;
    StateCallback* m_stateCallback = nullptr;
    void* m_stateData = nullptr;
};
