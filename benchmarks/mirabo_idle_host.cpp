// What a host pays for an inspector that is attached and left alone: its frame time with and
// without it, for a scene that stands still and for one that moves.
//
//     bench_mirabo_idle_host [BLOCKS [SHAPES]]
//
// Prints one "name value unit" line per figure. Blocks of frames with and without the inspector
// take turns, and the fastest of each kind count, in processor time, so that a busy machine tells
// the same ratio.

#include "mirabo/launch/SoMirabo.h"

#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/qt/SoQt.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/shapes/SoCube.h>

#include <QApplication>
#include <QStandardPaths>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <vector>

#include <time.h>

namespace {

constexpr int kFrames = 30; ///< of one kind in a block
constexpr int kRow = 50;
constexpr int kMovedEach = 10; ///< one of so many shapes moves

/// Milliseconds of processor time that all threads have used.
double now()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

class Host {
public:
    explicit Host(int shapes)
    {
        auto* cube = new SoCube;
        for (int i = 0; i < shapes; ++i)
            addShape(cube, i);
        viewer->setSize(SbVec2i32(1280, 720));
        viewer->setSceneGraph(m_root.get());
        viewer->viewAll();
        m_renderer =
            std::make_unique<SoOffscreenRenderer>(viewer->getSceneManager()->getViewportRegion());
    }

    /// Milliseconds of the fastest frame.
    double draw(bool moving)
    {
        double best = std::numeric_limits<double>::max();
        for (int i = 0; i < kFrames; ++i) {
            const double begin = now();
            if (moving)
                move();
            viewer->renderOffscreen(*m_renderer);
            QCoreApplication::processEvents();
            best = std::min(best, now() - begin);
        }
        return best;
    }

    const SoRef<SoGuiExaminerViewer> viewer{new SoGuiExaminerViewer};

private:
    void addShape(SoCube* cube, int i)
    {
        auto* place = new SoSeparator;
        auto* translation = new SoTranslation;
        translation->translation = SbVec3f(float(i % kRow) * 3, float(i / kRow) * 3, 0);
        place->addChild(translation);
        place->addChild(new SoMaterial);
        place->addChild(cube);
        m_root->addChild(place);
        if (i % kMovedEach == 0)
            m_moved.push_back(translation);
    }

    void move()
    {
        const auto height = static_cast<float>(std::sin(0.1 * ++m_step));
        for (SoTranslation* translation : m_moved) {
            const SbVec3f& at = translation->translation.getValue();
            translation->translation = SbVec3f(at[0], at[1], height);
        }
    }

    const SoRef<SoSeparator> m_root{new SoSeparator};
    std::vector<SoTranslation*> m_moved; // Not owned; parts of the scene.
    std::unique_ptr<SoOffscreenRenderer> m_renderer;
    int m_step = 0;
};

/// The fastest frames of a host that stands still, and of one that moves.
struct Frames {
    std::array<double, 2> best{std::numeric_limits<double>::max(),
                               std::numeric_limits<double>::max()};

    void take(Host& host)
    {
        for (const bool moving : {false, true})
            best[moving] = std::min(best[moving], host.draw(moving));
    }
};

} // namespace

int main(int argc, char** argv)
{
    const int blocks = argc > 1 ? std::max(1, std::atoi(argv[1])) : 8;
    const int shapes = argc > 2 ? std::max(1, std::atoi(argv[2])) : 1000;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    int count = 1;
    QApplication application(count, argv);
    SoQt::init(nullptr);
    Host host(shapes);

    Frames without, with;
    for (int block = 0; block < blocks; ++block) {
        without.take(host);
        SoMirabo::start(static_cast<const SoRenderAreaCore*>(host.viewer.get()));
        if (!SoMirabo::isRunning())
            return 1;
        for (int pass = 0; pass < 20; ++pass)
            QCoreApplication::processEvents(); // its window is laid out and painted
        with.take(host);
        SoMirabo::stop();
    }
    for (const bool moving : {false, true}) {
        const char* scene = moving ? "moving" : "still";
        std::printf("idle_host.%s.without %.4g ms\n", scene, without.best[moving]);
        std::printf("idle_host.%s.with %.4g ms\n", scene, with.best[moving]);
        std::printf("idle_host.%s.ratio %.4f\n", scene, with.best[moving] / without.best[moving]);
    }
    SoQt::finish();
    return 0;
}
