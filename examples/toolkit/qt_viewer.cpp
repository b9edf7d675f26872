// A window with a viewer; the toolkit makes the Qt application. The cube grows with every click.

#include <kalmyr/base/SoRef.h>
#include <kalmyr/events/SoMouseButtonEvent.h>
#include <kalmyr/nodes/SoEventCallback.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/qt/SoQt.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>
#include <kalmyr/shapes/SoCube.h>

#include <QTimer>
#include <QWidget>

int main(int argc, char** argv)
{
    QWidget* window = SoQt::init(argc, argv, "A cube");
    {
        const SoRef<SoSeparator> scene(new SoSeparator);
        const SoRef<SoCube> cube(new SoCube);
        auto* clicks = new SoEventCallback;
        clicks->addEventCallback(
            SoMouseButtonEvent::getClassTypeId(),
            [](void* data, SoEventCallback*) {
                auto* grown = static_cast<SoCube*>(data);
                grown->width = grown->width.getValue() + 0.1f; // asks for one redraw
            },
            cube.get());
        scene->addChild(clicks);
        scene->addChild(cube.get());

        SoQtExaminerViewer viewer(window);
        viewer.setSceneGraph(scene.get());
        viewer.viewAll(); // events go to the scene after Escape, or with the arrow button
        window->resize(640, 480);
        SoQt::show(window);
        if (argc > 1) // any argument: only a short look
            QTimer::singleShot(500, [] { SoQt::exitMainLoop(); });
        SoQt::mainLoop();
    }
    SoQt::finish();
    return 0;
}
