// The whole window on the sample scenes, as a user has it.
#include "mirabo/core/LiveInput.h"
#include "StandaloneSupport.h"
#include "support/Clock.h"

#include <kalmyr/gui/SoSceneManager.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>

#include <QDockWidget>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

const QString kScenes = QStringLiteral(MIRABO_SOURCE_DIR "/examples/scenes/");

class Opening : public StandaloneTest {
protected:
    int outlined() const { return viewer->getSelectionNode()->getNumSelected(); }
};

} // namespace

TEST_F(Opening, OutlinesNothingUntilARowIsChosen)
{
    for (const char* name : {"hello.ky", "lights.ky"}) {
        ASSERT_TRUE(viewer->openSceneFile(kScenes + QLatin1String(name)));
        support::flush();
        EXPECT_EQ(outlined(), 0) << name;
        ASSERT_TRUE(tree()->topLevelItem(0));
        tree()->setCurrentItem(tree()->topLevelItem(0)->child(0));
        EXPECT_EQ(outlined(), 1) << name;
    }
}

// A host's timer may run whenever the window is painted while a file is being read.
TEST_F(Opening, ReadsOneFileAtATime)
{
    const QString lights = kScenes + "lights.ky";
    const support::Clock clock;
    LiveInput input(viewer->getTreeDock()->window());
    support::Clock::advance(1); // from now on the progress is shown
    ASSERT_TRUE(input.openFile((kScenes + "hello.ky").toUtf8().constData()));
    int asked = 0;
    QTimer::singleShot(0, viewer, [&] {
        ++asked;
        EXPECT_TRUE(viewer->isReading());
        EXPECT_FALSE(viewer->openSceneFile(lights));
        EXPECT_FALSE(viewer->openDroppedFile(lights));
        SoMiraboImpl::stop(); // waits, too
        EXPECT_TRUE(viewer->isReading());
    });
    EXPECT_TRUE(viewer->readScene(input));
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(viewer->getCurrentFile().endsWith("hello.ky"));
    EXPECT_EQ(SoMiraboImpl::processEvents(), 0) << "now it ends";
    EXPECT_FALSE(SoMiraboViewer::exists());
}

// An extension may hold the scene manager of the viewer and draw by it after the end.
TEST_F(Opening, TakesItsWayOfDrawingBackFromTheSceneManager)
{
    const SoRef<SoSceneManager> manager(viewer->getExaminerViewer()->getSceneManager());
    SoGLRenderAction* outlining = manager->getGLRenderAction();
    SoMiraboImpl::stop();
    SoGLRenderAction* now = manager->getGLRenderAction();
    EXPECT_NE(now, outlining);
    manager->setGLRenderAction(nullptr);
    EXPECT_EQ(now, manager->getGLRenderAction()) << "the manager's own";
}
