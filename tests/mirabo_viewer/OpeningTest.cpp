// The whole window on the sample scenes, as a user has it.
#include "mirabo/core/LiveInput.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "StandaloneSupport.h"
#include "support/Clock.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/gui/SoSceneManager.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/qt/SoQtExaminerViewer.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/vrml/SoVRMLBox.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLShape.h>

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
TEST_F(Opening, OutlinesTheOccurrenceOfAKitsPart)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* kit = new SoShapeKit;
    ASSERT_TRUE(kit->setPart("shape", new SoCube));
    auto* shift = new SoTranslation;
    shift->translation.setValue(5, 0, 0);
    for (SoNode* child : std::initializer_list<SoNode*>{kit, shift, kit})
        root->addChild(child);
    viewer->setScene(root.get(), true);
    const SoNode* part = kit->getPart("shape");
    for (const SoNode* node : std::initializer_list<const SoNode*>{kit, part}) {
        float left = -1;
        for (SoTreeViewItem* row : tree()->occurrencesOf(node)) {
            tree()->goToItem(row);
            support::flush();
            ASSERT_EQ(viewer->getSelectionNode()->getNumSelected(), 1);
            SoPath* path = viewer->getSelectionNode()->getPath(0);
            EXPECT_EQ(path->getTail(), node);
            SoGetBoundingBoxAction box{SbViewportRegion()};
            box.apply(path); // what the outline is drawn around
            EXPECT_EQ(box.getBoundingBox().getMin()[0], left);
            left += 5;
        }
    }
}

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

// Every occurrence of a shared node has a row; shapes of VRML97 worlds are held by fields.
TEST_F(Opening, ChoosesTheOccurrenceThatWasPicked)
{
    const auto pick = [this](std::initializer_list<int> way, SoNode* geometry = nullptr) {
        SoSelection* selection = viewer->getSelectionNode();
        const SoRef<SoPath> path(new SoPath(selection));
        path->append(0);
        for (const int at : way)
            path->append(at);
        if (geometry)
            path->append(geometry, 0);
        selection->applyPick(path.get(), false);
        support::flush();
    };
    const auto row = [this](std::initializer_list<int> way) {
        QTreeWidgetItem* item = tree()->topLevelItem(0);
        for (const int at : way)
            item = item->child(at);
        return item;
    };
    const auto* selection = viewer->getSelectionNode();
    const SoRef<SoSeparator> scene(new SoSeparator);
    const SoRef<SoNode> cube(new SoCube);
    for (int i = 0; i < 2; ++i) {
        auto* group = new SoSeparator;
        group->addChild(cube.get());
        group->addChild(cube.get());
        scene->addChild(group);
    }
    viewer->setScene(scene.get(), true);
    support::flush();
    pick({1, 1});
    EXPECT_EQ(tree()->currentItem(), row({1, 1}));
    pick({0, 1});
    EXPECT_EQ(tree()->currentItem(), row({0, 1}));
    ASSERT_EQ(outlined(), 1);
    EXPECT_EQ(selection->getPath(0)->getIndex(2), 0) << "that occurrence alone";

    const SoRef<SoVRMLGroup> world(new SoVRMLGroup);
    auto* shape = new SoVRMLShape;
    auto* box = new SoVRMLBox;
    shape->geometry = box;
    world->addChild(shape);
    viewer->setScene(world.get(), true);
    support::flush();
    pick({0}, box);
    EXPECT_EQ(static_cast<SoTreeViewItem*>(tree()->currentItem())->getNode(), box);
    ASSERT_EQ(outlined(), 1);
    EXPECT_EQ(selection->getPath(0)->getTail(), shape);
}
