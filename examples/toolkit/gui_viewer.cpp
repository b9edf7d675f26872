// Turns a cone in a viewer without a window, and draws it into memory.

#include <kalmyr/base/SoRef.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/gui/SoGuiInit.h>
#include <kalmyr/gui/SoSceneManager.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/shapes/SoCone.h>

#include <cstdio>

int main(int argc, char** argv)
{
    kalmyr::initGui();
    const SoRef<SoSeparator> scene(new SoSeparator);
    auto* material = new SoMaterial;
    material->diffuseColor.setValue(0.9f, 0.6f, 0.1f);
    scene->addChild(material);
    scene->addChild(new SoCone);

    const SoRef<SoGuiExaminerViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSize(SbVec2i32(320, 240));
    viewer->setSceneGraph(scene.get());
    viewer->viewAll();
    viewer->orbitBy(0.3f, -0.4f); // radians, around the camera's axes
    viewer->getSceneManager()->setBackgroundColor(SbColor(0.2f, 0.2f, 0.25f));

    SoOffscreenRenderer renderer(viewer->getSceneManager()->getViewportRegion());
    const bool drawn = viewer->renderOffscreen(renderer);
    std::puts(drawn ? "drawn" : "no OpenGL here"); // the toolkit has said why
    if (drawn && argc > 1 && renderer.writeToPNG(argv[1]))
        std::printf("%s written\n", argv[1]);
    return 0;
}
