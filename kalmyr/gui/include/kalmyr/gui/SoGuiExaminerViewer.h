#pragma once

#include <kalmyr/base/SbRotation.h>
#include <kalmyr/gui/SoGuiViewer.h>

class SoKeyboardEvent;
class SoMouseButtonEvent;

/// Turns the scene as an object held in the hand.
///
/// Left drag orbits around the point of interest (a virtual trackball), middle drag or Shift + left
/// drag pans, Ctrl + left drag or left and middle together dolly, the wheel zooms towards the
/// pointer. Arrow keys orbit, with Shift they pan; + and - dolly.
class KALMYRGUI_API SoGuiExaminerViewer : public SoGuiViewer {
public:
    SoGuiExaminerViewer();

    static SoType getClassTypeId();
    static void initClass();
    SoType getTypeId() const override;

    void setViewing(bool on) override;

    /// The moves, by positions in the camera's part of the window as fractions of it (origin lower
    /// left). The point of interest and its distance stay.
    void orbit(const SbVec2f& from, const SbVec2f& to);
    /// Around the camera's own up axis and right axis, in radians.
    void orbitBy(float aroundUp, float aroundRight);
    /// Moves sideways, so that what is at the distance of interest stays under the pointer.
    void pan(const SbVec2f& from, const SbVec2f& to);
    /// Factor above 1 moves away from the point of interest (or widens an orthographic view).
    /// Factors that are no positive number are ignored.
    void dolly(float factor);
    /// dolly() that keeps the point under `pointer` where it is.
    void zoomTowards(const SbVec2f& pointer, float factor);

protected:
    ~SoGuiExaminerViewer() override;
    bool processViewingEvent(const SoEvent* event) override;

private:
    enum class Drag { NONE, ORBIT, PAN, DOLLY };
    Drag dragFor(const SoEvent& event) const;
    bool pressed(const SoMouseButtonEvent& event);
    bool moved(const SoEvent& event);
    bool keyPressed(const SoKeyboardEvent& event);
    void turn(const SbRotation& inCamera);
    SbVec2f normalized(const SoEvent& event) const;

    Drag m_drag = Drag::NONE;
    bool m_left = false;
    bool m_middle = false;
    SbVec2f m_last{0, 0};
};
