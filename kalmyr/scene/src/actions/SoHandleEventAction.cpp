#include <kalmyr/actions/SoHandleEventAction.h>

#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/events/SoEvent.h>

SO_ACTION_SOURCE(SoHandleEventAction, SoAction, "HandleEventAction")

void SoHandleEventAction::initMethods()
{
    addMethod(SoNode::getClassTypeId(), callDoAction);
}

SoHandleEventAction::SoHandleEventAction(const SbViewportRegion& region) : m_region(region) {}

SoHandleEventAction::~SoHandleEventAction() = default;

void SoHandleEventAction::setViewportRegion(const SbViewportRegion& region)
{
    m_region = region;
    m_picked = NOT_PICKED;
}

void SoHandleEventAction::setEvent(const SoEvent* event)
{
    m_event = event;
    m_picked = NOT_PICKED;
    m_handled = false;
}

void SoHandleEventAction::setHandled()
{
    m_handled = true;
    setTerminated(true);
}

void SoHandleEventAction::setGrabber(SoNode* node)
{
    if (!node) {
        releaseGrabber();
        return;
    }
    m_grabber = node;
    const bool isPresent = getCurDepth() >= 0 && getCurNode() == node;
    m_grabPath = isPresent ? SoLightPath(*SoRef<SoPath>(getCurPath())) : SoLightPath();
}

void SoHandleEventAction::releaseGrabber()
{
    m_grabber = nullptr;
    m_grabPath = SoLightPath();
}

SoNode* SoHandleEventAction::getGrabber() const
{
    return m_grabber.get();
}

void SoHandleEventAction::setPickRoot(SoNode* root)
{
    m_pickRoot = root;
    m_picked = NOT_PICKED;
}

void SoHandleEventAction::setPickRadius(float pixels)
{
    m_pickRadius = pixels;
    m_picked = NOT_PICKED;
}

SoRayPickAction& SoHandleEventAction::pick(bool all)
{
    if (!m_pick)
        m_pick = std::make_unique<SoRayPickAction>(m_region);
    if (m_picked == PICKED_ALL || (m_picked == PICKED_NEAREST && !all))
        return *m_pick;
    SoNode* root = m_pickRoot ? m_pickRoot.get() : m_root;
    m_picked = all ? PICKED_ALL : PICKED_NEAREST;
    m_pick->setViewportRegion(m_region);
    m_pick->setRadius(m_pickRadius);
    m_pick->setPickAll(all);
    m_pick->setPoint(m_event ? m_event->getPosition() : SbVec2s(-1, -1));
    m_pick->apply(root);
    return *m_pick;
}

const SoPickedPoint* SoHandleEventAction::getPickedPoint()
{
    return pick(false).getPickedPoint();
}

const std::vector<SoPickedPoint>& SoHandleEventAction::getPickedPoints()
{
    return pick(true).getPickedPoints();
}

void SoHandleEventAction::apply(SoNode* root)
{
    m_picked = NOT_PICKED;
    m_handled = false;
    if (!kalmyr::holds(m_event, "an event to handle"))
        return;
    m_root = root;
    if (root && m_grabber)
        offerToGrabber(root);
    if (!m_handled)
        SoAction::apply(root);
    m_root = nullptr;
}

void SoHandleEventAction::offerToGrabber(SoNode* root)
{
    // Held here: the grabber may let go of the events, or hand them on, while it is asked.
    SoRef<SoPath> path;
    if (m_grabPath.getHead() == root)
        path = m_grabPath.resolve();
    if (!path)
        path = new SoPath(m_grabber.get()); // it was taken out of the graph
    setPathUse(STATE_ABOVE_TAIL);
    SoAction::apply(path.get());
    setPathUse(WHOLE);
}

void SoHandleEventAction::beginTraversal(SoNode*)
{
    getState()->write<SoViewportRegionElement>().set(nullptr, m_region);
}
