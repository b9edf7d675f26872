// A program without Qt that draws into memory in a loop of its own. The toolkit finds the
// inspector's library at run time; the loop pumps it until its window is closed.
//
//   example_host_plain [--run SECONDS]
//
// --run ends the program, inspector and all, after that time.

#include "../common/Orrery.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/gui/SoGuiInit.h>
#include <kalmyr/gui/SoLibMirabo.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

int main(int argc, char** argv)
{
    const bool limited = argc == 3 && std::strcmp(argv[1], "--run") == 0;
    const double limit = limited ? std::strtod(argv[2], nullptr) : 0;
    kalmyr::initGui();

    Orrery orrery;
    const SoRef<SoGuiExaminerViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSize(SbVec2i32(320, 240));
    viewer->setSceneGraph(orrery.root.get());
    viewer->viewAll();
    SoOffscreenRenderer renderer(viewer->getSceneManager()->getViewportRegion());

    SoLibMirabo* inspector = SoLibMirabo::instance();
    if (!inspector)
        return 1; // the toolkit has said where it looked
    inspector->m_mirabo_startRenderArea(static_cast<SoRenderAreaCore*>(viewer.get()));
    std::printf("inspector running: %d\n", inspector->m_mirabo_isRunning());

    const SbTime start = SbTime::getTimeOfDay();
    int frames = 0;
    while (inspector->m_mirabo_processEvents()) {
        const double now = (SbTime::getTimeOfDay() - start).getValue();
        if (limited && now > limit)
            break;
        orrery.moveTo(now);
        if (viewer->renderOffscreen(renderer))
            ++frames;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    inspector->m_mirabo_stop();
    SoLibMirabo::finish();
    std::printf("frames drawn: %s\n", frames > 1 ? "several" : "none");
    return 0;
}
