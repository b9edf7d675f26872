#include "mirabo/launch/SoMirabo.h"

#include "mirabo/launch/SoMiraboImpl.h"

#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/gui/SoInspectorViews.h>
#include <kalmyr/gui/SoLibMirabo.h>

namespace {

/// The hook table, loaded if need be; null when it cannot be.
SoLibMirabo* hooks()
{
    return SoLibMirabo::instance();
}

/// The hook table if it is there already.
SoLibMirabo* loadedHooks()
{
    return SoLibMirabo::isAvailable() ? SoLibMirabo::instance() : nullptr;
}

} // namespace

SoMirabo::SoMirabo(int, char**) {}
SoMirabo::SoMirabo(int, char**, SoGuiRenderArea*) {}
SoMirabo::SoMirabo(const QStringList*) {}
SoMirabo::~SoMirabo() = default;

SoMirabo& SoMirabo::operator=(const SoMirabo&)
{
    return *this;
}

void SoMirabo::start(SoNode* root)
{
    if (SoLibMirabo* table = hooks())
        table->m_mirabo_startNode(root);
}

void SoMirabo::start(SoNode* root, void* parent)
{
    if (hooks())
        SoMiraboImpl::startNode(root, static_cast<QWidget*>(parent));
}

void SoMirabo::start(SoSceneManager* manager)
{
    if (SoLibMirabo* table = hooks())
        table->m_mirabo_startSceneManager(manager);
}

void SoMirabo::start(SoSceneManager* manager, void* parent)
{
    if (hooks())
        SoMiraboImpl::startSceneManager(manager, static_cast<QWidget*>(parent));
}

void SoMirabo::start(const SoRenderAreaCore* area)
{
    if (SoLibMirabo* table = hooks())
        table->m_mirabo_startSceneManager(area ? area->getSceneManager() : nullptr);
}

void SoMirabo::launch(int, char**, SoGuiRenderArea* area)
{
    SoSceneManager* manager = area ? area->getSceneManager() : nullptr;
    if (SoLibMirabo* table = hooks())
        table->m_mirabo_startSceneManager(manager);
}

void SoMirabo::setInstance(int argc, char** argv, SoGuiRenderArea* area)
{
    launch(argc, argv, area);
}

void SoMirabo::setInstance(int, char**, SoNode* root, bool)
{
    start(root);
}

void SoMirabo::stop()
{
    if (SoLibMirabo* table = loadedHooks())
        table->m_mirabo_stop();
    if (SoLibMirabo::isAvailable())
        SoLibMirabo::finish();
}

bool SoMirabo::isRunning()
{
    SoLibMirabo* table = loadedHooks();
    return table && table->m_mirabo_isRunning();
}

int SoMirabo::isInstance()
{
    return isRunning() ? 1 : 0;
}

bool SoMirabo::processEvents()
{
    SoLibMirabo* table = loadedHooks();
    if (!table)
        return false;
    const bool running = table->m_mirabo_processEvents();
    if (!running)
        SoLibMirabo::finish();
    return running;
}

void SoMirabo::addView(SoGLRenderAction* action, void (*redraw)(void* data), void* data)
{
    SoInspectorViews::addView(action, redraw, data);
}

void SoMirabo::setPickAction(const SbViewportRegion& region, SbVec2s cursor)
{
    if (SoLibMirabo* table = loadedHooks())
        table->m_mirabo_setPickAction(region, cursor);
}

void SoMirabo::setSceneGraph(SoNode* root)
{
    if (SoLibMirabo* table = loadedHooks())
        table->m_mirabo_setSceneGraph(root);
}

SoKeyboardEvent::Key SoMirabo::getShortcutValue()
{
    return SoLibMirabo::getShortcutValue();
}

void SoMirabo::setShortcutValue(SoKeyboardEvent::Key key)
{
    SoLibMirabo::setShortcutValue(key);
}
