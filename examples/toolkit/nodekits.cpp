// Builds a small scene of node kits, changes parts by name and writes it.

#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoWriteAction.h>
#include <kalmyr/nodekits/SoSceneKit.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/shapes/SoSphere.h>

#include <cstdio>

int main()
{
    SoDB::init();
    const SoRef<SoSceneKit> scene(new SoSceneKit);
    // Makes the list, the camera kit and the camera.
    scene->set("cameraList[0].camera", "position 0 1 5");
    scene->setCameraNumber(0);
    scene->getPart("lightList[0]");

    const SoRef<SoShapeKit> ball(new SoShapeKit);
    ball->setPart("shape", new SoSphere); // a cube until now
    ball->set(
        "appearance { material { diffuseColor 0.8 0.2 0.1 } } transform { translation 0 1 0 }");
    scene->setPart("childList[0]", ball.get());

    SoNode* material = scene->getPart("childList[0].appearance.material", false);
    std::printf("the material is %s\n", scene->getPartString(material).getString());
    if (!ball->setPart("shape", material))
        std::puts("a material is no shape");
    SoWriteAction().apply(scene.get());
    return 0;
}
