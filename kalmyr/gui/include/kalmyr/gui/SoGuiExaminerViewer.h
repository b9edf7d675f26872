#pragma once

#include <kalmyr/base/SbRotation.h>
#include <kalmyr/gui/SoGuiViewer.h>

#include <memory>

class SoKeyboardEvent;
class SoMouseButtonEvent;
enum class NavigationDrag;

/// Turns the scene as an object held in the hand, or on a turntable.
///
/// In the standard scheme left drag turns around the point of interest, middle drag or Shift + left
/// drag pans, Ctrl + left drag or left and middle together zoom, the wheel zooms towards what is
/// under the pointer; arrow keys turn, with Shift they pan; + and - zoom. Two fingers pan, and zoom
/// when they spread. In picking mode what the scene does not handle of the wheel, the middle button
/// and two fingers moves the camera all the same.
class KALMYRGUI_API SoGuiExaminerViewer : public SoGuiViewer {
public:
    enum Turning {
        AUTOMATIC, ///< a turntable where the scene says which way is up, as VRML97 does
        FREE,      ///< about any axis, as a ball under the hand
        TURNTABLE  ///< about the up direction and the camera's own horizontal axis: the horizon
                   ///< stays
    };

    SoGuiExaminerViewer();

    static SoType getClassTypeId();
    static void initClass();
    SoType getTypeId() const override;

    void setViewing(bool on) override;

    /// At first AUTOMATIC. TURNTABLE brings the horizon back to level, in a flight.
    void setTurning(Turning turning);
    Turning getTurning() const { return m_turning; }
    bool isTurntable() const;

    /// Whether a drag that ends in motion leaves the scene spinning, until something is pressed; on
    /// at first.
    void setSpinning(bool on);
    bool isSpinningAllowed() const { return m_maySpin; }
    bool isSpinning() const { return m_spin.isScheduled(); }
    bool isAnimating() const override { return isSpinning() || SoGuiViewer::isAnimating(); }

    /// The moves, by positions in the camera's part of the window as fractions of it (origin lower
    /// left). The point of interest and its distance stay.
    void orbit(const SbVec2f& from, const SbVec2f& to);
    /// In radians, around the up axis, of the camera or on a turntable of the world, and around the
    /// camera's own axis to the right.
    void orbitBy(float aroundUp, float aroundRight);
    /// Moves sideways, so that what is at the distance of interest stays under the pointer.
    void pan(const SbVec2f& from, const SbVec2f& to);
    /// Factor above 1 moves away from the point of interest (or widens an orthographic view).
    /// Factors that are no positive number are ignored.
    void dolly(float factor);
    /// dolly() that keeps the point under `pointer`, at the distance of interest, where it is.
    void zoomTowards(const SbVec2f& pointer, float factor);
    /// The same with what is seen under the pointer: a factor below 1 brings the eye that much
    /// nearer to it, and never behind it. Where nothing is seen there is no end to the way.
    void zoomAt(const SbVec2f& pointer, float factor);

protected:
    ~SoGuiExaminerViewer() override;
    bool processViewingEvent(const SoEvent* event) override;
    bool processPickingEvent(const SoEvent* event) override;
    bool isDragging() const override;
    bool run(const NavigationCommand& command) override;
    void stopAnimation() override;

private:
    /// The point under the pointer, as long as nobody else moves it or the camera.
    struct Anchor;
    /// How fast the pointer moves.
    class Motion;

    bool navigate(const SoEvent* event);
    bool pressed(const SoMouseButtonEvent& event);
    bool moved(const SoEvent& event);
    void turn(const SbRotation& inCamera);
    void turnTable(float aroundUp, float aroundRight);
    void panAt(float distance, const SbVec2f& from, const SbVec2f& to);
    SbVec2f normalized(const SoEvent& event) const;
    const Anchor& anchorAt(const SbVec2f& pointer);
    void zoomAbout(const SbVec3f& point, float factor);
    void grab(const SbVec2f& at);
    void flick(const SbTime& now);
    static void spinStep(void* data, SoSensor* sensor);

    NavigationDrag m_drag;
    bool m_left = false;
    bool m_middle = false;
    bool m_maySpin = true;
    Turning m_turning = AUTOMATIC;
    SbVec2f m_last{0, 0};
    float m_grabbedDistance = 0; ///< of what a drag holds
    std::unique_ptr<Anchor> m_anchor;
    std::unique_ptr<Motion> m_motion;
    SoTimerSensor m_spin;
    SbTime m_spunTo;
    SbVec3f m_spinAxis{0, 1, 0}; ///< of the camera
    float m_spinSpeed = 0;       ///< radians a second
};
