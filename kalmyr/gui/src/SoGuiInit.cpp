#include <kalmyr/gui/SoGuiInit.h>

#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/rendering/SoRenderingInit.h>

void kalmyr::initGui()
{
    SoDB::init();
    initRendering();
    SoSceneManager::initClass();
    SoRenderAreaCore::initClass();
    SoGuiRenderArea::initClass();
    SoGuiViewer::initClass();
    SoGuiExaminerViewer::initClass();
}
