#include "GuiTestTools.h"

#include <kalmyr/base/SoPreferences.h>
#include <kalmyr/gui/SoLibMirabo.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

namespace {

/// Exports what the inspector does, and remembers what it was started on.
constexpr const char* kSource = R"(
    static void *s_started;
    void _startNode(void *node) { s_started = node; }
    void _startSceneManager(void *manager) { s_started = manager; }
    void _startRenderArea(void *area) { s_started = area; }
    void _startStandalone(int argc, char **argv) { (void)argc; (void)argv; }
    void _stop(void) { s_started = 0; }
    _Bool _isRunning(void) { return s_started != 0; }
    _Bool _processEvents(void) { return s_started != 0; }
    void _setPickAction(void *region, int cursor) { (void)region; (void)cursor; }
    void _setSceneGraph(void *node) { (void)node; }
)";

class SoLibMiraboTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        kalmyr::initGui();
        s_folder = std::filesystem::temp_directory_path()
                   / ("kalmyr_gui_test_" + std::to_string(getpid()));
        std::filesystem::create_directories(s_folder);
        std::ofstream(s_folder / "fake.c") << kSource;
        const std::string library = (s_folder / "libFake.so").string();
        const std::string command =
            "cc -shared -fPIC -o " + library + " " + (s_folder / "fake.c").string();
        s_built = std::system(command.c_str()) == 0;
        SoPreferences::setValue("KMR_MIRABO_LIBRARY", library.c_str());
    }
    static void TearDownTestSuite()
    {
        SoPreferences::removeValue("KMR_MIRABO_LIBRARY");
        std::filesystem::remove_all(s_folder);
    }
    void SetUp() override
    {
        if (!s_built)
            GTEST_SKIP() << "needs a C compiler";
    }
    void TearDown() override { SoLibMirabo::finish(); }

    static std::filesystem::path s_folder;
    static bool s_built;
};

std::filesystem::path SoLibMiraboTest::s_folder;
bool SoLibMiraboTest::s_built = false;

TEST_F(SoLibMiraboTest, LoadsAndLetsGoAgain)
{
    EXPECT_FALSE(SoLibMirabo::isAvailable());
    for (int round = 0; round < 2; ++round) {
        SoLibMirabo* hooks = SoLibMirabo::instance();
        ASSERT_NE(hooks, nullptr);
        EXPECT_EQ(SoLibMirabo::instance(), hooks);
        EXPECT_TRUE(SoLibMirabo::isAvailable());
        EXPECT_FALSE(hooks->m_mirabo_isRunning());
        const SoRef<SoCube> node(new SoCube);
        hooks->m_mirabo_startNode(node.get());
        EXPECT_TRUE(hooks->m_mirabo_isRunning());
        hooks->m_mirabo_stop();
        SoLibMirabo::finish();
        EXPECT_FALSE(SoLibMirabo::isAvailable());
    }
}

TEST_F(SoLibMiraboTest, ShortcutKeyOpensTheInspectorOnTheRenderArea)
{
    const SoRef<SoGuiRenderArea> area(new SoGuiExaminerViewer);
    auto key = keyPress(SoLibMirabo::getShortcutValue());
    EXPECT_EQ(key.getKey(), SoKeyboardEvent::F12);
    key.setState(SoButtonEvent::UP);
    area->processEvent(&key);
    EXPECT_FALSE(SoLibMirabo::isAvailable()) << "a release is no shortcut";
    key.setState(SoButtonEvent::DOWN);
    EXPECT_TRUE(area->processEvent(&key));
    ASSERT_TRUE(SoLibMirabo::isAvailable());
    EXPECT_TRUE(SoLibMirabo::instance()->m_mirabo_isRunning());
    SoLibMirabo::instance()->m_mirabo_stop();

    SoLibMirabo::setShortcutValue(SoKeyboardEvent::F2);
    area->processEvent(&key);
    EXPECT_FALSE(SoLibMirabo::instance()->m_mirabo_isRunning());
    const auto other = keyPress(SoKeyboardEvent::F2);
    area->processEvent(&other);
    EXPECT_TRUE(SoLibMirabo::instance()->m_mirabo_isRunning());
    SoLibMirabo::instance()->m_mirabo_stop();
    SoLibMirabo::setShortcutValue(SoKeyboardEvent::F12);
}

} // namespace
