#pragma once

#include <kalmyr/base/SbBox.h>
#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/sensors/SoTimerSensor.h>

#include <cstdint>
#include <memory>
#include <optional>

class SoCamera;
class SoClippingPlanes;
class SoDirectionalLight;
class SoMouseButtonEvent;
class SoPath;
class SoSceneCamera;
class SoSeparator;
class SoVRMLBindable;
struct NavigationCommand;

/// A render area with a camera, a headlight, and two modes: viewing, where the pointer moves the
/// camera, and picking, where events go to the scene.
///
/// What is seen at first is what SoSceneCamera finds. A camera that shows the scene from where it
/// stands is the one that moves; its near and far planes are widened when they would cut the scene.
/// Otherwise the viewer puts a camera of its own in front of the scene, behind which those of the
/// scene have no effect: placed like the one that was found or, when there is none, so that
/// everything is in view. It jumps to viewpoints that are bound later (a viewpoint without `jump`
/// leaves it where it is) and goes with the camera or viewpoint when that moves. Of the scene it
/// changes no values; of VRML97 nodes that can be bound it binds the first. A camera that is added
/// to the scene or removed from it later is noticed with the next frame.
class KALMYRGUI_API SoGuiViewer : public SoGuiRenderArea {
public:
    enum CameraType { PERSPECTIVE, ORTHOGRAPHIC };
    enum Side { FRONT, BACK, LEFT, RIGHT, TOP, BOTTOM };
    /// Which keys and mouse buttons do what.
    enum Scheme {
        STANDARD, ///< left drag turns, middle drag pans
        MODELLING ///< as in modelling programs: middle drag turns, the left button is for picking
    };

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
    /// In viewing mode, a press of the first button that is let go of without having moved goes to
    /// the scene as a click. Off at first.
    void setClickPicking(bool on);
    bool isClickPicking() const { return m_clickPicking; }

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
    /// Flies to where viewAll() would put the camera.
    void flyToAll();
    /// Flies around the point of interest, at its distance, to look at it from that side.
    void flyToSide(Side side);
    /// Flies to where the end of a path, which may begin anywhere in the scene at its node number
    /// `from`, fills the view. False when there is nothing to see of it.
    bool flyTo(const SoPath* path, int from = 0);
    /// The same for what is chosen: outlined by the inspector, or selected in the scene. Without
    /// anything chosen as flyToAll().
    void flyToChosen();

    /// Which way is up in the world; y at first. Must not be zero. Sides are meant by it.
    void setUpDirection(const SbVec3f& up);
    const SbVec3f& getUpDirection() const { return m_up; }

    void setHeadlight(bool on);
    bool isHeadlight() const;

    /// Whether the next click in viewing mode flies to the point under the pointer.
    void setSeekMode(bool on);
    bool isSeekMode() const { return m_seekMode; }
    /// Flies half the way to the point under a window position (pixels, origin lower left), which
    /// becomes the middle of the view; false when there is nothing.
    bool seekToPoint(const SbVec2s& position);
    /// Seconds that a flight takes, 0.6 at first; 0 jumps. Any press, key or turn of the wheel ends
    /// a flight where it is.
    void setSeekTime(float seconds) { m_seekTime = seconds; }
    float getSeekTime() const { return m_seekTime; }
    virtual bool isAnimating() const { return m_flight.isScheduled(); }

    /// Near and far planes follow the scene before each frame (on by default): the near plane
    /// stands in front of the nearest thing that is seen.
    void setAutoClipping(bool on);
    bool isAutoClipping() const { return m_autoClipping; }
    /// Nothing is seen that is nearer than this share of the far distance, but for what is looked
    /// at; 1e-5 at first. A smaller one costs precision of depth far away.
    void setNearShare(float share);
    float getNearShare() const { return m_nearShare; }

    void setNavigationScheme(Scheme scheme);
    Scheme getNavigationScheme() const { return m_scheme; }

    void setDrawStyle(SoGLRenderAction::DrawStyle style);
    SoGLRenderAction::DrawStyle getDrawStyle() const;

    /// Red and cyan pictures for two eyes. What is at the distance of interest is seen in the plane
    /// of the screen. Off at first.
    void setStereo(bool on);
    bool isStereo() const { return m_stereo; }
    /// Distance of the eyes as a share of the distance of interest; 1/30 at first.
    void setEyeSeparation(float share);
    float getEyeSeparation() const { return m_eyeSeparation; }

    void prepareFrame() override;
    bool processEvent(const SoEvent* event) override;

    /// Called when mode, kind of camera, headlight, seek mode or one of the settings changed, for
    /// the decoration around the viewer.
    using StateCallback = void(void* data, SoGuiViewer* viewer);
    void setStateCallback(StateCallback* function, void* data);

protected:
    ~SoGuiViewer() override;

    /// Pointer and keys in viewing mode; true when used. The base knows seeking and the keys that
    /// fly.
    virtual bool processViewingEvent(const SoEvent* event);
    /// Navigates as far as picking mode allows, by events that the scene does not handle.
    virtual bool processPickingEvent(const SoEvent*) { return false; }
    /// Whether a drag that moves the camera is under way, so that events go to it before the scene.
    virtual bool isDragging() const { return false; }
    /// Carries out what a key stands for; true when known.
    virtual bool run(const NavigationCommand& command);
    /// Ends a flight where it is.
    virtual void stopAnimation();
    /// The part of the window that the camera fills.
    SbViewportRegion cameraViewport() const;
    /// The scene's point under a position in the camera's viewport, in the space that the camera
    /// stands in; none where there is nothing.
    std::optional<SbVec3f> pointUnder(const SbVec2f& position);
    /// The middle of the scene and the length of its diagonal, in the space that the camera stands
    /// in; an empty scene is a point.
    void sceneExtent(SbVec3f& center, float& size) const;
    /// The direction that is up in the space that the camera stands in.
    SbVec3f upForCamera() const;
    /// Flies to another orientation around the point of interest.
    void flyTo(const SbRotation& orientation);
    /// Whether what stands in the scene says which way is up, as VRML97 does.
    bool namesUpDirection() const;
    void stateChanged();

private:
    struct View;
    View currentView() const;
    void applyView(const View& view);
    void flyTo(const View& view);
    template <class Place>
    void flyAfter(Place place);
    static void flightStep(void* data, SoSensor* sensor);
    SbBox3f boundsOf(const SoPath* path, int from) const;
    bool flyToBox(const SbBox3f& world);

    bool processInMode(const SoEvent* event);
    bool followClick(const SoEvent& event);
    void sendClick();

    void replaceRoot();
    void useCamera(SoCamera* sceneCamera, CameraType ownType);
    void placeCamera();
    struct Pose;
    bool showThrough(const SoSceneCamera& found);
    bool placeLike(const SoCamera& made, const SoSceneCamera& found);
    bool getViewpointPose(Pose& pose) const;
    void followViewpoint();
    void followSceneCamera();
    void followNavigationInfo();
    /// Method of the nodes that can be bound, for a new one.
    static void nodeBound(void* data, SoVRMLBindable* node);
    SbMatrix cameraSpace() const;
    void adjustClippingPlanes();
    bool arePlanesAdjusted();
    void aimHeadlight();
    void placeEyes();
    void setPlanes(float nearDistance, float farDistance);

    SoRef<SoSeparator> m_root; ///< headlight, own camera, scene
    SoRef<SoDirectionalLight> m_headlight;
    SoRef<SoCamera> m_camera;
    SoRef<SoNode> m_scene;
    SoRef<SoPath> m_viewpoint;             ///< what the own camera goes with; null without
    std::unique_ptr<Pose> m_viewpointPose; ///< when it was looked at last
    SoNodeSensor m_structureSensor;
    std::unique_ptr<View> m_home;
    std::unique_ptr<View> m_from;
    std::unique_ptr<View> m_to;
    std::unique_ptr<SoMouseButtonEvent> m_click; ///< pressed, and may become a click; or null
    std::unique_ptr<SoClippingPlanes> m_planes;
    SbTime m_flightStart;
    SoTimerSensor m_flight;
    SbVec3f m_up{0, 1, 0};
    float m_seekTime = 0.6f;
    float m_heightAngle; ///< of the own camera when it has perspective
    float m_nearShare;
    float m_eyeSeparation;
    /// Change id of the own camera as it was placed before the size of the window or the content of
    /// the scene was known; 0 when its place is final.
    std::uint64_t m_placedProvisionally = 0;
    /// The state that the planes were adjusted for.
    struct Adjusted {
        std::uint64_t root = 0;
        SbVec2i32 size{0, 0};
        bool operator==(const Adjusted&) const = default;
    };
    Adjusted m_adjusted;
    mutable std::optional<bool> m_namesUp; ///< of the scene; not known yet
    Scheme m_scheme = STANDARD;
    bool m_ownCamera = true;
    bool m_structureChanged = false;
    bool m_sceneWantsHeadlight = true;
    bool m_viewing = true;
    bool m_clickPicking = false;
    bool m_seekMode = false;
    bool m_autoClipping = true;
    bool m_stereo = false;
    StateCallback* m_stateCallback = nullptr;
    void* m_stateData = nullptr;
};
