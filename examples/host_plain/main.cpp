// A program without Qt that draws into memory in a loop of its own. The toolkit finds the
// inspector's library at run time; the loop pumps it until its window is closed.
//
// The view is nothing but an action and a renderer, so the inspector has to be told of it: with one
// line it outlines what is chosen in the tree, with another a click chooses.
//
//   example_host_plain [--run SECONDS [PICTURE.png]]
//
// --run ends the program, inspector and all, after that time; the picture is that of the last
// frame.

#include "../common/Orrery.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/base/SbTime.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/gui/SoGuiInit.h>
#include <kalmyr/gui/SoInspectorViews.h>
#include <kalmyr/gui/SoLibMirabo.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

constexpr short kWidth = 640;
constexpr short kHeight = 480;

/// Camera, light and scene.
SoRef<SoSeparator> makeView(SoNode* scene)
{
    SoRef<SoSeparator> root(new SoSeparator);
    auto* camera = new SoPerspectiveCamera;
    root->addChild(camera);
    root->addChild(new SoDirectionalLight);
    root->addChild(scene);
    camera->position = SbVec3f(0, 18, 27);
    camera->orientation = SbRotation(SbVec3f(1, 0, 0), -0.588f); // at the sun
    camera->farDistance = 60;
    return root;
}

} // namespace

int main(int argc, char** argv)
{
    const bool limited = argc >= 3 && std::strcmp(argv[1], "--run") == 0;
    const double limit = limited ? std::strtod(argv[2], nullptr) : 0;
    kalmyr::initGui();

    Orrery orrery;
    const SbViewportRegion region(kWidth, kHeight);
    const SoRef<SoSeparator> view = makeView(orrery.root.get());
    SoGLRenderAction action(region);
    SoOffscreenRenderer renderer(&action);
    renderer.setNumSamples(4);
    renderer.setBackgroundColor(SbColor(0.1f, 0.12f, 0.15f));
    SoInspectorViews::addView(&action); // the outline; with a loop that draws all the time no more

    SoLibMirabo* inspector = SoLibMirabo::instance();
    if (!inspector)
        return 1; // the toolkit has said where it looked
    inspector->m_mirabo_startNode(orrery.root.get());
    std::printf("inspector running: %d\n", inspector->m_mirabo_isRunning());

    const SbTime start = SbTime::getTimeOfDay();
    int frames = 0;
    while (inspector->m_mirabo_processEvents()) {
        const double now = (SbTime::getTimeOfDay() - start).getValue();
        if (limited && now > limit)
            break;
        orrery.moveTo(now);
        // Called for each click of the mouse in the view of a program; here once, for the sun.
        if (frames == 1)
            inspector->m_mirabo_setPickAction(region, SbVec2s(kWidth / 2, kHeight / 2));
        if (renderer.render(view.get()))
            ++frames;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    if (limited && argc > 3)
        renderer.writeToPNG(argv[3]);
    inspector->m_mirabo_stop();
    SoLibMirabo::finish();
    std::printf("frames drawn: %s\n", frames > 1 ? "several" : "none");
    return 0;
}
