#include <kalmyr/gui/SoGuiExaminerViewer.h>

#include "KeptAlive.h"
#include "NavigationScheme.h"
#include "PointerMotion.h"
#include "Turntable.h"

#include <kalmyr/base/SbViewVolume.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/events/SoGestureEvent.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/events/SoMouseWheelEvent.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

SoType s_type;

constexpr float kTrackballRadius = 0.8f; // in half window heights
constexpr float kTableTurn = 3.1415927f; // of a drag over the height of the window
constexpr float kWheelStep = 1.1f;       // zoom factor of one notch
constexpr float kDollySpeed = 3.0f;      // e-folds for a drag over the whole window
constexpr float kMinDistance = 1e-9f;
constexpr float kMaxDistance = 1e15f;

/// Nearer than this share of its coordinates nothing can be told apart from the eye.
constexpr float kNearestApproach = 1e-5f;
/// The point of interest stays at most so many times as far away as what is zoomed to.
constexpr float kFarthestInterest = 3;
/// Where nothing is under the pointer a zoom goes on as if something were at this share of the
/// scene's size.
constexpr float kEmptyShare = 0.3f;

constexpr double kSpinInterval = 1.0 / 60;
constexpr float kSlowestSpin = 0.3f; // radians a second; slower ones are drags that ended
constexpr float kFastestSpin = 6.3f;

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

struct SoGuiExaminerViewer::Anchor {
    SbVec2f pointer{-1, -1};
    SbVec3f point; ///< in the camera's space
    bool isSeen = false;
    std::uint64_t camera = 0; ///< change ids
    std::uint64_t scene = 0;
};

class SoGuiExaminerViewer::Motion final : public PointerMotion {};

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

SoGuiExaminerViewer::SoGuiExaminerViewer()
    : m_drag(NavigationDrag::NONE),
      m_anchor(std::make_unique<Anchor>()),
      m_motion(std::make_unique<Motion>()),
      m_spin(&spinStep, this)
{
    m_spin.setInterval(SbTime(kSpinInterval));
}

SoGuiExaminerViewer::~SoGuiExaminerViewer()
{
    m_spin.unschedule();
}

void SoGuiExaminerViewer::setViewing(bool on)
{
    m_left = m_middle = false;
    m_drag = NavigationDrag::NONE;
    SoGuiViewer::setViewing(on);
}

void SoGuiExaminerViewer::setTurning(Turning turning)
{
    if (std::exchange(m_turning, turning) == turning)
        return;
    if (turning == TURNTABLE)
        flyTo(levelled(getCamera()->orientation.getValue(), upForCamera()));
    stateChanged();
}

bool SoGuiExaminerViewer::isTurntable() const
{
    return m_turning == TURNTABLE || (m_turning == AUTOMATIC && namesUpDirection());
}

void SoGuiExaminerViewer::setSpinning(bool on)
{
    if (!on)
        m_spin.unschedule();
    if (std::exchange(m_maySpin, on) != on)
        stateChanged();
}

void SoGuiExaminerViewer::stopAnimation()
{
    m_spin.unschedule();
    SoGuiViewer::stopAnimation();
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

void SoGuiExaminerViewer::turnTable(float aroundUp, float aroundRight)
{
    const SbRotation before = getCamera()->orientation.getValue();
    turn(turnedOnTable(before, upForCamera(), aroundUp, aroundRight) * before.inverse());
}

void SoGuiExaminerViewer::orbit(const SbVec2f& from, const SbVec2f& to)
{
    const float aspect = cameraViewport().getViewportAspectRatio();
    if (isTurntable()) {
        const SbVec2f way = to - from;
        turnTable(-way[0] * aspect * kTableTurn, way[1] * kTableTurn);
        return;
    }
    // The ball turns from one point to the other, the camera the opposite way around it.
    turn(SbRotation(onTrackball(to, aspect), onTrackball(from, aspect)));
}

void SoGuiExaminerViewer::orbitBy(float aroundUp, float aroundRight)
{
    if (isTurntable())
        turnTable(aroundUp, aroundRight);
    else
        turn(SbRotation(SbVec3f(1, 0, 0), aroundRight) * SbRotation(SbVec3f(0, 1, 0), aroundUp));
}

void SoGuiExaminerViewer::pan(const SbVec2f& from, const SbVec2f& to)
{
    panAt(getCamera()->focalDistance.getValue(), from, to);
}

void SoGuiExaminerViewer::panAt(float distance, const SbVec2f& from, const SbVec2f& to)
{
    SoCamera* camera = getCamera();
    const SbViewVolume volume = camera->getViewVolume(cameraViewport());
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

/// Looks for what is under the pointer, unless that is known.
const SoGuiExaminerViewer::Anchor& SoGuiExaminerViewer::anchorAt(const SbVec2f& pointer)
{
    const std::uint64_t scene = getSceneGraph() ? getSceneGraph()->getChangeId() : 0;
    Anchor& anchor = *m_anchor;
    if (anchor.isSeen && anchor.pointer == pointer && anchor.scene == scene
        && anchor.camera == getCamera()->getChangeId())
        return anchor;
    const std::optional<SbVec3f> seen = pointUnder(pointer);
    anchor = {pointer, seen.value_or(SbVec3f()), seen.has_value(), 0, 0};
    if (seen)
        return anchor;
    SbVec3f center;
    float size = 0;
    sceneExtent(center, size);
    const SoCamera* camera = getCamera();
    const SbVec3f ahead = camera->orientation.getValue().rotated(SbVec3f(0, 0, -1));
    const float depth = size > 0 ? (center - camera->position.getValue()).dot(ahead)
                                 : camera->focalDistance.getValue();
    const SbViewVolume volume = camera->getViewVolume(cameraViewport());
    anchor.point = volume.getPlanePoint(std::max(depth, kEmptyShare * size), pointer);
    return anchor;
}

void SoGuiExaminerViewer::zoomAt(const SbVec2f& pointer, float factor)
{
    if (!(factor > 0) || !std::isfinite(factor))
        return;
    if (getCameraType() == ORTHOGRAPHIC) {
        zoomTowards(pointer, factor);
        return;
    }
    Anchor& anchor = *m_anchor;
    zoomAbout(anchorAt(pointer).point, factor);
    anchor.camera = getCamera()->getChangeId();
    anchor.scene = getSceneGraph() ? getSceneGraph()->getChangeId() : 0;
}

/// Scales the way from a point to the eye, and the distance of interest with it.
void SoGuiExaminerViewer::zoomAbout(const SbVec3f& point, float factor)
{
    SoCamera* camera = getCamera();
    const SbVec3f eye = camera->position.getValue();
    const SbVec3f way = eye - point;
    const float distance = way.length();
    const float least =
        std::max(kMinDistance, kNearestApproach * std::max(point.length(), eye.length()));
    if (!(distance > 0) || (factor < 1 && distance <= least))
        return;
    const float share = std::clamp(factor, std::min(least / distance, 1.0f),
                                   std::max(kMaxDistance / distance, 1.0f));
    const float depth = way.dot(camera->orientation.getValue().rotated(SbVec3f(0, 0, 1))) * share;
    const float interest = camera->focalDistance.getValue() * share;
    // The point that was turned about so far stays, unless it is in front of the other, or far
    // behind.
    const bool isBeside = interest < depth || interest > depth * kFarthestInterest;
    camera->position = point + way * share;
    if (depth > kMinDistance)
        camera->focalDistance = isBeside ? depth : interest;
}

SbVec2f SoGuiExaminerViewer::normalized(const SoEvent& event) const
{
    return event.getNormalizedPosition(cameraViewport());
}

bool SoGuiExaminerViewer::isDragging() const
{
    return m_drag != NavigationDrag::NONE;
}

/// Holds what is under the pointer for the drag that begins.
void SoGuiExaminerViewer::grab(const SbVec2f& at)
{
    m_grabbedDistance = getCamera()->focalDistance.getValue();
    if (m_drag != NavigationDrag::PAN && m_drag != NavigationDrag::ZOOM)
        return;
    const Anchor& anchor = anchorAt(at);
    m_anchor->camera = getCamera()->getChangeId();
    m_anchor->scene = getSceneGraph() ? getSceneGraph()->getChangeId() : 0;
    const SbVec3f ahead = getCamera()->orientation.getValue().rotated(SbVec3f(0, 0, -1));
    const float depth = (anchor.point - getCamera()->position.getValue()).dot(ahead);
    if (anchor.isSeen && depth > 0)
        m_grabbedDistance = depth;
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
    const NavigationDrag before = m_drag;
    m_drag = dragOf(getNavigationScheme(), m_left, m_middle, event);
    m_last = normalized(event);
    if (down) {
        m_motion->begin(event.getTime(), m_last);
        grab(m_last);
    } else if (before == NavigationDrag::TURN && m_drag == NavigationDrag::NONE) {
        flick(event.getTime());
    }
    return true;
}

bool SoGuiExaminerViewer::moved(const SoEvent& event)
{
    const SbVec2f at = normalized(event);
    const SbVec2f from = std::exchange(m_last, at);
    switch (m_drag) {
    case NavigationDrag::NONE:
        return false;
    case NavigationDrag::TURN:
        m_motion->add(event.getTime(), at);
        orbit(from, at);
        break;
    case NavigationDrag::PAN:
        panAt(m_grabbedDistance, from, at);
        break;
    case NavigationDrag::ZOOM:
        zoomAt(m_anchor->pointer, std::exp((from[1] - at[1]) * kDollySpeed));
        break;
    }
    return true;
}

/// The scene goes on turning as it did when the pointer let go of it.
void SoGuiExaminerViewer::flick(const SbTime& now)
{
    const std::optional<SbVec2f> speed = m_motion->speedAt(now);
    if (!m_maySpin || !speed)
        return;
    const float aspect = cameraViewport().getViewportAspectRatio();
    if (isTurntable()) {
        m_spinSpeed = -(*speed)[0] * aspect * kTableTurn;
    } else {
        constexpr float kStep = 0.01f; // seconds in which the turn is taken
        const SbRotation step(onTrackball(m_last, aspect),
                              onTrackball(m_last - *speed * kStep, aspect));
        step.getValue(m_spinAxis, m_spinSpeed);
        m_spinSpeed /= kStep;
    }
    if (!(std::abs(m_spinSpeed) >= kSlowestSpin))
        return;
    m_spinSpeed = std::clamp(m_spinSpeed, -kFastestSpin, kFastestSpin);
    m_spunTo = SbTime::monotonic();
    m_spin.schedule();
}

void SoGuiExaminerViewer::spinStep(void* data, SoSensor*)
{
    auto* self = static_cast<SoGuiExaminerViewer*>(data);
    const KeptAlive<SoGuiExaminerViewer> kept(self); // who watches the camera may let go of it
    const SbTime now = SbTime::monotonic();
    const auto passed = static_cast<float>((now - std::exchange(self->m_spunTo, now)).getValue());
    const float angle = self->m_spinSpeed * passed;
    if (self->isTurntable())
        self->turnTable(angle, 0);
    else
        self->turn(SbRotation(self->m_spinAxis, angle));
}

bool SoGuiExaminerViewer::run(const NavigationCommand& command)
{
    const SbVec2f middle(0.5f, 0.5f);
    switch (command.kind) {
    case NavigationCommand::TURN:
        orbitBy(command.right, -command.up);
        return true;
    case NavigationCommand::PAN:
        pan(middle, middle - SbVec2f(command.right, command.up));
        return true;
    case NavigationCommand::ZOOM:
        zoomAt(middle, command.right);
        return true;
    default:
        return SoGuiViewer::run(command);
    }
}

/// Pointer, wheel and fingers.
bool SoGuiExaminerViewer::navigate(const SoEvent* event)
{
    if (event->isOfType(SoMouseButtonEvent::getClassTypeId()))
        return pressed(*static_cast<const SoMouseButtonEvent*>(event));
    if (event->isOfType(SoLocation2Event::getClassTypeId()))
        return moved(*event);
    if (event->isOfType(SoMouseWheelEvent::getClassTypeId())) {
        stopAnimation();
        const int delta = static_cast<const SoMouseWheelEvent*>(event)->getDelta();
        const float notches = static_cast<float>(delta) / SoMouseWheelEvent::kNotch;
        zoomAt(normalized(*event), std::pow(kWheelStep, -notches));
        return true;
    }
    if (!event->isOfType(SoGestureEvent::getClassTypeId()))
        return false;
    stopAnimation();
    const auto& gesture = *static_cast<const SoGestureEvent*>(event);
    if (gesture.getState() == SoGestureEvent::UPDATE) {
        const SbVec2f at = normalized(gesture);
        const SbVec2s size = cameraViewport().getViewportSizePixels();
        const SbVec2f way(gesture.getMotion()[0] / static_cast<float>(size[0]),
                          gesture.getMotion()[1] / static_cast<float>(size[1]));
        pan(at - way, at);
        zoomAt(at, 1 / gesture.getScale());
    }
    return true;
}

bool SoGuiExaminerViewer::processViewingEvent(const SoEvent* event)
{
    return SoGuiViewer::processViewingEvent(event) || navigate(event);
}

/// The first button is the scene's, and so is motion, but for a drag that has begun.
bool SoGuiExaminerViewer::processPickingEvent(const SoEvent* event)
{
    const bool isFirstButton = event->isOfType(SoMouseButtonEvent::getClassTypeId())
                               && static_cast<const SoMouseButtonEvent*>(event)->getButton()
                                      == SoMouseButtonEvent::BUTTON1;
    return !isFirstButton && navigate(event);
}
