#include <kalmyr/gui/SoGuiViewer.h>

#include "RenderAreaFrame.h"
#include "SoGuiViewerView.h"

#include <kalmyr/base/SoContract.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/vrml/SoVRMLBindable.h>

namespace {

SoType s_type;

constexpr float kDefaultHeightAngle = 0.785398f;
constexpr double kFlightInterval = 1.0 / 60;

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
      m_flight(&flightStep, this),
      m_heightAngle(kDefaultHeightAngle)
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

bool SoGuiViewer::processEvent(const SoEvent* event)
{
    if (!kalmyr::holds(event, "an event"))
        return false;
    const Frame frame(this);
    if (SoKeyboardEvent::isKeyPressEvent(event, SoKeyboardEvent::ESCAPE)) {
        setViewing(!m_viewing);
        return true;
    }
    if (m_viewing && processViewingEvent(event))
        return true;
    // In viewing mode the scene gets nothing of the pointer; keys that the viewer has no use for
    // still reach it.
    if (m_viewing && !event->isOfType(SoKeyboardEvent::getClassTypeId()))
        return false;
    return SoGuiRenderArea::processEvent(event);
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
    if (event->wasCtrlDown() || event->wasAltDown())
        return false;
    switch (static_cast<const SoKeyboardEvent*>(event)->getKey()) {
    case SoKeyboardEvent::S:
        setSeekMode(!m_seekMode);
        return true;
    case SoKeyboardEvent::V:
        viewAll();
        return true;
    case SoKeyboardEvent::H:
    case SoKeyboardEvent::HOME:
        resetToHomePosition();
        return true;
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
