// Undo gives back the rows as the user had them: open branches, grey rows, the current one.
#include "TreeEditFixture.h"

#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodekits/SoShapeKit.h>

TEST_F(TreeEdit, DeletesTheRootWithoutForgettingHow)
{
    root->addChild(new SoCube);
    edited.stack.clear();
    view.setCurrentItem(row(material));
    ASSERT_TRUE(edited.editor.deleteCurrent());
    view.setCurrentItem(row(cube));
    view.ignoreEnable(); // its grey row is to come back, too
    row(wheel)->setExpanded(true);
    view.setCurrentItem(row(root.get()));
    const std::string text = textOf(root.get());
    ASSERT_TRUE(edited.editor.deleteCurrent());
    EXPECT_EQ(view.getRoot(), nullptr);
    EXPECT_EQ(view.topLevelItemCount(), 0);
    edited.stack.undo();
    EXPECT_EQ(view.getRoot(), root.get());
    EXPECT_EQ(textOf(root.get()), text);
    EXPECT_EQ(check(), "");
    ASSERT_NE(row(cube), nullptr);
    EXPECT_TRUE(row(cube)->isDisabledNode());
    EXPECT_TRUE(row(wheel)->isExpanded());
    edited.stack.undo();
    edited.stack.undo();
    EXPECT_EQ(wheel->getNumChildren(), 2);
    EXPECT_EQ(check(), "");
}

/// Groups of a kit may stand in further places, where other rules hold.
TEST_F(TreeEdit, GivesBackWhatGroupsOfKitsGotElsewhere)
{
    auto* kit = new SoShapeKit;
    kit->setPart("shape", new SoCube);
    auto* list = static_cast<SoNodeKitListPart*>(kit->getPart("childList"));
    list->addChild(new SoShapeKit);
    auto* group = static_cast<SoGroup*>(list->containerNode.getValue());
    group->addChild(new SoCube); // the list itself takes kits only
    root->addChild(kit);
    root->addChild(group);
    const SoTreeViewItem* inList = nullptr;
    for (SoTreeViewItem* at : view.itemsOf(group))
        inList = at->isDirectlyFromField() ? at : inList;
    ASSERT_TRUE(inList);
    view.setCurrentItem(inList->rowAt(1));
    edited.stack.clear();
    expectUndoable([&] { return edited.editor.deleteRow(inList->rowAt(1)); });

    // The part of the kit's group is an ordinary child where the group stands by itself.
    auto* separator = static_cast<SoGroup*>(row(kit)->rowAt(0)->getNode());
    root->addChild(separator);
    edited.stack.clear();
    SoTreeViewItem* inKit = row(kit)->rowAt(0);
    view.expandBelow(inKit);
    SoNode* part = separator->getChild(0);
    SoTreeViewItem* alone = nullptr;
    for (SoTreeViewItem* at : view.itemsOf(part))
        alone = at->isNamedPart() ? alone : at;
    ASSERT_TRUE(alone);
    ASSERT_TRUE(view.isOpen(inKit->rowAt(0)));
    view.setCurrentItem(alone);
    const std::string look = lookOf(view);
    view.ignoreEnable();
    ASSERT_EQ(separator->findChild(part), -1);
    edited.stack.undo();
    EXPECT_EQ(lookOf(view), look);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeEdit, GivesBackWhichRowsWereOpen)
{
    const SteppingClock clock(.01);
    auto* alone = new SoSeparator;
    auto* only = new SoCube;
    alone->addChild(only);
    auto* closed = new SoSeparator;
    closed->addChild(new SoCube);
    auto* twice = new SoSeparator;
    twice->addChild(new SoCube);
    auto* holder = new FieldHolder;
    SoNode* const values[] = {twice, nullptr, twice, nullptr, twice};
    holder->many.setValues(values);
    for (SoNode* node :
         {static_cast<SoNode*>(alone), static_cast<SoNode*>(closed), static_cast<SoNode*>(holder)})
        root->addChild(node);
    edited.stack.clear();
    row(alone)->setExpanded(true);
    row(holder)->setExpanded(true);
    row(holder)->childItem(1)->setExpanded(true);
    pass();

    std::vector<std::string> looks;
    const auto remove = [&](SoTreeViewItem* place) {
        view.setCurrentItem(place);
        looks.push_back(lookOf(view));
        ASSERT_TRUE(edited.editor.deleteRow(place));
    };
    remove(row(only)); // nothing is left below an open row
    EXPECT_FALSE(view.isOpen(row(closed)));
    remove(row(sphere));
    remove(row(holder)->childItem(0)); // of three equal values the first; the second is open
    EXPECT_TRUE(view.isOpen(row(holder)->childItem(0)));
    EXPECT_FALSE(view.isOpen(row(holder)->childItem(1)));
    pass();
    remove(row(alone));
    view.collapseItem(view.rootItem());
    remove(view.rootItem());
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = looks.size(); i-- > 0;) {
            edited.stack.undo();
            EXPECT_EQ(lookOf(view), looks[i]) << i;
            view.expandItem(view.rootItem()); // as it was until the last edit
        }
        for (std::size_t i = 1; i < looks.size(); ++i)
            edited.stack.redo();
        EXPECT_EQ(check(), "");
        view.collapseItem(view.rootItem());
        edited.stack.redo();
        EXPECT_EQ(lookOf(view), "");
    }
}

TEST_F(TreeEdit, GivesBackTheGreyRowsThatThereWere)
{
    // What hangs in a kit stands elsewhere, too: there it can be disabled, in the kit it cannot.
    auto* kit = new SoShapeKit;
    SoNode* part = kit->getPart("transform");
    root->addChild(kit);
    root->addChild(row(part)->getParentNode());
    edited.stack.clear();
    view.expandBelow(view.rootItem());
    view.setCurrentItem(view.occurrencesOf(part).back());
    view.ignoreEnable();
    ASSERT_EQ(rowsOf(part), 1);
    view.setCurrentItem(row(kit));
    const std::string look = lookOf(view);
    ASSERT_TRUE(edited.editor.deleteCurrent());
    edited.stack.undo();
    EXPECT_EQ(lookOf(view), look);
    EXPECT_EQ(rowsOf(part), 1);
    edited.stack.undo();
    EXPECT_EQ(rowsOf(part), 2);
    edited.stack.redo();
    EXPECT_EQ(lookOf(view), look);
    EXPECT_EQ(check(), "");
}

/// Enabling puts the node into a group that was deleted meanwhile as well; so does its undo.
// A node that no command can enable is remembered for the sake of the deleted branch alone.
TEST_F(TreeEdit, GivesBackTheGreyRowOfANodeThatNobodyElseRemembers)
{
    view.setCurrentItem(row(cube));
    view.ignoreEnable();
    edited.stack.clear();
    pass(); // frees the command
    const std::string before = lookOf(view);
    ASSERT_TRUE(edited.editor.deleteRow(row(wheel)));
    pass();
    edited.stack.undo();
    EXPECT_EQ(lookOf(view), before);
    view.setCurrentItem(row(wheel)->rowAt(1));
    view.ignoreEnable();
    EXPECT_EQ(wheel->getNumChildren(), 2);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeEdit, TakesANodeOutOfDeletedGroupsAgain)
{
    auto* group = new SoSeparator;
    auto* part = new SoMaterial;
    group->addChild(part);
    root->addChild(group);
    root->addChild(part);
    edited.stack.clear();
    view.expandBelow(view.rootItem());
    view.setCurrentItem(view.occurrencesOf(part).back());
    view.ignoreEnable();
    ASSERT_EQ(group->getNumChildren(), 0);
    const std::string before = textOf(root.get());
    view.setCurrentItem(row(group));
    ASSERT_TRUE(edited.editor.deleteCurrent());
    view.setCurrentItem(view.occurrencesOf(part).back());
    view.ignoreEnable();
    EXPECT_EQ(root->findChild(part), root->getNumChildren() - 1);
    edited.stack.undo();
    EXPECT_EQ(root->findChild(part), -1);
    edited.stack.undo();
    EXPECT_EQ(textOf(root.get()), before);
    EXPECT_EQ(check(), "");
}

/// The host has put a part of a kit in front of the others of its group.
TEST_F(TreeEdit, PutsPartsBackToWhereTheyStood)
{
    auto* kit = new SoShapeKit;
    const SoRef<SoNode> list(kit->getPart("childList"));
    root->addChild(kit);
    auto* group = static_cast<SoGroup*>(row(list.get())->getParentNode());
    group->removeChild(list.get());
    group->insertChild(list.get(), 0);
    ASSERT_EQ(kit->getPart("childList", false), list.get());
    const int children = group->getNumChildren();
    edited.stack.clear();
    view.expandBelow(view.rootItem());
    view.setCurrentItem(row(list.get()));
    ASSERT_TRUE(edited.editor.deleteCurrent());
    EXPECT_EQ(kit->getPart("childList", false), nullptr);
    EXPECT_EQ(group->findChild(list.get()), -1);
    edited.stack.undo();
    EXPECT_EQ(kit->getPart("childList", false), list.get());
    EXPECT_EQ(group->findChild(list.get()), 0);
    EXPECT_EQ(group->getNumChildren(), children);
    edited.stack.redo();
    EXPECT_EQ(group->findChild(list.get()), -1);
    EXPECT_EQ(check(), "");
}
