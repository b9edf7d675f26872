#include "support/ErrorGuard.h"
#include "support/HostScene.h"

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/events/SoKeyboardEvent.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/gui/SoGuiInit.h>
#include <kalmyr/gui/SoLibMirabo.h>
#include <kalmyr/gui/SoSceneManagerImpl.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include <unistd.h>

#include <gtest/gtest.h>

namespace {

/// A host that knows nothing of Qt or of the inspector: the toolkit finds the real library.
class HookTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        const auto store =
            std::filesystem::temp_directory_path() / ("mirabo_hook_" + std::to_string(getpid()));
        std::filesystem::create_directories(store);
        setenv("XDG_CONFIG_HOME", store.c_str(), 1);
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        kalmyr::initGui();
    }
    static void TearDownTestSuite() { std::filesystem::remove_all(getenv("XDG_CONFIG_HOME")); }
    void TearDown() override { SoLibMirabo::finish(); }
};

TEST_F(HookTest, LoadsStartsAndLetsGoAgainAndAgain)
{
    const SoRef<SoSeparator> scene = support::hostScene();
    for (int round = 0; round < 6; ++round) {
        EXPECT_FALSE(SoLibMirabo::isAvailable());
        SoLibMirabo* hooks = SoLibMirabo::instance();
        ASSERT_NE(hooks, nullptr);
        hooks->m_mirabo_startNode(scene.get());
        EXPECT_TRUE(hooks->m_mirabo_isRunning());
        for (int turn = 0; turn < 5; ++turn)
            EXPECT_TRUE(hooks->m_mirabo_processEvents());
        scene->addChild(new SoCube);
        EXPECT_TRUE(hooks->m_mirabo_processEvents());
        hooks->m_mirabo_stop();
        EXPECT_FALSE(hooks->m_mirabo_processEvents());
        SoLibMirabo::finish();
        scene->removeChild(0); // no code of the tool hears of it
    }
    EXPECT_EQ(scene->getRefCount(), 1);
}

TEST_F(HookTest, ShortcutOpensTheInspectorBesideAHostThatKeepsDrawing)
{
    const SoRef<SoGuiExaminerViewer> viewer(new SoGuiExaminerViewer);
    viewer->setSize(SbVec2i32(64, 48));
    viewer->setSceneGraph(support::hostScene().get());
    SoOffscreenRenderer renderer(viewer->getSceneManager()->getViewportRegion());
    SoKeyboardEvent key;
    key.setKey(SoLibMirabo::getShortcutValue());
    key.setState(SoButtonEvent::DOWN);
    EXPECT_TRUE(viewer->processEvent(&key));
    ASSERT_TRUE(SoLibMirabo::isAvailable());
    SoLibMirabo* hooks = SoLibMirabo::instance();
    EXPECT_TRUE(hooks->m_mirabo_isRunning());
    EXPECT_EQ(viewer->getSceneManager()->getImpl()->getOwnMirabo(), 1);
    for (int frame = 0; frame < 5; ++frame) {
        EXPECT_TRUE(hooks->m_mirabo_processEvents());
        EXPECT_TRUE(viewer->renderOffscreen(renderer));
    }
    EXPECT_TRUE(viewer->processEvent(&key)) << "pressed again: it runs already";
    hooks->m_mirabo_stop();
    EXPECT_EQ(viewer->getSceneManager()->getImpl()->getOwnMirabo(), 0);
    EXPECT_TRUE(viewer->renderOffscreen(renderer));
}

} // namespace
