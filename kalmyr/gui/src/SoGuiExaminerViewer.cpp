#include <kalmyr/gui/SoGuiExaminerViewer.h>

#include <kalmyr/base/SbViewVolume.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/events/SoMouseWheelEvent.h>

#include <algorithm>
#include <cmath>

namespace {

SoType s_type;

constexpr float kTrackballRadius = 0.8f; // in half window heights
constexpr float kWheelStep = 1.1f;       // zoom factor of one notch
constexpr float kKeyDollyStep = 1.25f;
constexpr float kKeyTurn = 0.0872665f; // 5 degrees
constexpr float kKeyPan = 0.05f;       // of the window
constexpr float kDollySpeed = 3.0f;    // e-folds for a drag over the whole window
constexpr float kMinDistance = 1e-9f;
constexpr float kMaxDistance = 1e15f;

/// A window position on the virtual trackball: a sphere that runs out into a hyperbolic sheet, so
/// that drags outside the ball go on smoothly.
SbVec3f onTrackball(const SbVec2f& position, float aspect)
{
    const float x = (2 * position[0] - 1) * aspect;
    const float y = 2 * position[1] - 1;
    const float d = x * x + y * y;
    const float r = kTrackballRadius;
    const float z = d < r * r / 2 ? std::sqrt(r * r - d) : r * r / 2 / std::sqrt(d);
    return SbVec3f(x, y, z);
}

} // namespace

SoType SoGuiExaminerViewer::getClassTypeId()
{
    return s_type;
}

void SoGuiExaminerViewer::initClass()
{
    s_type = SoType::createType(SoGuiViewer::getClassTypeId(), SbName("GuiExaminerViewer"));
}

SoType SoGuiExaminerViewer::getTypeId() const
{
    return s_type;
}

SoGuiExaminerViewer::SoGuiExaminerViewer() = default;
SoGuiExaminerViewer::~SoGuiExaminerViewer() = default;

void SoGuiExaminerViewer::setViewing(bool on)
{
    m_left = m_middle = false;
    m_drag = Drag::NONE;
    SoGuiViewer::setViewing(on);
}

void SoGuiExaminerViewer::turn(const SbRotation& inCamera)
{
    SoCamera* camera = getCamera();
    const SbRotation before = camera->orientation.getValue();
    const SbRotation after = inCamera * before;
    const SbVec3f ahead(0, 0, -camera->focalDistance.getValue());
    const SbVec3f center = camera->position.getValue() + before.rotated(ahead);
    camera->orientation = after;
    camera->position = center - after.rotated(ahead);
}

void SoGuiExaminerViewer::orbit(const SbVec2f& from, const SbVec2f& to)
{
    // The ball turns from one point to the other, the camera the opposite way around it.
    const float aspect = cameraViewport().getViewportAspectRatio();
    turn(SbRotation(onTrackball(to, aspect), onTrackball(from, aspect)));
}

void SoGuiExaminerViewer::orbitBy(float aroundUp, float aroundRight)
{
    turn(SbRotation(SbVec3f(1, 0, 0), aroundRight) * SbRotation(SbVec3f(0, 1, 0), aroundUp));
}

void SoGuiExaminerViewer::pan(const SbVec2f& from, const SbVec2f& to)
{
    SoCamera* camera = getCamera();
    const SbViewVolume volume = camera->getViewVolume(cameraViewport());
    const float distance = camera->focalDistance.getValue();
    camera->position = camera->position.getValue() + volume.getPlanePoint(distance, from)
                       - volume.getPlanePoint(distance, to);
}

void SoGuiExaminerViewer::dolly(float factor)
{
    if (!(factor > 0) || !std::isfinite(factor))
        return;
    SoCamera* camera = getCamera();
    if (getCameraType() == ORTHOGRAPHIC) {
        auto& height = static_cast<SoOrthographicCamera*>(camera)->height;
        height = std::clamp(height.getValue() * factor, kMinDistance, kMaxDistance);
        return;
    }
    const float before = camera->focalDistance.getValue();
    const float after = std::clamp(before * factor, kMinDistance, kMaxDistance);
    const SbVec3f ahead = camera->orientation.getValue().rotated(SbVec3f(0, 0, -1));
    camera->position = camera->position.getValue() + ahead * (before - after);
    camera->focalDistance = after;
}

void SoGuiExaminerViewer::zoomTowards(const SbVec2f& pointer, float factor)
{
    SoCamera* camera = getCamera();
    const SbViewportRegion region = cameraViewport();
    const auto pointed = [&] {
        return camera->getViewVolume(region).getPlanePoint(camera->focalDistance.getValue(),
                                                           pointer);
    };
    const SbVec3f before = pointed();
    dolly(factor);
    camera->position = camera->position.getValue() + before - pointed();
}

SbVec2f SoGuiExaminerViewer::normalized(const SoEvent& event) const
{
    return event.getNormalizedPosition(cameraViewport());
}

SoGuiExaminerViewer::Drag SoGuiExaminerViewer::dragFor(const SoEvent& event) const
{
    if (m_left && m_middle)
        return Drag::DOLLY;
    if (m_middle)
        return Drag::PAN;
    if (!m_left)
        return Drag::NONE;
    if (event.wasCtrlDown())
        return Drag::DOLLY;
    return event.wasShiftDown() ? Drag::PAN : Drag::ORBIT;
}

bool SoGuiExaminerViewer::pressed(const SoMouseButtonEvent& event)
{
    const bool down = event.getState() == SoButtonEvent::DOWN;
    if (event.getButton() == SoMouseButtonEvent::BUTTON1)
        m_left = down;
    else if (event.getButton() == SoMouseButtonEvent::BUTTON2)
        m_middle = down;
    else
        return false;
    if (down)
        stopAnimation();
    m_drag = dragFor(event);
    m_last = normalized(event);
    return true;
}

bool SoGuiExaminerViewer::moved(const SoEvent& event)
{
    const SbVec2f at = normalized(event);
    const SbVec2f from = m_last;
    m_last = at;
    switch (m_drag) {
    case Drag::NONE:
        return false;
    case Drag::ORBIT:
        orbit(from, at);
        break;
    case Drag::PAN:
        pan(from, at);
        break;
    case Drag::DOLLY:
        dolly(std::exp((from[1] - at[1]) * kDollySpeed));
        break;
    }
    return true;
}

bool SoGuiExaminerViewer::keyPressed(const SoKeyboardEvent& event)
{
    if (event.wasCtrlDown() || event.wasAltDown())
        return false;
    const auto move = [&](float right, float up) {
        if (event.wasShiftDown())
            pan(SbVec2f(0.5f, 0.5f), SbVec2f(0.5f - right * kKeyPan, 0.5f - up * kKeyPan));
        else
            orbitBy(right * kKeyTurn, -up * kKeyTurn);
        return true;
    };
    switch (event.getKey()) {
    case SoKeyboardEvent::LEFT_ARROW:
        return move(-1, 0);
    case SoKeyboardEvent::RIGHT_ARROW:
        return move(1, 0);
    case SoKeyboardEvent::DOWN_ARROW:
        return move(0, -1);
    case SoKeyboardEvent::UP_ARROW:
        return move(0, 1);
    case SoKeyboardEvent::EQUAL:
    case SoKeyboardEvent::PAD_ADD:
        dolly(1 / kKeyDollyStep);
        return true;
    case SoKeyboardEvent::MINUS:
    case SoKeyboardEvent::PAD_SUBTRACT:
        dolly(kKeyDollyStep);
        return true;
    default:
        return false;
    }
}

bool SoGuiExaminerViewer::processViewingEvent(const SoEvent* event)
{
    if (SoGuiViewer::processViewingEvent(event))
        return true;
    if (event->isOfType(SoMouseButtonEvent::getClassTypeId()))
        return pressed(*static_cast<const SoMouseButtonEvent*>(event));
    if (event->isOfType(SoLocation2Event::getClassTypeId()))
        return moved(*event);
    if (SoKeyboardEvent::isKeyPressEvent(event, SoKeyboardEvent::ANY)) {
        stopAnimation();
        return keyPressed(*static_cast<const SoKeyboardEvent*>(event));
    }
    if (!event->isOfType(SoMouseWheelEvent::getClassTypeId()))
        return false;
    stopAnimation();
    const int delta = static_cast<const SoMouseWheelEvent*>(event)->getDelta();
    const float notches = static_cast<float>(delta) / SoMouseWheelEvent::kNotch;
    zoomTowards(normalized(*event), std::pow(kWheelStep, -notches));
    return true;
}
