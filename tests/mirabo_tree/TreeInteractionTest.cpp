#include "TreeTestScene.h"

#include "mirabo/core/ActionRegistry.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/TreeContextMenu.h"
#include "mirabo/tree/TreeEditCommand.h"

#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>

#include <QContextMenuEvent>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QtTest>

#include <functional>
#include <utility>

namespace {

/// A tree with its rows in sight, to be worked with mouse and keys.
class TreeInteraction : public TreeTest {
protected:
    TreeInteraction()
    {
        view.topologyManager().recentChanges().setQuietTime(0);
        group = new SoSeparator;
        material = new SoMaterial;
        cube = new SoCube;
        group->addChild(material);
        root->addChild(group);
        root->addChild(cube);
        view.show();
        view.expandAll();
        pass();
    }
    QPoint pointOf(const SoTreeViewItem* item) const
    {
        return view.visualItemRect(const_cast<SoTreeViewItem*>(item)).center();
    }
    void press(const SoNode* node, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mousePress(view.viewport(), Qt::LeftButton, modifiers, pointOf(row(node)));
    }
    void release() { QTest::mouseRelease(view.viewport(), Qt::LeftButton); }
    /// Drops what was pressed last; whether the tree took it.
    bool drop(const SoNode* target, const QString& text = "Mirabo/Drop")
    {
        QMimeData data;
        data.setText(text);
        const QPoint point = pointOf(row(target));
        QDragEnterEvent enter(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view.viewport(), &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent event(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view.viewport(), &event);
        return event.isAccepted();
    }

    SoSeparator* group;
    SoMaterial* material;
    SoCube* cube;
};

} // namespace

TEST_F(TreeInteraction, BearsThatRowsGoWhileTheirChoiceIsAnnounced)
{
    const SoRef<SoGroup> other(new SoGroup);
    const SoRef<SoNode> kept[] = {SoRef<SoNode>(group), SoRef<SoNode>(cube)};
    const std::function<void()> deeds[] = {
        [&] { root->removeChild(cube); },
        [&] { root->removeAllChildren(); },
        [&] { root->insertChild(new SoCube, 0); },
        [&] { root->removeChild(group); },
        [&] { view.setSceneGraph(other.get()); },
        [&] {
            view.setSceneGraph(nullptr);
            view.setSceneGraph(root.get());
        },
        [&] { // a choice within the choice
            view.setCurrentItem(row(group));
            root->removeAllChildren();
            view.setSceneGraph(other.get());
        },
    };
    const std::function<void()> choices[] = {
        [&] { view.setCurrentItem(row(cube)); },
        [&] {
            press(cube);
            release();
        },
        [&] {
            view.setCurrentItem(row(material));
            QTest::keyClick(&view, Qt::Key_Down);
        },
    };
    for (const auto& choose : choices) {
        for (const auto& deed : deeds) {
            root->removeAllChildren();
            root->addChild(group);
            root->addChild(cube);
            view.setSceneGraph(root.get());
            view.expandAll();
            pass();
            bool done = false;
            const auto connection = QObject::connect(
                &view, &SoMiraboTreeView::itemChosen, &view, [&](const SoTreeViewItem* item) {
                    if (item->getNode() == cube && !std::exchange(done, true))
                        deed();
                });
            choose();
            EXPECT_TRUE(done);
            QObject::disconnect(connection);
            EXPECT_EQ(check(), "");
            // The model looks at every index that it tracks when rows come and go.
            if (const int at = root->findChild(cube); at >= 0)
                root->removeChild(at);
            view.setSceneGraph(other.get());
            view.setSceneGraph(root.get());
            pass();
            root->insertChild(new SoCube, 0);
            root->removeAllChildren();
            EXPECT_EQ(check(), "");
        }
    }
}

TEST_F(TreeInteraction, ChoosesByMouseAndTellsTheShiftKey)
{
    QSignalSpy chosen(&view, &SoMiraboTreeView::itemChosen);
    press(cube);
    release();
    EXPECT_EQ(view.getCurrentNode(), cube);
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_FALSE(chosen[0][1].toBool());
    press(material, Qt::ShiftModifier);
    release();
    ASSERT_EQ(chosen.size(), 2);
    EXPECT_TRUE(chosen[1][1].toBool());
}

TEST_F(TreeInteraction, AsksForAMoveWhenARowIsDropped)
{
    QSignalSpy moves(&view, &SoMiraboTreeView::moveRequested);
    press(cube);
    EXPECT_TRUE(drop(group));
    ASSERT_EQ(moves.size(), 1);
    EXPECT_EQ(moves[0][0].value<SoTreeViewItem*>(), row(cube));
    EXPECT_EQ(moves[0][1].value<SoTreeViewItem*>(), row(group));
    EXPECT_FALSE(moves[0][2].toBool());
    drop(group); // nothing is dragged any more
    EXPECT_EQ(moves.size(), 1);

    press(group);
    drop(group);
    press(group);
    drop(material); // below itself
    press(cube);
    EXPECT_FALSE(drop(group, "Mirabo/Drop "));
    EXPECT_EQ(moves.size(), 1);

    QTest::keyPress(&view, Qt::Key_Space);
    press(cube);
    drop(material);
    QTest::keyRelease(&view, Qt::Key_Space);
    ASSERT_EQ(moves.size(), 2);
    EXPECT_TRUE(moves[1][2].toBool());
    release();
}

TEST_F(TreeInteraction, DropsNothingThatDiedMeanwhile)
{
    QSignalSpy moves(&view, &SoMiraboTreeView::moveRequested);
    press(cube);
    root->removeChild(1);
    EXPECT_TRUE(drop(group));
    EXPECT_EQ(moves.size(), 0);
    release();
    EXPECT_EQ(check(), "");
}

TEST_F(TreeInteraction, DragsNothingWhenPressedBesideTheRows)
{
    QSignalSpy moves(&view, &SoMiraboTreeView::moveRequested);
    press(cube);
    release();
    const QPoint beside(5, view.viewport()->height() - 5);
    ASSERT_FALSE(view.itemAt(beside));
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, beside);
    EXPECT_EQ(view.context().pressed, nullptr);
    EXPECT_TRUE(drop(group));
    EXPECT_EQ(moves.size(), 0);
    release();
}

TEST_F(TreeInteraction, AnswersItsKeys)
{
    QSignalSpy deletions(&view, &SoMiraboTreeView::deleteRequested);
    QSignalSpy expansions(&view, &SoMiraboTreeView::expandAllRequested);
    QSignalSpy help(&view, &SoMiraboTreeView::helpRequested);
    view.setCurrentItem(row(cube));
    QTest::keyPress(&view, Qt::Key_Delete);
    EXPECT_EQ(deletions.size(), 0);
    QTest::keyRelease(&view, Qt::Key_Delete);
    EXPECT_EQ(deletions.size(), 1);
    QTest::keyClick(&view, Qt::Key_Asterisk);
    EXPECT_EQ(expansions.size(), 1);
    QTest::keyClick(&view, Qt::Key_F1);
    ASSERT_EQ(help.size(), 1);
    EXPECT_TRUE(help[0][0].toUrl().toString().contains("class_so_cube"));
    QTest::keyClick(&view, Qt::Key_Up);
    EXPECT_EQ(view.getCurrentNode(), material);

    view.setSceneGraph(nullptr);
    QTest::keyClick(&view, Qt::Key_Delete);
    QTest::keyClick(&view, Qt::Key_F1);
    EXPECT_EQ(deletions.size(), 1);
}

TEST_F(TreeInteraction, OffersInTheMenuWhatApplies)
{
    TreeContextMenu& menu = view.contextMenu();
    const auto offers = [&menu](const char* text) {
        const QAction* entry = menu.entry(text);
        return entry && entry->isVisible() && entry->isEnabled();
    };
    auto* extra = new QMenu("Extra", &view);
    SoType asked;
    view.setContextMenuExtension([&](SoType type) {
        asked = type;
        return type == SoCube::getClassTypeId() && extra ? QList<QMenu*>{extra} : QList<QMenu*>();
    });
    view.onCustomContextMenu(pointOf(row(cube)));
    EXPECT_EQ(asked, SoCube::getClassTypeId());
    EXPECT_TRUE(offers("Add to Node Overview") && offers("Extra"));
    EXPECT_FALSE(offers("Expand All")) << "nothing is below it";
    EXPECT_TRUE(offers("Set &Ignored/Enable"));
    EXPECT_FALSE(offers("Ne&xt Reference") || offers("Add Node"));
    menu.close();

    delete extra;
    extra = nullptr;
    root->addChild(cube);
    pass();
    mirabo::ActionRegistry actions;
    menu.setActions(&actions);
    int additions = 0;
    bool mayAdd = true;
    actions.add(mirabo::ActionId::AddNode, &view,
                {[&additions] { ++additions; }, [&mayAdd] { return mayAdd; }});
    view.onCustomContextMenu(pointOf(row(cube)));
    EXPECT_FALSE(offers("Extra"));
    EXPECT_TRUE(offers("Ne&xt Reference") && offers("Show &All References"));
    EXPECT_FALSE(offers("&Hide All References") || offers("&Save scene graph"));
    EXPECT_TRUE(offers("Add Node"));
    menu.entry("Add Node")->trigger();
    EXPECT_EQ(additions, 1);
    menu.close();
    mayAdd = false;
    view.onCustomContextMenu(pointOf(view.rootItem()));
    EXPECT_FALSE(offers("Set &Ignored/Enable") || offers("Add Node"));
    menu.close();
}

TEST_F(TreeInteraction, OpensTheMenuForEnabledRowsOnly)
{
    const auto openAt = [this](const QPoint& point) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, point,
                                view.viewport()->mapToGlobal(point));
        QCoreApplication::sendEvent(view.viewport(), &event);
        const bool isOpen = view.contextMenu().isVisible();
        view.contextMenu().close();
        return isOpen;
    };
    view.setCurrentItem(row(material));
    EXPECT_FALSE(openAt(QPoint(5, view.viewport()->height() - 5))) << "below the rows";
    EXPECT_TRUE(openAt(pointOf(row(cube))));
    EXPECT_EQ(view.getCurrentNode(), cube);
    QObject::connect(&view, &SoMiraboTreeView::commandReady, [](mirabo::TreeEditCommand* command) {
        command->execute();
        delete command;
    });
    view.ignoreEnable();
    ASSERT_TRUE(row(cube)->isDisabledNode());
    EXPECT_FALSE(openAt(pointOf(row(cube))));
    row(cube)->setDisabledNode(false);
}

TEST_F(TreeInteraction, OpensTheMenuOfTheCurrentRowByKey)
{
    for (int i = 0; i < 100; ++i)
        root->addChild(new SoCube);
    pass();
    SoNode* last = root->getChild(root->getNumChildren() - 1);
    view.setCurrentItem(row(last));
    view.verticalScrollBar()->setValue(0);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(1, 1), QPoint(1, 1));
    QCoreApplication::sendEvent(&view, &event);
    EXPECT_TRUE(view.contextMenu().isVisible());
    EXPECT_EQ(view.context().menuRow, row(last));
    EXPECT_TRUE(
        view.viewport()->rect().contains(view.viewport()->mapFromGlobal(view.contextMenu().pos())));
    view.contextMenu().close();
    view.setSceneGraph(nullptr);
    QCoreApplication::sendEvent(&view, &event);
    EXPECT_FALSE(view.contextMenu().isVisible());
}

TEST_F(TreeInteraction, DoesNothingFromAMenuWhoseRowDied)
{
    mirabo::ActionRegistry actions;
    view.contextMenu().setActions(&actions);
    int additions = 0;
    actions.add(mirabo::ActionId::AddNode, &view, {[&additions] { ++additions; }});
    view.onCustomContextMenu(pointOf(row(cube)));
    ASSERT_TRUE(view.contextMenu().isVisible());
    root->removeChild(1);
    view.contextMenu().entry("Add Node")->trigger();
    EXPECT_EQ(additions, 0);
    pass();
    EXPECT_FALSE(view.contextMenu().isVisible());
}

TEST_F(TreeInteraction, ExploresOneBranchOrAllBelowIt)
{
    auto* inner = new SoSeparator;
    inner->addChild(new SoCube);
    group->addChild(inner);
    view.collapseAll();
    view.setCurrentItem(row(cube));
    EXPECT_FALSE(view.canExplore() || view.canExploreAll()) << "nothing below it";
    view.setCurrentItem(row(group));
    EXPECT_TRUE(view.canExplore());
    view.explore();
    EXPECT_TRUE(row(group)->isExpanded());
    EXPECT_FALSE(row(inner)->isExpanded());
    EXPECT_FALSE(view.canExplore());
    EXPECT_TRUE(view.canExploreAll());
    EXPECT_EQ(view.exploreAll(), 0);
    EXPECT_TRUE(row(inner)->isExpanded());
    EXPECT_FALSE(view.canExploreAll());

    // Up to a number of rows, the uppermost branches first.
    for (int i = 0; i < 10; ++i)
        inner->addChild(new SoSeparator);
    for (int i = 1; i <= 10; ++i)
        for (int k = 0; k < 5; ++k)
            static_cast<SoGroup*>(inner->getChild(i))->addChild(new SoCube);
    view.collapseAll();
    view.setCurrentItem(view.rootItem());
    const auto openBranches = [&] {
        int open = 0;
        for (int i = 1; i <= 10; ++i)
            open += row(inner)->child(i)->isExpanded();
        return open;
    };
    constexpr int kRowsAbove = 2 + 2 + 11;
    EXPECT_EQ(view.exploreAll(kRowsAbove + 4 * 5), 6);
    EXPECT_EQ(openBranches(), 4);
    EXPECT_TRUE(view.canExploreAll());
    EXPECT_EQ(view.exploreAll(1), 5) << "each time at least one";
    EXPECT_EQ(view.exploreAll(), 0);
    EXPECT_EQ(openBranches(), 10);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeInteraction, ShowsTheLastChangeOfAPass)
{
    QSignalSpy chosen(&view, &SoMiraboTreeView::itemChosen);
    cube->width = 3;
    material->shininess.set1Value(0, .5f);
    EXPECT_EQ(view.getCurrentNode(), root.get()); // not inside the change
    pass();
    EXPECT_EQ(view.getCurrentNode(), material);
    EXPECT_EQ(chosen.size(), 1);
    material->shininess.set1Value(0, .6f);
    pass();
    EXPECT_EQ(chosen.size(), 1); // it is current already
    cube->touch();
    pass();
    EXPECT_EQ(view.getCurrentNode(), cube);

    // Additions leave the user alone, removals show where something went.
    view.setCurrentItem(row(material));
    group->addChild(new SoCube);
    pass();
    EXPECT_EQ(view.getCurrentNode(), material);
    group->removeChild(1);
    group->removeChild(0);
    pass();
    EXPECT_EQ(view.getCurrentNode(), group);
}

TEST_F(TreeInteraction, OutlinesWhatChangesAndStaysWhereTheViewerOutlines)
{
    auto mode = SoMiraboTreeView::ShowMode::Outline;
    view.setShowMode([&mode] { return mode; });
    view.setCurrentItem(row(material));
    pass();
    std::vector<const SoNode*> outlined;
    QObject::connect(&view, &SoMiraboTreeView::highlightRequested, &view,
                     [&](const SoPath* path) { outlined.push_back(path->getTail()); });
    QSignalSpy chosen(&view, &SoMiraboTreeView::itemChosen);
    cube->width = 3;
    pass();
    EXPECT_EQ(view.getCurrentNode(), material);
    EXPECT_EQ(outlined, std::vector<const SoNode*>{cube});
    EXPECT_EQ(chosen.size(), 0) << "the panels stay as well";
    press(material); // a click on the current row takes the outline back
    release();
    EXPECT_EQ(outlined.back(), material);
    // What the user asks for is gone to, and a current row that went is replaced.
    view.revealNode(cube);
    EXPECT_EQ(view.getCurrentNode(), cube);
    view.setCurrentItem(row(material));
    group->removeChild(0);
    pass();
    EXPECT_EQ(view.getCurrentNode(), group);
    mode = SoMiraboTreeView::ShowMode::MakeCurrent;
    cube->width = 4;
    pass();
    EXPECT_EQ(view.getCurrentNode(), cube);
}

TEST_F(TreeInteraction, FollowsNoSteadyStreamOfChanges)
{
    view.topologyManager().recentChanges().setQuietTime(60000);
    cube->width = 3; // from the beginning on, too
    pass();
    EXPECT_EQ(view.getCurrentNode(), root.get());
    view.topologyManager().recentChanges().setQuietTime(0);
    cube->width = 4;
    pass();
    EXPECT_EQ(view.getCurrentNode(), cube);
    view.topologyManager().recentChanges().setQuietTime(60000);
    view.setCurrentItem(row(material));
    for (int i = 0; i < 10; ++i) {
        cube->width = static_cast<float>(i);
        pass();
    }
    EXPECT_EQ(view.getCurrentNode(), material);

    view.topologyManager().recentChanges().setQuietTime(0);
    auto* camera = new SoPerspectiveCamera;
    root->addChild(camera);
    camera->heightAngle = 1; // looking around
    pass();
    EXPECT_EQ(view.getCurrentNode(), material);
}

TEST_F(TreeInteraction, FollowsNoStreamOfRemovals)
{
    view.topologyManager().recentChanges().setQuietTime(60000);
    for (int i = 0; i < 10; ++i) {
        group->addChild(new SoCube);
        view.setCurrentItem(row(cube));
        pass();
        group->removeChild(1);
        pass();
        EXPECT_EQ(view.getCurrentNode(), cube) << i;
    }
    // Where the chosen row itself goes there is nothing to be kept.
    view.setCurrentItem(row(material));
    pass();
    group->removeChild(0);
    pass();
    EXPECT_EQ(view.getCurrentNode(), group);
}

TEST_F(TreeInteraction, LeavesAChoiceOfTheSamePass)
{
    group->addChild(new SoCube);
    pass();
    group->removeChild(1);
    view.setCurrentItem(row(cube));
    pass();
    EXPECT_EQ(view.getCurrentNode(), cube);
    view.setCurrentItem(row(material));
    cube->width = 7;
    pass();
    EXPECT_EQ(view.getCurrentNode(), material);
    cube->width = 8;
    pass();
    EXPECT_EQ(view.getCurrentNode(), cube);
}

TEST_F(TreeInteraction, StaysPutUnderTheUsersHandsAndItsOwnHighlight)
{
    for (int i = 0; i < 100; ++i)
        root->addChild(new SoCube);
    pass();
    SoNode* far = root->getChild(90);
    ASSERT_TRUE(view.context().autoHighlight);
    const auto highlighter =
        QObject::connect(&view, &SoMiraboTreeView::highlightRequested, &view,
                         [far](const SoPath*) { static_cast<SoCube*>(far)->height = 5; });
    press(cube);
    const int scrolled = view.verticalScrollBar()->value();
    for (int i = 0; i < 100000; ++i)
        static_cast<SoCube*>(far)->width = static_cast<float>(i);
    root->removeChild(101);
    pass();
    EXPECT_EQ(view.getCurrentNode(), cube);
    EXPECT_EQ(view.verticalScrollBar()->value(), scrolled);
    release();
    pass();
    EXPECT_EQ(view.getCurrentNode(), cube); // nor afterwards
    QObject::disconnect(highlighter);

    view.onCustomContextMenu(pointOf(row(cube)));
    far->touch();
    pass();
    EXPECT_EQ(view.getCurrentNode(), cube);
    view.contextMenu().close();

    QObject::connect(&view, &SoMiraboTreeView::highlightRequested, &view,
                     [far](const SoPath*) { far->touch(); });
    view.setCurrentItem(row(material));
    pass();
    EXPECT_EQ(view.getCurrentNode(), material);
    far->touch();
    pass();
    EXPECT_EQ(view.getCurrentNode(), far);
}

TEST_F(TreeInteraction, SurvivesTheDeathOfTheCurrentNode)
{
    view.setCurrentItem(row(material));
    QSignalSpy chosen(&view, &SoMiraboTreeView::itemChosen);
    root->removeChild(group);
    EXPECT_EQ(check(), "");
    view.grab();
    pass();
    ASSERT_GE(chosen.size(), 1);
    EXPECT_NE(view.getCurrentNode(), nullptr);
    root.reset();
    pass();
    EXPECT_EQ(view.getCurrentNode(), nullptr);
}

TEST_F(TreeInteraction, LeavesTheRowAloneWhoseNameIsEdited)
{
    QLineEdit name;
    name.show();
    view.setCurrentItem(row(material));
    name.activateWindow();
    name.setFocus();
    pass();
    ASSERT_EQ(QApplication::focusWidget(), &name);
    cube->width = 3;
    root->removeChild(1);
    pass();
    EXPECT_EQ(view.getCurrentNode(), material);
    group->removeChild(0); // the edited node itself
    pass();
    EXPECT_EQ(QApplication::focusWidget(), &name);
    EXPECT_EQ(view.getCurrentNode(), group);
    EXPECT_EQ(check(), "");
}
