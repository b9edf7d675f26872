#include <kalmyr/gui/SoSceneManager.h>

#include "KeptAlive.h"

#include <kalmyr/base/SoContract.h>
#include <kalmyr/gui/SoInspectorViews.h>
#include <kalmyr/gui/SoSceneManagerImpl.h>
#include <kalmyr/nodes/SoGroup.h>

namespace {

SoType s_type;

} // namespace

SoSceneManagerImpl::SoSceneManagerImpl(SoSceneManager* owner)
    : m_owner(owner),
      m_ownAction(m_region),
      m_eventAction(m_region),
      m_sensor(&SoSceneManagerImpl::sceneChanged, this),
      m_nothing(new SoGroup)
{
    m_root.setContainer(owner);
    m_redraw.setFunction([](void* data, SoSensor*) {
        auto* self = static_cast<SoSceneManagerImpl*>(data);
        if (self->m_callback)
            self->m_callback(self->m_callbackData, self->m_owner);
    });
    m_redraw.setData(this);
    m_sensor.setPriority(0); // only queues the redraw; the redraw itself is coalesced
}

SoSceneManagerImpl::~SoSceneManagerImpl()
{
    m_sensor.detach();
    m_redraw.unschedule();
}

void SoSceneManagerImpl::sceneChanged(void* data, SoSensor*)
{
    static_cast<SoSceneManagerImpl*>(data)->m_owner->scheduleRedraw();
}

SoNode* SoSceneManagerImpl::beginFrame()
{
    m_redraw.unschedule();
    m_action->setDrawStyle(m_drawStyle);
    m_action->setStereo(m_stereo);
    SoNode* scene = m_root.getValue();
    return scene ? scene : m_nothing.get();
}

SoType SoSceneManager::getClassTypeId()
{
    return s_type;
}

void SoSceneManager::initClass()
{
    s_type = SoType::createType(SoFieldContainer::getClassTypeId(), SbName("SceneManager"));
}

SoType SoSceneManager::getTypeId() const
{
    return s_type;
}

SoSceneManager::SoSceneManager() : m_impl(std::make_unique<SoSceneManagerImpl>(this))
{
    SoInspectorViews::add(this);
}

SoSceneManager::~SoSceneManager()
{
    SoInspectorViews::remove(this);
    m_impl->m_sensor.detach();
}

void SoSceneManager::setSceneGraph(SoNode* root)
{
    const SoRef<SoNode> kept(root); // it may hang below the one that goes
    m_impl->m_sensor.detach();
    m_impl->m_root.setValue(root);
    m_impl->m_sensor.attach(root);
    scheduleRedraw();
}

SoNode* SoSceneManager::getSceneGraph() const
{
    return m_impl->m_root.getValue();
}

void SoSceneManager::setGLRenderAction(SoGLRenderAction* action)
{
    m_impl->m_action = action ? action : &m_impl->m_ownAction;
    scheduleRedraw();
}

SoGLRenderAction* SoSceneManager::getGLRenderAction() const
{
    return m_impl->m_action;
}

void SoSceneManager::setBackgroundColor(const SbColor& color)
{
    if (color == m_impl->m_background)
        return;
    m_impl->m_background = color;
    scheduleRedraw();
}

const SbColor& SoSceneManager::getBackgroundColor() const
{
    return m_impl->m_background;
}

void SoSceneManager::setViewportRegion(const SbViewportRegion& region)
{
    if (region == m_impl->m_region)
        return;
    m_impl->m_region = region;
    m_impl->m_eventAction.setViewportRegion(region);
    scheduleRedraw();
}

const SbViewportRegion& SoSceneManager::getViewportRegion() const
{
    return m_impl->m_region;
}

void SoSceneManager::setDrawStyle(SoGLRenderAction::DrawStyle style)
{
    if (style == m_impl->m_drawStyle)
        return;
    m_impl->m_drawStyle = style;
    scheduleRedraw();
}

SoGLRenderAction::DrawStyle SoSceneManager::getDrawStyle() const
{
    return m_impl->m_drawStyle;
}

void SoSceneManager::setStereo(const SoGLRenderAction::Stereo& stereo)
{
    if (stereo == m_impl->m_stereo)
        return;
    m_impl->m_stereo = stereo;
    scheduleRedraw();
}

const SoGLRenderAction::Stereo& SoSceneManager::getStereo() const
{
    return m_impl->m_stereo;
}

void SoSceneManager::setRenderCallback(RenderCallback* function, void* data)
{
    m_impl->m_callback = function;
    m_impl->m_callbackData = data;
}

void SoSceneManager::scheduleRedraw()
{
    if (m_impl->m_callback)
        m_impl->m_redraw.schedule();
}

bool SoSceneManager::isRedrawScheduled() const
{
    return m_impl->m_redraw.isScheduled();
}

bool SoSceneManager::render()
{
    const KeptAlive self(this); // a callback in the scene may let go of both
    const SoRef<SoNode> scene(m_impl->beginFrame());
    SoGLRenderAction& action = *m_impl->m_action;
    action.setViewportRegion(m_impl->m_region);
    action.setBackgroundColor(SbColorRGBA(m_impl->m_background));
    action.setClearing(true, true);
    const SoInspectorViews::Drawing outline(action);
    action.apply(scene.get());
    return action.hasDrawn();
}

bool SoSceneManager::processEvent(const SoEvent* event)
{
    if (!kalmyr::holds(event, "an event"))
        return false;
    const KeptAlive self(this); // who handles the event may let go of both
    const SoRef<SoNode> scene(m_impl->m_root.getValue());
    if (!scene)
        return false;
    SoHandleEventAction& action = m_impl->m_eventAction;
    action.setEvent(event);
    action.apply(scene.get());
    const bool handled = action.isHandled();
    action.setEvent(nullptr); // the event is the caller's
    return handled;
}
