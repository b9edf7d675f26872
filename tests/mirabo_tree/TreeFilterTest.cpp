#include "TreeEditScene.h"

#include "mirabo/core/SoCommandManager.h"
#include "mirabo/core/SoMiraboMainFrame.h"
#include "mirabo/tree/DisabledNodes.h"
#include "mirabo/tree/FilterActions.h"
#include "mirabo/tree/MovePlan.h"
#include "mirabo/tree/MrbFilterDialog.h"
#include "mirabo/tree/NodeCategory.h"
#include "mirabo/tree/RankedBits.h"
#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/TreeFinder.h"

#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>

#include <QAction>
#include <QCheckBox>
#include <QDockWidget>
#include <QPushButton>
#include <QTest>
#include <QToolBar>

#include <climits>
#include <random>

using mirabo::ActionId;
using mirabo::NodeCategory;

namespace {

constexpr int all()
{
    return mirabo::kAllCategories;
}

template <class... C>
int without(C... categories)
{
    return all() & ~(static_cast<int>(categories) | ...);
}

/// What the user sees of the tree: rows, and which of them are open.
std::string openRowsOf(const SoMiraboTreeView& view)
{
    std::string look;
    std::vector<const SoTreeViewItem*> open{view.rootItem()};
    while (!open.empty()) {
        const SoTreeViewItem* row = open.back();
        open.pop_back();
        look += row->getNodeType().getName().getString();
        look += row->childCount() > 0 && view.isOpen(row) ? "v" : ">";
        look += std::to_string(row->childCount());
        for (int i = row->childCount(); i-- > 0;)
            open.push_back(row->childItem(i));
    }
    return look;
}

/// A group of groups, each with a material, a transform and a cube.
class TreeFilter : public TreeTest {
protected:
    TreeFilter()
    {
        for (int i = 0; i < 3; ++i)
            root->addChild(makeGroup());
        view.show();
        view.expandAll();
        pass();
    }
    static SoSeparator* makeGroup()
    {
        auto* group = new SoSeparator;
        for (SoNode* node :
             {static_cast<SoNode*>(new SoMaterial), static_cast<SoNode*>(new SoTransform),
              static_cast<SoNode*>(new SoCube)})
            group->addChild(node);
        return group;
    }
    SoGroup* group(int i) const { return static_cast<SoGroup*>(root->getChild(i)); }
    bool isShown(const SoNode* node) const { return row(node)->treeWidget() == &view; }
    int shownBelow(const SoNode* node) const { return row(node)->childCount(); }
};

} // namespace

TEST(RankedBits, AgreeWithAPlainList)
{
    std::mt19937 random(3);
    mirabo::RankedBits bits;
    std::vector<bool> plain;
    for (int step = 0; step < 3000; ++step) {
        const int size = static_cast<int>(plain.size());
        const int at = static_cast<int>(random() % static_cast<unsigned>(size + 1));
        if (at < size && random() % (step < 2000 ? 4 : 2) == 0) {
            bits.remove(at);
            plain.erase(plain.begin() + at);
        } else {
            const bool bit = random() % 3 == 0;
            bits.insert(at, bit);
            plain.insert(plain.begin() + at, bit);
        }
        if (step % 50)
            continue;
        ASSERT_EQ(bits.size(), static_cast<int>(plain.size()));
        int set = 0;
        for (int i = 0; i < bits.size(); ++i) {
            ASSERT_EQ(bits.at(i), plain[static_cast<std::size_t>(i)]);
            ASSERT_EQ(bits.countBefore(i), set);
            ASSERT_EQ(bits.at(i) ? bits.placeOfSet(set) : bits.placeOfClear(i - set), i);
            set += bits.at(i);
        }
        ASSERT_EQ(bits.countBefore(bits.size()), set);
        ASSERT_EQ(bits.count(), set);
    }
}

TEST_F(TreeFilter, HidesCategoriesWithAllBelow)
{
    view.setFilter(without(NodeCategory::Shape, NodeCategory::Appearance));
    EXPECT_EQ(view.getFilter(), without(NodeCategory::Shape, NodeCategory::Appearance));
    EXPECT_EQ(shownBelow(group(0)), 1);
    EXPECT_TRUE(isShown(group(0)->getChild(1)));
    EXPECT_EQ(row(group(0)->getChild(2))->childIndexValue(), -1);
    EXPECT_EQ(row(group(0)->getChild(1))->childIndexValue(), 0) << "numbered among the shown";
    view.setFilter(without(NodeCategory::Separator));
    EXPECT_EQ(shownBelow(root.get()), 0);
    EXPECT_FALSE(isShown(group(1)->getChild(1))) << "goes with what it hangs on";
    EXPECT_EQ(check(), "");
    view.setFilter(all());
    EXPECT_EQ(shownBelow(root.get()), 3);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeFilter, KeepsOpenBranchesAndChoosesWhatStays)
{
    row(group(1))->setExpanded(false);
    view.setCurrentItem(row(group(2)->getChild(2)));
    pass();
    std::vector<SoTreeViewItem*> chosen;
    QObject::connect(&view, &SoMiraboTreeView::itemChosen, &view,
                     [&](SoTreeViewItem* item) { chosen.push_back(item); });
    view.setFilter(without(NodeCategory::Shape));
    pass();
    EXPECT_EQ(view.currentItem(), row(group(2)));
    EXPECT_EQ(chosen, std::vector{row(group(2))}) << "the panels follow";
    view.setFilter(without(NodeCategory::Separator));
    pass();
    EXPECT_EQ(view.currentItem(), view.rootItem());
    chosen.clear();
    view.setFilter(all());
    pass();
    EXPECT_TRUE(chosen.empty()) << "the current row is still the same";
    EXPECT_TRUE(row(group(0))->isExpanded());
    EXPECT_FALSE(row(group(1))->isExpanded());
    EXPECT_TRUE(row(group(2))->isExpanded());
}

TEST_F(TreeFilter, HidesTheRootAndSaysSo)
{
    view.setFilter(without(NodeCategory::Group));
    pass();
    EXPECT_EQ(view.itemAt(5, 5), nullptr);
    EXPECT_EQ(view.currentItem(), nullptr) << "keys would work on what is not seen";
    root->addChild(new SoCube);
    EXPECT_EQ(check(), "");
    view.setSceneGraph(root.get());
    pass();
    EXPECT_EQ(view.currentItem(), nullptr);
    EXPECT_TRUE(view.revealNode(root->getChild(3)));
    EXPECT_EQ(view.itemAt(5, 5), view.rootItem());
    view.setFilter(all());
    EXPECT_EQ(check(), "");
}

TEST_F(TreeFilter, NewRowsObeyIt)
{
    view.setFilter(without(NodeCategory::Shape));
    auto* cube = new SoCube;
    group(0)->insertChild(cube, 1);
    root->insertChild(makeGroup(), 1);
    root->replaceChild(0, makeGroup());
    EXPECT_FALSE(isShown(group(1)->getChild(2)));
    EXPECT_EQ(shownBelow(group(0)), 2);
    EXPECT_EQ(check(), "");
    group(2)->removeChild(2); // the last hidden one of its parent
    EXPECT_EQ(check(), "");
    view.setFilter(all());
    EXPECT_EQ(check(), "");
    EXPECT_EQ(shownBelow(group(0)), 3);
}

TEST_F(TreeFilter, ShowsAHiddenRowThatSomebodyGoesTo)
{
    SoNode* cube = group(1)->getChild(2);
    view.setFilter(without(NodeCategory::Shape, NodeCategory::Separator));
    mirabo::TreeFinder finder(view, {mirabo::TreeFinder::ByType, "cube", 0}, row(group(0)));
    ASSERT_EQ(finder.look(INT_MAX), mirabo::TreeFinder::State::Found);
    EXPECT_EQ(finder.found()->getParentNode(), group(0)) << "hidden rows are found in their order";
    EXPECT_EQ(view.occurrencesOf(cube).size(), 1u);
    view.showItem(row(cube));
    pass();
    EXPECT_EQ(view.getCurrentNode(), cube);
    EXPECT_TRUE(view.visualItemRect(row(cube)).isValid());
    EXPECT_FALSE(isShown(group(1)) && isShown(group(2)));
    EXPECT_EQ(check(), "");
    group(1)->insertChild(new SoMaterial, 0); // what is shown against the filter stays
    EXPECT_TRUE(isShown(cube));
    EXPECT_EQ(check(), "");
    view.filterItems();
    EXPECT_FALSE(isShown(cube));
    EXPECT_EQ(check(), "");
}

TEST_F(TreeFilter, DoesNotGoToHiddenRowsThatChange)
{
    view.topologyManager().recentChanges().setQuietTime(0);
    view.setFilter(without(NodeCategory::Transform));
    view.setCurrentItem(row(group(0)));
    pass();
    static_cast<SoTransform*>(group(2)->getChild(1))->translation = {1, 2, 3};
    pass();
    EXPECT_EQ(view.getCurrentNode(), group(0));
    EXPECT_FALSE(isShown(group(2)->getChild(1)));
}

TEST_F(TreeFilter, KnowsBookmarksOfHiddenRows)
{
    view.setCurrentItem(row(group(0)));
    row(group(2)->getChild(2))->setBookmarked(true);
    row(group(0)->getChild(2))->setBookmarked(true);
    view.setFilter(without(NodeCategory::Shape));
    const auto& bookmarks = view.context().bookmarks;
    EXPECT_EQ(bookmarks.walkOn(view, row(group(1)), false), row(group(2)->getChild(2)));
    EXPECT_EQ(bookmarks.walkOn(view, row(group(1)), true), row(group(0)->getChild(2)));
    const auto paths = view.context().bookmarks.paths(10, true);
    view.setFilter(all());
    EXPECT_EQ(paths.size(), 2u);
    EXPECT_EQ(paths[0].find(view), row(group(0)->getChild(2))) << "places do not depend on it";
}

TEST_F(TreeFilter, DisabledNodesKeepTheirPlaces)
{
    SoRef<SoNode> cube(group(0)->getChild(2));
    SoRef<SoNode> transform(group(0)->getChild(1));
    view.setFilter(without(NodeCategory::Appearance));
    mirabo::disableNode(view, cube.get());
    mirabo::disableNode(view, transform.get());
    view.setFilter(without(NodeCategory::Shape));
    group(0)->insertChild(new SoCube, 0);
    EXPECT_EQ(check(), "");
    view.setFilter(all());
    EXPECT_EQ(check(), "");
    mirabo::enableNode(view, *view.context().disabled.find(cube.get()));
    mirabo::enableNode(view, *view.context().disabled.find(transform.get()));
    EXPECT_EQ(group(0)->findChild(transform.get()), 2);
    EXPECT_EQ(group(0)->findChild(cube.get()), 3);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeFilter, CommandsAreExactUnderIt)
{
    EditedTree edited(view);
    for (int i = 0; i < 4; ++i)
        group(0)->addChild(makeGroup());
    for (int i = 0; i < 3; ++i)
        group(1)->insertChild(group(0)->getChild(3 + i), i); // shared
    view.expandAll();
    view.setCurrentItem(row(group(1)));
    for (const int mask : {without(NodeCategory::Shape), without(NodeCategory::Transform),
                           without(NodeCategory::Shape, NodeCategory::Appearance)}) {
        view.setFilter(mask);
        pass();
        const std::string text = textOf(root.get());
        const std::string look = openRowsOf(view);
        std::mt19937 random(static_cast<unsigned>(mask));
        int done = 0;
        for (int i = 0; i < 300; ++i) {
            std::vector<SoTreeViewItem*> rows{view.rootItem()};
            for (std::size_t at = 0; at < rows.size(); ++at)
                for (int below = 0; below < rows[at]->childCount(); ++below)
                    rows.push_back(rows[at]->childItem(below));
            const auto any = [&] { return rows[1 + random() % (rows.size() - 1)]; };
            if (rows.size() < 3)
                break;
            view.setCurrentItem(any());
            switch (random() % 5) {
            case 0:
                done += edited.editor.deleteCurrent();
                break;
            case 1:
                done += edited.editor.addNode(random() % 2 ? makeGroup()
                                                           : static_cast<SoNode*>(new SoCube));
                break;
            case 2:
                done += edited.editor.stepCurrent(static_cast<mirabo::MoveStep>(random() % 4));
                break;
            default:
                done += edited.editor.moveRow(any(), any(), random() % 2);
            }
            edited.boxes.clear();
            ASSERT_EQ(check(), "") << "after edit " << i;
        }
        EXPECT_GT(done, 50);
        const std::string textBehind = textOf(root.get());
        while (edited.stack.canUndo())
            edited.stack.undo();
        EXPECT_EQ(textOf(root.get()), text);
        EXPECT_EQ(openRowsOf(view), look);
        EXPECT_EQ(check(), "");
        while (edited.stack.canRedo())
            edited.stack.redo();
        EXPECT_EQ(textOf(root.get()), textBehind);
        view.setFilter(all()); // another one than when the commands were made
        while (edited.stack.canUndo())
            edited.stack.undo();
        EXPECT_EQ(textOf(root.get()), text);
        EXPECT_EQ(check(), "");
        edited.stack.clear();
        view.setCurrentItem(row(group(1)));
    }
}

TEST_F(TreeFilter, StepsGoPastWhatIsHidden)
{
    EditedTree edited(view);
    SoGroup* first = group(0);
    SoNode* cube = first->getChild(2);
    view.setFilter(without(NodeCategory::Transform));
    view.setCurrentItem(row(cube));
    EXPECT_TRUE(edited.editor.stepCurrent(mirabo::MoveStep::Up));
    EXPECT_EQ(first->findChild(cube), 0) << "before the material, which is the next that is seen";
    EXPECT_FALSE(edited.editor.stepCurrent(mirabo::MoveStep::Up));
    EXPECT_TRUE(edited.editor.stepCurrent(mirabo::MoveStep::Down));
    EXPECT_EQ(first->findChild(cube), 1);
    EXPECT_FALSE(edited.editor.stepCurrent(mirabo::MoveStep::Down)) << "only hidden ones there";
}

namespace {

/// A window with a tree in it, worked with like a user does.
class FilterWindow : public ::testing::Test {
protected:
    FilterWindow()
    {
        SoDB::init();
        frame.setUp(&hub, true);
        auto* dock = new QDockWidget(&frame);
        tree = new SoMiraboTreeView(dock);
        dock->setWidget(tree);
        frame.addDockWidget(Qt::LeftDockWidgetArea, dock);
        filter = new mirabo::FilterActions(tree, &frame, &hub);
        hub.setUp(&frame, nullptr, tree, nullptr);
        root = new SoGroup;
        root->addChild(new SoMaterial);
        root->addChild(new SoCube);
        tree->setSceneGraph(root.get());
        frame.resize(2000, 500);
        frame.show();
        frame.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&frame));
        pass();
    }
    ~FilterWindow() override { hub.release(); }

    static void pass() { QCoreApplication::processEvents(); }
    QAction* action(ActionId id) const { return frame.action(id); }
    /// Clicks the button of an action in the tool bar.
    void click(ActionId id)
    {
        auto* bar = frame.findChild<QToolBar*>("FilterToolBar");
        QWidget* button = bar->widgetForAction(action(id));
        ASSERT_TRUE(button && button->isVisible());
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
        pass();
    }
    static void click(QWidget* widget)
    {
        QTest::mouseClick(widget, Qt::LeftButton, {}, QPoint(8, widget->height() / 2));
        pass();
    }
    QPushButton* button(const QString& text) const
    {
        for (auto* one : filter->dialog()->findChildren<QPushButton*>())
            if (one->text() == text)
                return one;
        return nullptr;
    }
    QCheckBox* box(NodeCategory category) const
    {
        return filter->dialog()->box(__builtin_ctz(static_cast<unsigned>(category)));
    }
    int rows() const { return tree->rootItem()->childCount(); }

    SoCommandManager hub;
    SoMiraboMainFrame frame;
    SoMiraboTreeView* tree;
    mirabo::FilterActions* filter;
    SoRef<SoGroup> root;
};

} // namespace

TEST_F(FilterWindow, ToolBarHidesAndShowsCategories)
{
    EXPECT_TRUE(action(ActionId::Shape)->isEnabled());
    click(ActionId::Shape);
    EXPECT_EQ(rows(), 1);
    click(ActionId::ToggleFilters);
    EXPECT_EQ(rows(), 2) << "off: everything is shown";
    EXPECT_FALSE(action(ActionId::Shape)->isChecked()) << "the choice is kept";
    click(ActionId::ToggleFilters);
    EXPECT_EQ(rows(), 1);
    click(ActionId::ToggleFilters);
    click(ActionId::Appearance);
    EXPECT_TRUE(action(ActionId::ToggleFilters)->isChecked()) << "a choice is meant to be seen";
    EXPECT_EQ(rows(), 0);
    tree->setSceneGraph(nullptr);
    pass();
    EXPECT_FALSE(action(ActionId::Shape)->isEnabled()) << "there is nothing to filter";
}

TEST_F(FilterWindow, DialogFiltersWhileItIsOpen)
{
    action(ActionId::CustomFilter)->trigger();
    pass();
    ASSERT_TRUE(filter->dialog() && filter->dialog()->isVisible());
    EXPECT_TRUE(action(ActionId::CustomFilter)->isChecked());
    for (int i = 0; i < MrbFilterDialog::kCategories; ++i)
        EXPECT_FALSE(filter->dialog()->box(i)->icon().isNull()) << i;

    click(box(NodeCategory::Shape));
    EXPECT_EQ(rows(), 1);
    EXPECT_FALSE(action(ActionId::Shape)->isChecked()) << "the tool bar shows the same";
    QTest::keyClick(box(NodeCategory::Appearance), Qt::Key_Space);
    EXPECT_EQ(rows(), 0);
    QTest::keyClick(button("&Invert"), Qt::Key_Space);
    EXPECT_EQ(rows(), 2);
    EXPECT_FALSE(box(NodeCategory::Camera)->isChecked());
    click(button("&None"));
    EXPECT_TRUE(tree->rootItem()->isFilteredOut());
    click(button("&All"));
    EXPECT_EQ(rows(), 2);
    EXPECT_EQ(tree->getFilter(), all());
    click(ActionId::Shape);
    EXPECT_FALSE(box(NodeCategory::Shape)->isChecked()) << "and the dialog what the tool bar does";
    click(filter->dialog()->findChildren<QCheckBox*>().front()); // the filter as a whole
    EXPECT_FALSE(action(ActionId::ToggleFilters)->isChecked());
    EXPECT_EQ(rows(), 2);

    QTest::keyClick(filter->dialog(), Qt::Key_Escape);
    pass();
    EXPECT_FALSE(filter->dialog()->isVisible());
    EXPECT_FALSE(action(ActionId::CustomFilter)->isChecked());
    EXPECT_TRUE(hub.actions().run(ActionId::Filter)) << "the other way to it";
    EXPECT_TRUE(filter->dialog()->isVisible());
    EXPECT_FALSE(filter->dialog()->isOn()) << "as it was left";
    action(ActionId::CustomFilter)->trigger();
    EXPECT_FALSE(filter->dialog()->isVisible());
}

TEST_F(FilterWindow, DialogGoesWithTheTree)
{
    action(ActionId::CustomFilter)->trigger();
    const QPointer<MrbFilterDialog> dialog(filter->dialog());
    delete tree->parentWidget();
    EXPECT_TRUE(dialog.isNull());
    EXPECT_FALSE(hub.actions().isPossible(ActionId::Filter));
    action(ActionId::CustomFilter)->trigger(); // nobody answers
    action(ActionId::Shape)->setChecked(false);
}
