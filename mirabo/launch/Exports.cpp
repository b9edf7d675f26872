#include "mirabo/launch/SoMiraboImpl.h"

#include <kalmyr/base/SbViewportRegion.h>
#include <kalmyr/gui/SoGuiRenderArea.h>

/// The plain functions through which the toolkit calls the tool without linking it.
extern "C" {

MIRABO_API void _startNode(SoNode* root)
{
    SoMiraboImpl::startNode(root, nullptr);
}

MIRABO_API void _startSceneManager(SoSceneManager* manager)
{
    SoMiraboImpl::startSceneManager(manager, nullptr);
}

MIRABO_API void _startRenderArea(SoRenderAreaCore* area)
{
    const bool isKnown = area && area->isOfType(SoGuiRenderArea::getClassTypeId());
    SoMiraboImpl::startRenderArea(isKnown ? static_cast<SoGuiRenderArea*>(area) : nullptr);
}

MIRABO_API void _startStandalone(int argc, char** argv)
{
    // Qt keeps the reference for the life of the application.
    static int count;
    count = argc;
    SoMiraboImpl::startStandalone(count, argv);
}

MIRABO_API void _stop()
{
    SoMiraboImpl::stop();
}

MIRABO_API bool _isRunning()
{
    return SoMiraboImpl::isRunning();
}

MIRABO_API bool _processEvents()
{
    return SoMiraboImpl::processEvents() != 0;
}

MIRABO_API void _setPickAction(const SbViewportRegion& region, SbVec2s cursor)
{
    SoMiraboImpl::setPickAction(region, cursor);
}

// Intended: does nothing. The hook table wants every name to resolve.
MIRABO_API void _setSceneGraph(SoNode*) {}

} // extern "C"
