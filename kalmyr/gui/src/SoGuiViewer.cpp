#include <kalmyr/gui/SoGuiViewer.h>

#include "ClickMotion.h"
#include "NavigationScheme.h"
#include "RenderAreaFrame.h"
#include "SoGuiViewerView.h"

#include <kalmyr/base/SoContract.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoClippingPlanes.h>
#include <kalmyr/vrml/SoVRMLBindable.h>

#include <utility>

namespace {

SoType s_type;

constexpr float kDefaultHeightAngle = 0.785398f;
constexpr double kFlightInterval = 1.0 / 60;
constexpr float kDefaultNearShare = 1e-5f;
constexpr float kDefaultEyeSeparation = 1.0f / 30;

/// Whoever looks at the whole graph may have taken the child out already.
void takeOut(SoGroup& group, const SoNode* child)
{
    const int index = child ? group.findChild(child) : -1;
    if (index >= 0)
        group.removeChild(index);
}

} // namespace

SoType SoGuiViewer::getClassTypeId()
{
    return s_type;
}

void SoGuiViewer::initClass()
{
    s_type = SoType::createType(SoGuiRenderArea::getClassTypeId(), SbName("GuiViewer"));
}

SoType SoGuiViewer::getTypeId() const
{
    return s_type;
}

SoGuiViewer::SoGuiViewer()
    : m_root(new SoSeparator),
      m_headlight(new SoDirectionalLight),
      m_viewpointPose(std::make_unique<Pose>()),
      m_planes(std::make_unique<SoClippingPlanes>()),
      m_flight(&flightStep, this),
      m_heightAngle(kDefaultHeightAngle),
      m_nearShare(kDefaultNearShare),
      m_eyeSeparation(kDefaultEyeSeparation)
{
    m_structureSensor.setPriority(0);
    m_structureSensor.setData(this);
    m_structureSensor.setFunction([](void* data, SoSensor* sensor) {
        if (static_cast<SoNodeSensor*>(sensor)->getTriggerOperation()
            != SoNotification::UNSPECIFIED)
            static_cast<SoGuiViewer*>(data)->m_structureChanged = true;
    });
    m_flight.setInterval(SbTime(kFlightInterval));
    m_headlight->direction.setValue(SbVec3f(0, 0, -1));
    m_root->addChild(m_headlight.get());
    useCamera(nullptr, PERSPECTIVE);
    saveHomePosition();
    SoGuiRenderArea::setSceneGraph(m_root.get());
    SoVRMLBindable::addBoundCallback(&nodeBound, this);
}

SoGuiViewer::~SoGuiViewer()
{
    SoVRMLBindable::removeBoundCallback(&nodeBound, this);
    m_structureSensor.detach();
    m_flight.unschedule();
}

void SoGuiViewer::setSceneGraph(SoNode* root)
{
    stopAnimation();
    const SoRef<SoNode> kept(root);
    m_structureSensor.detach();
    if (isInFrame())
        replaceRoot();
    takeOut(*m_root, m_scene.get());
    m_viewpoint = nullptr;
    m_scene = nullptr; // what is bound now is looked at below
    if (root) {
        m_root->addChild(root);
        m_structureSensor.attach(root);
        SoVRMLBindable::bindFirst(root);
    }
    m_scene = root;
    m_namesUp.reset();
    placeCamera();
    followNavigationInfo();
    stateChanged();
}

/// The one that is being traversed stays as it is.
void SoGuiViewer::replaceRoot()
{
    const SoRef<SoSeparator> fresh(new SoSeparator);
    for (SoNode* child : m_root->getChildren()->getNodes())
        fresh->addChild(child);
    m_root = fresh;
    SoGuiRenderArea::setSceneGraph(m_root.get());
}

SoNode* SoGuiViewer::getSceneGraph() const
{
    return m_scene.get();
}

void SoGuiViewer::useCamera(SoCamera* sceneCamera, CameraType ownType)
{
    if (m_ownCamera)
        takeOut(*m_root, m_camera.get());
    m_ownCamera = !sceneCamera;
    if (sceneCamera) {
        m_camera = sceneCamera;
        return;
    }
    if (ownType == ORTHOGRAPHIC)
        m_camera = new SoOrthographicCamera;
    else
        m_camera = new SoPerspectiveCamera;
    if (ownType == PERSPECTIVE)
        static_cast<SoPerspectiveCamera*>(m_camera.get())->heightAngle = m_heightAngle;
    m_camera->setOverride(true);
    const int behindHeadlight = m_root->findChild(m_headlight.get()) + 1;
    m_root->insertChild(m_camera.get(), behindHeadlight);
}

SoGuiViewer::CameraType SoGuiViewer::getCameraType() const
{
    return m_camera->isOfType(SoOrthographicCamera::getClassTypeId()) ? ORTHOGRAPHIC : PERSPECTIVE;
}

bool SoGuiViewer::setCameraType(CameraType type)
{
    if (!m_ownCamera)
        return false;
    if (type == getCameraType())
        return true;
    stopAnimation();
    const View view = currentView();
    const SoRef<SoCamera> before = m_camera;
    if (type == ORTHOGRAPHIC)
        m_heightAngle = static_cast<SoPerspectiveCamera*>(before.get())->heightAngle.getValue();
    const bool provisional = m_placedProvisionally == before->getChangeId();
    useCamera(nullptr, type);
    m_camera->focalDistance = before->focalDistance.getValue();
    setPlanes(before->nearDistance.getValue(), before->farDistance.getValue());
    applyView(view);
    m_placedProvisionally = provisional ? m_camera->getChangeId() : 0;
    stateChanged();
    return true;
}

void SoGuiViewer::setViewing(bool on)
{
    if (on == m_viewing)
        return;
    m_viewing = on;
    m_seekMode = false;
    m_click.reset();
    stateChanged();
}

void SoGuiViewer::setSeekMode(bool on)
{
    if (on == m_seekMode)
        return;
    m_seekMode = on;
    stateChanged();
}

void SoGuiViewer::setHeadlight(bool on)
{
    if (on == isHeadlight())
        return;
    m_headlight->on = on;
    stateChanged();
}

bool SoGuiViewer::isHeadlight() const
{
    return m_headlight->on.getValue();
}

void SoGuiViewer::setClickPicking(bool on)
{
    m_click.reset();
    if (std::exchange(m_clickPicking, on) != on)
        stateChanged();
}

void SoGuiViewer::setNavigationScheme(Scheme scheme)
{
    if (std::exchange(m_scheme, scheme) != scheme)
        stateChanged();
}

void SoGuiViewer::setUpDirection(const SbVec3f& up)
{
    SbVec3f unit = up;
    if (!kalmyr::holds(unit.normalize() > 0, "a direction") || unit == m_up)
        return;
    m_up = unit;
    stateChanged();
}

void SoGuiViewer::setAutoClipping(bool on)
{
    if (std::exchange(m_autoClipping, on) == on)
        return;
    m_adjusted = {};
    getSceneManager()->scheduleRedraw();
    stateChanged();
}

void SoGuiViewer::setNearShare(float share)
{
    if (!kalmyr::holds(share > 0 && share < 1, "a share between 0 and 1") || share == m_nearShare)
        return;
    m_nearShare = share;
    m_adjusted = {};
    getSceneManager()->scheduleRedraw();
}

void SoGuiViewer::setDrawStyle(SoGLRenderAction::DrawStyle style)
{
    if (style == getDrawStyle())
        return;
    getSceneManager()->setDrawStyle(style);
    m_adjusted = {};
    stateChanged();
}

SoGLRenderAction::DrawStyle SoGuiViewer::getDrawStyle() const
{
    return getSceneManager()->getDrawStyle();
}

void SoGuiViewer::setStereo(bool on)
{
    if (std::exchange(m_stereo, on) == on)
        return;
    getSceneManager()->scheduleRedraw();
    stateChanged();
}

void SoGuiViewer::setEyeSeparation(float share)
{
    if (!kalmyr::holds(share >= 0 && share < 1, "a share from 0 to 1"))
        return;
    m_eyeSeparation = share;
    if (m_stereo)
        getSceneManager()->scheduleRedraw();
}

bool SoGuiViewer::processEvent(const SoEvent* event)
{
    if (!kalmyr::holds(event, "an event"))
        return false;
    const Frame frame(this);
    if (SoKeyboardEvent::isKeyPressEvent(event, SoKeyboardEvent::ESCAPE)) {
        setViewing(!m_viewing);
        return true;
    }
    return processInMode(event);
}

bool SoGuiViewer::processInMode(const SoEvent* event)
{
    if (!m_viewing) {
        if (isDragging() && processPickingEvent(event))
            return true;
        return SoGuiRenderArea::processEvent(event) || (!m_viewing && processPickingEvent(event));
    }
    if (m_clickPicking && followClick(*event))
        return true;
    if (processViewingEvent(event))
        return true;
    // In viewing mode the scene gets nothing of the pointer; keys that the viewer has no use for
    // still reach it.
    return event->isOfType(SoKeyboardEvent::getClassTypeId())
           && SoGuiRenderArea::processEvent(event);
}

/// Follows the first button until it is known whether this is a click or a drag. True for motion
/// that is neither yet.
bool SoGuiViewer::followClick(const SoEvent& event)
{
    if (SoMouseButtonEvent::isPressEvent(&event, SoMouseButtonEvent::BUTTON1) && !m_seekMode) {
        // Who stops something that moves has chosen nothing.
        const bool isPlain = !event.wasCtrlDown() && !event.wasAltDown() && !isAnimating();
        m_click.reset();
        if (isPlain)
            m_click =
                std::make_unique<SoMouseButtonEvent>(static_cast<const SoMouseButtonEvent&>(event));
        return false;
    }
    if (!m_click)
        return false;
    if (event.isOfType(SoLocation2Event::getClassTypeId())) {
        if (!isBeyondClick(m_click->getPosition(), event.getPosition(), getPixelRatio()))
            return true;
        m_click.reset();
        return false;
    }
    if (SoMouseButtonEvent::isReleaseEvent(&event, SoMouseButtonEvent::BUTTON1)) {
        processViewingEvent(&event);
        sendClick();
        return true;
    }
    m_click.reset();
    return false;
}

void SoGuiViewer::sendClick()
{
    const std::unique_ptr<SoMouseButtonEvent> press = std::move(m_click);
    SoMouseButtonEvent release = *press;
    release.setState(SoButtonEvent::UP);
    SoGuiRenderArea::processEvent(press.get());
    SoGuiRenderArea::processEvent(&release);
}

bool SoGuiViewer::processViewingEvent(const SoEvent* event)
{
    if (m_seekMode && SoMouseButtonEvent::isPressEvent(event, SoMouseButtonEvent::BUTTON1)) {
        seekToPoint(event->getPosition());
        setSeekMode(false);
        return true;
    }
    if (!SoKeyboardEvent::isKeyPressEvent(event, SoKeyboardEvent::ANY))
        return false;
    const auto& key = *static_cast<const SoKeyboardEvent*>(event);
    const NavigationCommand command = commandOf(m_scheme, key);
    stopAnimation();
    return command.kind != NavigationCommand::NONE && run(command);
}

bool SoGuiViewer::run(const NavigationCommand& command)
{
    switch (command.kind) {
    case NavigationCommand::SEEK:
        setSeekMode(!m_seekMode);
        return true;
    case NavigationCommand::VIEW_ALL:
        flyToAll();
        return true;
    case NavigationCommand::HOME:
        resetToHomePosition();
        return true;
    case NavigationCommand::CHOSEN:
        flyToChosen();
        return true;
    case NavigationCommand::SIDE:
        flyToSide(command.side);
        return true;
    case NavigationCommand::OTHER_CAMERA:
        return setCameraType(getCameraType() == PERSPECTIVE ? ORTHOGRAPHIC : PERSPECTIVE);
    default:
        return false;
    }
}

void SoGuiViewer::setStateCallback(StateCallback* function, void* data)
{
    m_stateCallback = function;
    m_stateData = data;
}

void SoGuiViewer::stateChanged()
{
    if (m_stateCallback)
        m_stateCallback(m_stateData, this);
}
