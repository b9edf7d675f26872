#include "TreeTestScene.h"

#include "mirabo/tree/TreeIgnoreCommands.h"

#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>

#include <memory>

namespace {

/// Executes what the tree asks for and keeps it, as the hub does.
class TreeDisableTest : public TreeTest {
protected:
    TreeDisableTest()
    {
        QObject::connect(&view, &SoMiraboTreeView::commandReady, &view,
                         [this](mirabo::TreeEditCommand* made) {
                             command.reset(made);
                             executed = command->execute();
                         });
    }
    void ignoreEnable(SoTreeViewItem* item)
    {
        view.setCurrentItem(item);
        view.ignoreEnable();
    }

    std::unique_ptr<mirabo::TreeEditCommand> command;
    bool executed = false;
};

} // namespace

TEST_F(TreeDisableTest, TakesANodeOutOfAllItsGroupsAndPutsItBack)
{
    auto* shared = new SoSeparator;
    shared->addChild(new SoCube);
    auto* first = new SoGroup;
    auto* second = new SoGroup;
    root->addChild(first);
    root->addChild(second);
    for (SoGroup* group : {first, second}) {
        group->addChild(new SoMaterial);
        group->addChild(shared);
        group->addChild(new SoCube);
    }
    second->addChild(shared);
    second->addChild(new SoTransform);

    ignoreEnable(row(shared));
    EXPECT_TRUE(executed);
    EXPECT_EQ(first->getNumChildren(), 2);
    EXPECT_EQ(second->getNumChildren(), 3);
    EXPECT_EQ(rowsOf(shared), 3);
    EXPECT_EQ(check(), "");
    SoTreeViewItem* grey = row(first)->childItem(1);
    EXPECT_TRUE(grey->isDisabledNode());
    EXPECT_TRUE(grey->isFresh());
    EXPECT_EQ(grey->childIndexValue(), -1);
    EXPECT_EQ(row(first)->childItem(2)->childIndexValue(), 1);
    EXPECT_EQ(grey->data(0, Qt::ForegroundRole).value<QBrush>().color(), QColor(Qt::darkGray));
    pass();
    EXPECT_EQ(view.getCurrentNode(), shared);

    command->undo();
    EXPECT_EQ(first->getChild(1), shared);
    EXPECT_EQ(second->getChild(1), shared);
    EXPECT_EQ(second->getChild(3), shared);
    EXPECT_EQ(row(shared)->childCount(), 1);
    EXPECT_EQ(check(), "");
    command->redo();
    EXPECT_EQ(rowsOf(shared), 3);

    ignoreEnable(row(shared)); // a command of its own
    EXPECT_EQ(second->getNumChildren(), 5);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeDisableTest, KeepsThePlaceWhileTheHostEditsAroundIt)
{
    auto* group = new SoGroup;
    root->addChild(group);
    std::vector<SoNode*> nodes;
    for (int i = 0; i < 4; ++i) {
        nodes.push_back(new SoCube);
        group->addChild(nodes.back());
    }
    const SoRef<SoNode> out(nodes[2]);
    ignoreEnable(row(out.get()));
    group->insertChild(new SoMaterial, 0);
    group->addChild(new SoTransform);
    EXPECT_EQ(check(), "");
    EXPECT_EQ(row(group)->indexOfChild(row(out.get())), 3);
    group->removeChild(2); // the one before it
    EXPECT_EQ(check(), "");
    group->replaceChild(0, new SoMaterial);
    group->setChildren({group->getChild(0), group->getChild(1), nodes[3], group->getChild(3)});
    EXPECT_EQ(check(), "");
    EXPECT_EQ(rowsOf(out.get()), 1);

    ignoreEnable(row(out.get()));
    EXPECT_EQ(group->getNumChildren(), 5);
    EXPECT_EQ(check(), "");
    EXPECT_EQ(view.getCurrentNode(), out.get());
}

TEST_F(TreeDisableTest, RemembersTheNodeWhileItMayComeBack)
{
    const SoRef<SoGroup> group(new SoGroup);
    root->addChild(group.get());
    SoRef<SoNode> out(new SoCube);
    for (int i = 0; i < 3; ++i)
        group->addChild(i == 1 ? out.get() : new SoMaterial);
    ignoreEnable(row(out.get()));
    auto* other = new SoGroup;
    root->addChild(other);
    root->removeChild(group.get()); // as a move does
    other->addChild(group.get());
    pass();
    EXPECT_EQ(check(), "");
    ASSERT_EQ(rowsOf(out.get()), 1);
    EXPECT_EQ(row(group.get())->indexOfChild(row(out.get())), 1);
    root->addChild(group.get()); // a second place has its grey row, too
    EXPECT_EQ(rowsOf(out.get()), 2);

    root->removeAllChildren();
    pass();
    root->addChild(group.get()); // a deletion is undone while the command is kept
    EXPECT_EQ(check(), "");
    EXPECT_EQ(rowsOf(out.get()), 1);
    command->undo();
    EXPECT_EQ(group->getChild(1), out.get());
    EXPECT_FALSE(row(out.get())->isDisabledNode());
    command->redo();
    root->removeAllChildren();
    command->undo(); // back in its group, which is out of the scene
    EXPECT_EQ(group->getChild(1), out.get());
    EXPECT_EQ(check(), "");
}

TEST_F(TreeDisableTest, LetsTheNodeGoWhenItsLastGreyRowGoes)
{
    auto* group = new SoGroup;
    root->addChild(group);
    SoRef<SoNode> out(new SoCube);
    group->addChild(out.get());
    ignoreEnable(row(out.get()));
    command.reset();
    root->removeChild(group);
    pass();
    EXPECT_TRUE(view.context().disabled.isEmpty());
    EXPECT_EQ(rowsOf(out.get()), 0);
    EXPECT_EQ(out->getRefCount(), 1);
}

TEST_F(TreeDisableTest, IgnoresTheFieldOfANodeThatAFieldHolds)
{
    auto* holder = new FieldHolder;
    root->addChild(holder);
    auto* cube = new SoCube;
    holder->one = cube;
    ignoreEnable(row(cube));
    EXPECT_TRUE(holder->one.isIgnored());
    EXPECT_EQ(rowsOf(cube), 1);
    command->undo();
    EXPECT_FALSE(holder->one.isIgnored());

    view.setCurrentItem(view.rootItem());
    EXPECT_FALSE(view.canIgnoreOrEnable()); // nobody holds the root
    command.reset();
    view.ignoreEnable();
    EXPECT_EQ(command, nullptr);
}
