// A Qt program that shows one scene in three views: two viewers, and a render area that is no
// viewer and looks through a camera of the scene. The inspector opens on any of them, and outlines
// and picks in all. With "Swap" every view gets another scene each second, which the inspector
// follows.
//
//   example_host_views_qt [--swap] [--run SECONDS]
//
// --run opens the inspector at once, and ends the program after that time.

#include "../common/Orrery.h"
#include "../common/RunTime.h"

#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/qt/SoQt.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>
#include <kalmyr/qt/SoQtRenderArea.h>
#include <mirabo/launch/SoMirabo.h>

#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <array>
#include <cstdio>

namespace {

/// An orrery with what a view without a camera of its own needs.
struct Scene {
    explicit Scene(double seconds)
    {
        auto* camera = new SoPerspectiveCamera;
        whole->addChild(camera);
        whole->addChild(new SoDirectionalLight);
        whole->addChild(orrery.root.get());
        orrery.moveTo(seconds);
        camera->viewAll(whole.get(), SbViewportRegion());
    }

    Orrery orrery;
    const SoRef<SoSeparator> whole{new SoSeparator};
};

class Views {
public:
    explicit Views(QWidget* window, QBoxLayout* layout)
        : m_viewers{SoQtExaminerViewer(window, "left"), SoQtExaminerViewer(window, "middle")},
          m_area(window, "right")
    {
        m_viewers[1].setViewing(false); // clicks choose
        for (SoQtExaminerViewer& viewer : m_viewers)
            add(layout, viewer.getWidget(), viewer.getGuiRenderArea());
        add(layout, m_area.getWidget(), m_area.getGuiRenderArea());
        show();
    }

    void swap()
    {
        m_shown = 1 - m_shown;
        show();
    }
    static void inspect(SoGuiRenderArea* area)
    {
        SoMirabo::start(static_cast<const SoRenderAreaCore*>(area));
    }
    bool haveDrawn() const
    {
        return m_viewers[0].getFrameCount() > 1 && m_viewers[1].getFrameCount() > 1
               && m_area.getFrameCount() > 1;
    }
    SoGuiRenderArea* first() { return m_viewers[0].getGuiRenderArea(); }

private:
    static void add(QBoxLayout* layout, QWidget* view, SoGuiRenderArea* area)
    {
        auto* column = new QVBoxLayout;
        auto* button = new QPushButton("Inspect");
        QObject::connect(button, &QPushButton::clicked, [area] { inspect(area); });
        column->addWidget(view, 1);
        column->addWidget(button);
        layout->addLayout(column, 1);
    }
    void show()
    {
        const Scene& scene = m_scenes[m_shown];
        for (SoQtExaminerViewer& viewer : m_viewers) {
            viewer.setSceneGraph(scene.orrery.root.get());
            viewer.viewAll();
        }
        m_area.setSceneGraph(scene.whole.get());
    }

    std::array<Scene, 2> m_scenes{Scene(2), Scene(5)};
    std::size_t m_shown = 0;
    std::array<SoQtExaminerViewer, 2> m_viewers;
    SoQtRenderArea m_area;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle("Host with three views");
    window.resize(1200, 480);
    SoQt::init(&window);

    QVBoxLayout layout(&window);
    auto* row = new QHBoxLayout;
    layout.addLayout(row, 1);
    Views views(&window, row);
    QCheckBox swap("Swap the scene every second");
    layout.addWidget(&swap);
    QTimer swapping;
    swapping.setInterval(1000);
    QObject::connect(&swapping, &QTimer::timeout, [&] { views.swap(); });
    QObject::connect(&swap, &QCheckBox::toggled, &swapping, [&](bool on) {
        if (on)
            swapping.start();
        else
            swapping.stop();
    });
    swap.setChecked(QApplication::arguments().contains("--swap"));
    window.show();

    // When the user closes the inspector it only asks for its end: that comes here.
    QTimer pump;
    QObject::connect(&pump, &QTimer::timeout, [] { SoMirabo::processEvents(); });
    pump.start(100);

    if (const double seconds = secondsToRun(QApplication::arguments()); seconds > 0) {
        Views::inspect(views.first());
        std::printf("inspector running: %d\n", SoMirabo::isRunning());
        QTimer::singleShot(static_cast<int>(seconds * 1000), &application, &QApplication::quit);
    }
    const int status = QApplication::exec();
    std::printf("frames drawn: %s\n", views.haveDrawn() ? "several" : "none");
    SoMirabo::stop();
    return status;
}
