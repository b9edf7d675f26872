// The same widgets with the window system's own OpenGL, under an X server.
#include "qt/QtTestTools.h"
#include "support/Passes.h"

#include <kalmyr/core/SoPath.h>
#include <kalmyr/gui/SoGuiViewer.h>
#include <kalmyr/gui/SoInspectorViews.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QVBoxLayout>

namespace {

class WindowGL : public QtViewerTest {
protected:
    void SetUp() override
    {
        if (QGuiApplication::platformName() != QLatin1String("xcb"))
            GTEST_SKIP() << "needs an X server";
        QtViewerTest::SetUp();
        if (!IsSkipped() && viewer->getDrawing() != SoQtRenderArea::WINDOW_GL)
            GTEST_SKIP() << "no OpenGL 3.3 in windows here";
    }

    /// What stands on the screen where the scene is.
    QImage onScreen(QWidget* widget) const
    {
        const QPoint at = widget->mapToGlobal(QPoint(0, 0));
        return widget->screen()
            ->grabWindow(0, at.x(), at.y(), widget->width(), widget->height())
            .toImage();
    }
    bool showsSoon(QWidget* widget, const QColor& color, double least) const
    {
        return support::passUntil([&] { return shareOf(onScreen(widget), color) > least; });
    }
};

} // namespace

TEST_F(WindowGL, ShowsTheSceneOnTheScreen)
{
    EXPECT_TRUE(showsSoon(surface(), Qt::green, 0.1));
    scene.material->diffuseColor.setValue(SbColor(0, 0, 1));
    EXPECT_TRUE(showsSoon(surface(), Qt::blue, 0.1));
    EXPECT_GT(shareOf(viewer->grabImage(), Qt::blue), 0.1);
}

TEST_F(WindowGL, MouseMovesTheCamera)
{
    const SbRotation before = camera().orientation.getValue();
    drag(Qt::LeftButton, QPoint(40, 10));
    EXPECT_FALSE(camera().orientation.getValue().equals(before, 0.01f));
    const std::uint64_t frames = viewer->getFrameCount();
    wheel(middle(), -1200);
    EXPECT_TRUE(support::passUntil([&] { return viewer->getFrameCount() > frames; }));
    EXPECT_TRUE(support::passUntil([&] { return shareOf(onScreen(surface()), Qt::green) < 0.1; }));
}

TEST_F(WindowGL, FollowsTheSizeOfTheWindow)
{
    viewer->getWidget()->resize(300, 120);
    EXPECT_TRUE(support::passUntil([&] { return surface()->height() == 120; }));
    viewer->viewAll();
    const QImage picture = viewer->grabImage();
    EXPECT_EQ(picture.height(), 120);
    EXPECT_GT(shareOf(picture, Qt::green), 0.05);
}

/// Moving to another window ends the context that all buffers belong to.
TEST_F(WindowGL, SurvivesTheLossOfItsContext)
{
    QWidget other;
    auto* layout = new QVBoxLayout(&other);
    other.resize(200, 160);
    other.move(300, 0);
    other.show();
    ASSERT_TRUE(support::passUntilExposed(&other));
    for (int i = 0; i < 3; ++i) {
        layout->addWidget(viewer->getWidget());
        viewer->show();
        EXPECT_TRUE(showsSoon(surface(), Qt::green, 0.05)) << "round " << i;
        viewer->getWidget()->setParent(nullptr);
        viewer->show();
        ASSERT_TRUE(support::passUntilExposed(viewer->getWidget()));
        EXPECT_TRUE(showsSoon(surface(), Qt::green, 0.05)) << "round " << i;
    }
}

TEST_F(WindowGL, TakesAnotherNumberOfSamples)
{
    for (const int samples : {1, 8, 4}) {
        const QPointer<QWidget> before = surface();
        viewer->setNumSamples(samples);
        EXPECT_FALSE(before) << "another widget";
        EXPECT_TRUE(showsSoon(surface(), Qt::green, 0.1)) << samples;
    }
    const SbRotation before = camera().orientation.getValue();
    drag(Qt::LeftButton, QPoint(40, 10));
    EXPECT_FALSE(camera().orientation.getValue().equals(before, 0.01f));
}

TEST_F(WindowGL, ShowsPicturesForTwoEyes)
{
    scene.material->diffuseColor.setValue(SbColor(1, 1, 1));
    viewer->getGuiViewer()->setEyeSeparation(0.3f);
    viewer->getGuiViewer()->setStereo(true);
    const QImage both = viewer->grabImage();
    EXPECT_GT(shareOf(both, Qt::white), 0.02);
    EXPECT_GT(shareOf(both, Qt::red), 0.005);
    EXPECT_GT(shareOf(both, Qt::cyan), 0.005);
    viewer->getGuiViewer()->setStereo(false);
    EXPECT_LT(shareOf(viewer->grabImage(), Qt::red), 0.001);
}

TEST_F(WindowGL, TwoViewersShowOneScene)
{
    auto second = std::make_unique<SoQtExaminerViewer>(nullptr, "second");
    second->setSceneGraph(scene.root.get());
    second->getWidget()->setGeometry(400, 0, 200, 160);
    second->show();
    ASSERT_TRUE(support::passUntilExposed(second->getWidget()));
    EXPECT_TRUE(showsSoon(second->getRenderWidget(), Qt::green, 0.1));
    scene.material->diffuseColor.setValue(SbColor(1, 0, 0));
    EXPECT_TRUE(showsSoon(second->getRenderWidget(), Qt::red, 0.1));
    EXPECT_TRUE(showsSoon(surface(), Qt::red, 0.1));
    second.reset();
    scene.material->diffuseColor.setValue(SbColor(0, 0, 1));
    EXPECT_TRUE(showsSoon(surface(), Qt::blue, 0.1));
}

TEST_F(WindowGL, WindowAndOffscreenContextsLiveTogether)
{
    ASSERT_TRUE(SoOffscreenContext::shared().isValid());
    SoOffscreenRenderer renderer(SbViewportRegion(32, 32));
    renderer.setDefaultCamera(true);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(renderer.render(scene.root.get()));
        EXPECT_TRUE(viewer->redraw());
        const unsigned char* p = renderer.getBuffer() + 3 * (16 * 32 + 16);
        EXPECT_GT(p[1], 200);
        EXPECT_LT(p[0], 20);
        EXPECT_GT(shareOf(viewer->grabImage(), Qt::green), 0.1);
    }
}

namespace {

/// How much of the line there is in a picture of what is green or black; its edges are soft.
double blueIn(const QImage& image)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += image.pixelColor(x, y).blueF();
    return sum;
}

} // namespace

/// The window's depths have several samples a pixel, and a stencil beside them.
TEST_F(WindowGL, OutlinesWithTheDepthsOfTheWindow)
{
    const QColor line(0, 230, 255);
    const SoRef<SoPath> path(new SoPath(scene.root.get()));
    path->append(scene.cube, scene.root->findChild(scene.cube));
    EXPECT_LE(shareOf(viewer->grabImage(), line), 0);
    SoInspectorViews::setOutlined(path.get());
    EXPECT_TRUE(showsSoon(surface(), line, 0.003)) << "it asks for a redraw";
    const double open = blueIn(viewer->grabImage());

    auto* front = new SoSeparator;
    auto* place = new SoTranslation;
    place->translation.setValue(0, 0, 1.2f);
    auto* screen = new SoCube;
    screen->width.setValue(6);
    screen->height.setValue(6);
    screen->depth.setValue(0.1f);
    front->addChild(place);
    front->addChild(screen);
    scene.root->addChild(front);
    const double hidden = blueIn(viewer->grabImage());
    EXPECT_LT(hidden, 0.7 * open);
    EXPECT_GT(hidden, 0.3 * open);
    SoInspectorViews::setOutlined(nullptr);
    EXPECT_LE(shareOf(viewer->grabImage(), line), 0);
}
