#include "QtTestTools.h"
#include "support/Passes.h"

#include <kalmyr/gui/SoGuiRenderArea.h>
#include <kalmyr/gui/SoSceneManager.h>

#include <QVBoxLayout>

namespace {

class RenderAreaTest : public testing::Test {
protected:
    void SetUp() override
    {
        SoQt::init(nullptr);
        if (!SoOffscreenContext::shared().isValid())
            GTEST_SKIP() << SoOffscreenContext::shared().getError();
    }
    void TearDown() override { SoQt::finish(); }
};

} // namespace

TEST_F(RenderAreaTest, DrawsWithoutADisplay)
{
    SoQtRenderArea area(nullptr, "area");
    EXPECT_EQ(area.getDrawing(), SoQtRenderArea::IMAGE);
    area.setBackgroundColor(SbColor(1, 0, 0));
    FlatCube scene; // fills the picture: nothing sets a camera
    area.getWidget()->resize(90, 70);
    EXPECT_DOUBLE_EQ(shareOf(area.grabImage(), Qt::red), 1);
    area.setSceneGraph(scene.root.get());
    EXPECT_TRUE(area.isRedrawPending());
    const QImage picture = area.grabImage();
    EXPECT_EQ(picture.size(), QSize(90, 70));
    EXPECT_GT(shareOf(picture, Qt::green), 0.9);
    EXPECT_FALSE(area.isRedrawPending());
    EXPECT_EQ(area.getGuiRenderArea()->getSize(), SbVec2i32(90, 70));
}

TEST_F(RenderAreaTest, DrawsAgainOnceForManyChanges)
{
    SoQtRenderArea area(nullptr, "area");
    FlatCube scene;
    area.setSceneGraph(scene.root.get());
    area.getWidget()->resize(60, 40);
    area.show();
    ASSERT_TRUE(support::passUntilExposed(area.getWidget()));
    ASSERT_TRUE(support::passUntil([&] { return !area.isRedrawPending(); }));
    const std::uint64_t before = area.getFrameCount();
    for (int i = 0; i < 50; ++i)
        scene.material->diffuseColor.setValue(SbColor(0, 0, i % 2 ? 1 : 0.5f));
    ASSERT_TRUE(support::passUntil([&] { return area.getFrameCount() > before; }));
    support::flush();
    EXPECT_EQ(area.getFrameCount(), before + 1);
    EXPECT_GT(shareOf(area.getWidget()->grab().toImage(), Qt::blue), 0.9);
}

TEST_F(RenderAreaTest, AreasAreIndependentOfEachOther)
{
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    SoQtRenderArea one(&window, "one");
    auto two = std::make_unique<SoQtRenderArea>(&window, "two");
    layout->addWidget(one.getWidget());
    layout->addWidget(two->getWidget());
    FlatCube red(SbColor(1, 0, 0));
    FlatCube green;
    one.setSceneGraph(red.root.get());
    two->setSceneGraph(green.root.get());
    window.resize(80, 120);
    window.show();
    ASSERT_TRUE(support::passUntilExposed(&window));
    EXPECT_GT(shareOf(one.grabImage(), Qt::red), 0.9);
    EXPECT_GT(shareOf(two->grabImage(), Qt::green), 0.9);
    two->setSceneGraph(red.root.get()); // one scene in both
    EXPECT_GT(shareOf(two->grabImage(), Qt::red), 0.9);
    two.reset();
    EXPECT_EQ(window.findChild<QWidget*>("two"), nullptr);
    red.material->diffuseColor.setValue(SbColor(0, 0, 1));
    EXPECT_GT(shareOf(one.grabImage(), Qt::blue), 0.9);
}

TEST_F(RenderAreaTest, OutlivesItsWidget)
{
    auto* window = new QWidget;
    SoQtRenderArea area(window, "area");
    FlatCube scene;
    area.setSceneGraph(scene.root.get());
    EXPECT_TRUE(area.redraw());
    delete window;
    EXPECT_EQ(area.getWidget(), nullptr);
    EXPECT_EQ(area.getRenderWidget(), nullptr);
    scene.cube->width.setValue(1); // schedules into nothing
    area.show();
    support::flush();
    EXPECT_FALSE(area.redraw());
    EXPECT_TRUE(area.grabImage().isNull());
    EXPECT_FALSE(area.isRedrawPending());
}

TEST_F(RenderAreaTest, LeavesItsSceneManagerToWhoeverHoldsIt)
{
    auto area = std::make_unique<SoQtRenderArea>(nullptr, "area");
    FlatCube scene;
    area->setSceneGraph(scene.root.get());
    const SoRef<SoGuiRenderArea> kept(area->getGuiRenderArea());
    area.reset();
    scene.cube->width.setValue(1);
    support::flush();
    EXPECT_EQ(kept->getSceneGraph(), scene.root.get());
}
