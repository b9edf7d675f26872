#include <kalmyr/gui/SoGuiRenderArea.h>

#include "ClickMotion.h"
#include "RenderAreaFrame.h"

#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/events/SoLocation2Event.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/gui/SoInspectorViews.h>
#include <kalmyr/gui/SoLibMirabo.h>
#include <kalmyr/gui/SoSceneManagerImpl.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include <algorithm>

namespace {

constexpr int kMaxSize = 32767; // window positions are short

SoType s_coreType;
SoType s_type;
SoFieldData* s_fieldData = nullptr;

} // namespace

SoType SoRenderAreaCore::getClassTypeId()
{
    return s_coreType;
}

void SoRenderAreaCore::initClass()
{
    s_coreType = SoType::createType(SoFieldContainer::getClassTypeId(), SbName("RenderAreaCore"));
}

SoType SoGuiRenderArea::getClassTypeId()
{
    return s_type;
}

void SoGuiRenderArea::initClass()
{
    s_type = SoType::createType(SoRenderAreaCore::getClassTypeId(), SbName("GuiRenderArea"));
}

SoType SoGuiRenderArea::getTypeId() const
{
    return s_type;
}

const SoFieldData* SoGuiRenderArea::getFieldData() const
{
    return s_fieldData;
}

SoGuiRenderArea::SoGuiRenderArea() : m_manager(new SoSceneManager)
{
    sceneManager.setContainer(this);
    if (!s_fieldData) {
        s_fieldData = new SoFieldData;
        s_fieldData->addField(this, SbName("sceneManager"), &sceneManager);
    }
    sceneManager.setValue(m_manager.get());
    m_manager->getImpl()->getRootField().addAuditor(&sceneManager, SoAuditor::FIELD);
}

SoGuiRenderArea::~SoGuiRenderArea()
{
    // The manager may live on with somebody else, scene and all.
    m_manager->setRenderCallback(nullptr, nullptr);
    m_manager->getImpl()->getRootField().removeAuditor(&sceneManager);
}

void SoGuiRenderArea::setSceneGraph(SoNode* root)
{
    m_manager->setSceneGraph(root);
}

SoNode* SoGuiRenderArea::getSceneGraph() const
{
    return m_manager->getSceneGraph();
}

void SoGuiRenderArea::setSize(const SbVec2i32& size)
{
    const auto limited = [](int value) {
        return static_cast<short>(std::clamp(value, 1, kMaxSize));
    };
    SbViewportRegion region = m_manager->getViewportRegion();
    region.setWindowSize(limited(size[0]), limited(size[1]));
    m_manager->setViewportRegion(region);
}

SbVec2i32 SoGuiRenderArea::getSize() const
{
    const auto& size = m_manager->getViewportRegion().getWindowSize();
    return SbVec2i32(size[0], size[1]);
}

void SoGuiRenderArea::setPixelRatio(float ratio)
{
    SbViewportRegion region = m_manager->getViewportRegion();
    region.setPixelsPerInch((ratio > 0 ? ratio : 1) * SbViewportRegion::kDefaultPixelsPerInch);
    m_manager->setViewportRegion(region);
}

float SoGuiRenderArea::getPixelRatio() const
{
    return m_manager->getViewportRegion().getPixelsPerPoint();
}

bool SoGuiRenderArea::render()
{
    const Frame frame(this); // a callback in the scene may let go of the area
    prepareFrame();
    return m_manager->render();
}

bool SoGuiRenderArea::renderOffscreen(SoOffscreenRenderer& renderer)
{
    const Frame frame(this);
    prepareFrame();
    const SoRef<SoSceneManager> manager(m_manager);
    const SoRef<SoNode> scene(manager->getImpl()->beginFrame());
    renderer.setViewportRegion(m_manager->getViewportRegion());
    renderer.setBackgroundColor(m_manager->getBackgroundColor());
    renderer.setGLRenderAction(m_manager->getGLRenderAction());
    const SoInspectorViews::Drawing outline(*m_manager->getGLRenderAction());
    return renderer.render(scene.get());
}

bool SoGuiRenderArea::processEvent(const SoEvent* event)
{
    const Frame frame(this);
    if (!SoKeyboardEvent::isKeyPressEvent(event, SoLibMirabo::getShortcutValue())) {
        const bool isHandled = m_manager->processEvent(event);
        followClick(*event, isHandled);
        return isHandled;
    }
    if (SoLibMirabo* hooks = SoLibMirabo::instance())
        hooks->m_mirabo_startRenderArea(static_cast<SoRenderAreaCore*>(this));
    return true;
}

/// Of two events that are handled in the scene neither is one for the inspector: a dragger has the
/// press, and what comes of it.
void SoGuiRenderArea::followClick(const SoEvent& event, bool isHandled)
{
    const SbVec2s at = event.getPosition();
    if (SoMouseButtonEvent::isPressEvent(&event, SoMouseButtonEvent::BUTTON1)) {
        m_isPressed = !isHandled;
        m_pressedAt = at;
        if (m_isPressed)
            SoInspectorViews::tell(this, at, SoInspectorViews::PRESSED);
        return;
    }
    const bool isAway = isBeyondClick(m_pressedAt, at, getPixelRatio());
    m_isPressed = m_isPressed && !isHandled && !isAway;
    if (!m_isPressed || !SoMouseButtonEvent::isReleaseEvent(&event, SoMouseButtonEvent::BUTTON1))
        return;
    m_isPressed = false;
    SoInspectorViews::tell(this, m_pressedAt, SoInspectorViews::CLICKED);
}
