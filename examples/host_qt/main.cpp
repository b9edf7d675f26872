// A Qt program with a moving scene. F12 in the left view, or the button, opens the inspector on it.
// That view is the toolkit's: it outlines what is chosen in the inspector's tree, and in picking
// mode (Esc) clicks choose, without a line here. The right one is the program's own.
//
//   example_host_qt [--run SECONDS]
//
// --run opens the inspector at once, and ends the program after that time.

#include "../common/Orrery.h"
#include "../common/RunTime.h"
#include "PlanView.h"

#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/qt/SoQt.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>
#include <kalmyr/sensors/SoTimerSensor.h>
#include <mirabo/launch/SoMirabo.h>

#include <QApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>

namespace {

constexpr double kSpread = 2; // seconds from which on the planets stand on all sides

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle("Host");
    window.resize(900, 520);
    SoQt::init(&window); // from here on Qt's event loop serves the toolkit's sensors

    Orrery orrery;
    PlanView plan(orrery.root.get(), &window);
    struct Moving {
        Orrery& orrery;
        PlanView& plan;
        SbTime start;
    } moving{orrery, plan, SbTime::getTimeOfDay()};
    SoTimerSensor clock(
        [](void* data, SoSensor*) {
            auto* all = static_cast<Moving*>(data);
            all->orrery.moveTo(kSpread + (SbTime::getTimeOfDay() - all->start).getValue());
            all->plan.update();
        },
        &moving);
    clock.schedule();

    QVBoxLayout layout(&window);
    auto* views = new QHBoxLayout;
    layout.addLayout(views);
    SoQtExaminerViewer viewer(&window, "view");
    viewer.setSceneGraph(orrery.root.get());
    orrery.moveTo(kSpread);
    viewer.viewAll();
    views->addWidget(viewer.getWidget(), 3);
    views->addWidget(&plan, 2);
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

    if (const double seconds = secondsToRun(QApplication::arguments()); seconds > 0) {
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
