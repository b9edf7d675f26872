// A Qt program with a moving scene. F12 in the view, or the button, opens the inspector on it.
//
//   example_host_qt [--run SECONDS]
//
// --run opens the inspector at once, and ends the program after that time.

#include "../common/Orrery.h"

#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/qt/SoQt.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>
#include <kalmyr/sensors/SoTimerSensor.h>
#include <mirabo/launch/SoMirabo.h>

#include <QApplication>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>

namespace {

double secondsOf(const QStringList& arguments)
{
    const int at = arguments.indexOf("--run");
    return at < 0 || at + 1 >= arguments.size() ? 0 : arguments[at + 1].toDouble();
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle("Host");
    window.resize(720, 520);
    SoQt::init(&window); // from here on Qt's event loop serves the toolkit's sensors

    Orrery orrery;
    SoTimerSensor clock(
        [](void* data, SoSensor*) {
            static_cast<Orrery*>(data)->moveTo(SbTime::getTimeOfDay().getValue());
        },
        &orrery);
    clock.schedule();

    QVBoxLayout layout(&window);
    SoQtExaminerViewer viewer(&window, "view");
    viewer.setSceneGraph(orrery.root.get());
    viewer.viewAll();
    layout.addWidget(viewer.getWidget());
    QPushButton inspect("Inspect (F12)");
    layout.addWidget(&inspect);
    const auto open = [&viewer] {
        SoMirabo::start(static_cast<const SoRenderAreaCore*>(viewer.getGuiRenderArea()));
    };
    QObject::connect(&inspect, &QPushButton::clicked, open);
    window.show();

    // When the user closes the inspector it only asks for its end: that comes here.
    QTimer pump;
    QObject::connect(&pump, &QTimer::timeout, [] { SoMirabo::processEvents(); });
    pump.start(100);

    if (const double seconds = secondsOf(QApplication::arguments()); seconds > 0) {
        open();
        std::printf("inspector running: %d\n", SoMirabo::isRunning());
        QTimer::singleShot(static_cast<int>(seconds * 1000), &application, &QApplication::quit);
    }
    const int status = QApplication::exec();
    std::printf("frames drawn: %s\n", viewer.getFrameCount() > 1 ? "several" : "none");
    SoMirabo::stop();
    clock.unschedule();
    return status;
}
