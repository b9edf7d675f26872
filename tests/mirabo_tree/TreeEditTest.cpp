#include "TreeEditFixture.h"

#include "mirabo/tree/SoTreeAddNodeCommand.h"
#include "mirabo/tree/SoTreeMoveNodeCommand.h"
#include "mirabo/tree/TreeIgnoreCommands.h"

#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoFile.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLInline.h>

#include <QtTest>

TEST_F(TreeEdit, DeletesEveryKindOfPlace)
{
    auto* kit = new SoShapeKit;
    kit->setPart("shape", new SoCube);
    kit->setPart("transform", new SoTransform);
    auto* list = static_cast<SoNodeKitListPart*>(kit->getPart("childList"));
    for (int i = 0; i < 3; ++i)
        list->addChild(new SoShapeKit);
    auto* holder = new FieldHolder;
    holder->one = new SoCube;
    SoNode* const values[] = {new SoCube, nullptr, sphere, new SoCube, sphere};
    holder->many.setValues(values);
    auto* parameters = new ParameterHolder;
    parameters->parameter.addShaderParameter(new SoMaterial);
    parameters->parameter.addShaderParameter(new SoTransform);
    auto* world = new SoVRMLGroup;
    world->addChild(new SoCube);
    for (SoNode* node : {static_cast<SoNode*>(kit), static_cast<SoNode*>(holder),
                         static_cast<SoNode*>(parameters), static_cast<SoNode*>(world)})
        root->addChild(node);
    edited.stack.clear();

    const std::pair<SoNode*, int> cases[] = {
        {cube, 0},
        {wheel, 0},
        {holder->one, 1},
        {holder->many[3], 1},
        {parameters->parameter[0], 1},
        {kit->getPart("shape"), 2},
        {kit->getPart("transform"), 2},
        {list, 2},
        {list->getChild(1), 3},
        {world->getChild(0), 4},
    };
    for (const auto& [node, kind] : cases) {
        SCOPED_TRACE(node->getTypeId().getName().getString());
        view.setCurrentItem(row(node));
        expectUndoable([&] { return edited.editor.deleteCurrent(); });
        EXPECT_EQ(kindOf(row(node)), kind);
    }
    // Of several places of one node, the one that was chosen.
    for (SoTreeViewItem* place : view.occurrencesOf(sphere)) {
        view.setCurrentItem(place);
        expectUndoable([&] { return edited.editor.deleteCurrent(); });
    }
    // An empty group of VRML97 and a list part that was not there are empty to the letter again.
    auto* empty = new SoVRMLGroup;
    root->addChild(empty);
    auto* kit2 = new SoShapeKit;
    kit2->getPart("childList");
    root->addChild(kit2);
    expectUndoable([&] { return edited.editor.addNode(new SoCube, row(empty)); });
    expectUndoable(
        [&] { return edited.editor.addNode(new SoShapeKit, row(kit2->getPart("childList"))); });
}

TEST_F(TreeEdit, KeepsANodeOnlyWhileNobodyElseDoes)
{
    root->addChild(cube); // a second place
    bool done = false;
    const auto host = std::make_shared<mirabo::TreeEditHost>();
    SoTreeDeleteNodeCommand first(view.occurrencesOf(cube)[0], host, done);
    EXPECT_FALSE(first.isOwner());
    EXPECT_EQ(cube->getRefCount(), 1);
    {
        SoTreeDeleteNodeCommand last(view.occurrencesOf(cube)[0], host, done);
        EXPECT_TRUE(last.isOwner());
        EXPECT_EQ(cube->getRefCount(), 1);
        last.undo();
        EXPECT_FALSE(last.isOwner());
        EXPECT_EQ(cube->getRefCount(), 1);
    }
    EXPECT_EQ(root->findChild(cube), 2);
    // Its owner lets go, and so the node dies: nothing is left to be put back.
    root->removeChild(2);
    const std::string text = textOf(root.get());
    first.undo();
    EXPECT_TRUE(first.isDone());
    EXPECT_EQ(textOf(root.get()), text);
    // The same for what held it.
    SoTreeDeleteNodeCommand orphan(row(material), host, done);
    root->removeChild(0);
    orphan.undo();
    EXPECT_EQ(check(), "");
}

TEST_F(TreeEdit, PutsANodeBackWhereItWasHoweverTheRowsAreNumbered)
{
    root->insertChild(cube, 0);
    root->insertChild(cube, 0); // twice in one list
    view.setCurrentItem(view.occurrencesOf(cube)[1]);
    view.ignoreEnable(); // grey rows have no numbers
    edited.stack.undo();
    auto* grey = new SoCube;
    root->insertChild(grey, 0);
    view.setCurrentItem(row(grey));
    view.ignoreEnable();
    ASSERT_TRUE(row(grey)->isDisabledNode());
    view.topLevelItem(0)->child(1)->setHidden(true); // as a filter does
    asRow(view.topLevelItem(0)->child(1))->setShown(false);
    view.setCurrentItem(row(sphere));
    expectUndoable([&] { return edited.editor.deleteCurrent(); });
    view.setCurrentItem(view.occurrencesOf(cube)[1]);
    expectUndoable([&] { return edited.editor.deleteCurrent(); });
    expectUndoable([&] { return edited.editor.moveRow(row(sphere), row(material), false); });
}

TEST_F(TreeEdit, EnablesADisabledNodeOnlyWhereItWasDisabled)
{
    std::vector<std::string> texts{textOf(root.get())};
    const auto step = [&](SoNode* node) {
        view.setCurrentItem(view.occurrencesOf(node).back());
        view.ignoreEnable();
        texts.push_back(textOf(root.get()));
    };
    step(material);
    step(cube); // two neighbours
    ASSERT_TRUE(edited.editor.addNode(cube, row(root.get())));
    texts.push_back(textOf(root.get()));
    step(cube); // one row is grey, the other one is not
    EXPECT_EQ(wheel->getNumChildren(), 1);
    EXPECT_EQ(root->getNumChildren(), 3);
    step(material);
    EXPECT_EQ(wheel->findChild(cube), 1);
    EXPECT_EQ(texts.size(), 6u);
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = texts.size() - 1; i-- > 0;) {
            edited.stack.undo();
            EXPECT_EQ(textOf(root.get()), texts[i]) << i;
            EXPECT_EQ(check(), "");
        }
        for (std::size_t i = 1; i < texts.size(); ++i) {
            edited.stack.redo();
            EXPECT_EQ(textOf(root.get()), texts[i]) << i;
            EXPECT_EQ(check(), "");
        }
    }
}

TEST_F(TreeEdit, ShowsInNoCountOfReferences)
{
    auto* holder = new FieldHolder;
    holder->one = sphere;
    root->addChild(holder);
    edited.stack.clear();
    const auto counts = [&] {
        return std::vector<int>{root->getRefCount(), wheel->getRefCount(), cube->getRefCount(),
                                sphere->getRefCount(), holder->getRefCount()};
    };
    const std::vector<int> before = counts();
    view.setCurrentItem(row(cube));
    view.ignoreEnable();
    edited.stack.undo();
    EXPECT_EQ(counts(), before);
    view.setCurrentItem(row(holder)->childItem(0));
    view.ignoreEnable();
    EXPECT_TRUE(holder->one.isIgnored());
    EXPECT_EQ(counts(), before);
    ASSERT_TRUE(edited.editor.moveRow(row(cube), row(root.get()), false));
    EXPECT_EQ(counts(), before);
    edited.stack.undo();
    EXPECT_EQ(counts(), before);

    // So the application may delete what a command is about.
    SoTreeIgnoreFieldCommand command(&view, &holder->one);
    EXPECT_EQ(command.getName(), "Enable one");
    ASSERT_TRUE(command.execute());
    root->removeChild(holder);
    command.undo();
    EXPECT_TRUE(command.isDone());
    EXPECT_EQ(command.refusal().text, "The application has deleted the node.");
    edited.stack.undo();
    EXPECT_EQ(check(), "");
}

TEST_F(TreeEdit, AddsIntoListsAndBehindWhatKeepsNone)
{
    ASSERT_TRUE(edited.editor.addNode(new SoSphere, row(wheel)));
    EXPECT_EQ(wheel->getChild(2)->getTypeId(), SoSphere::getClassTypeId());
    EXPECT_EQ(view.getCurrentNode(), wheel->getChild(2));
    ASSERT_TRUE(edited.editor.addType(SoTransform::getClassTypeId(), row(material)));
    EXPECT_EQ(wheel->getChild(1)->getTypeId(), SoTransform::getClassTypeId());
    EXPECT_EQ(edited.stack.count(), 2);

    SoTreeAddNodeCommand several(row(cube), std::make_shared<mirabo::TreeEditHost>());
    const SoRef<SoNode> first(new SoSphere);
    const SoRef<SoNode> second(new SoSphere);
    EXPECT_TRUE(several.add(first.get()) && several.add(second.get()));
    EXPECT_EQ(several.getIndex(0), 3); // behind the cube
    EXPECT_EQ(several.getIndex(1), -1);
    EXPECT_EQ(wheel->findChild(first.get()), 3);
    EXPECT_EQ(wheel->findChild(second.get()), 5);
    several.undo();
    EXPECT_EQ(wheel->getNumChildren(), 4);
    several.redo();
    EXPECT_EQ(wheel->findChild(first.get()), 3);
    EXPECT_EQ(wheel->findChild(second.get()), 5);
    EXPECT_EQ(check(), "");

    auto* holder = new FieldHolder;
    holder->many.addNode(new SoCube);
    root->addChild(holder);
    expectUndoable([&] { return edited.editor.addNode(new SoSphere, row(holder->many[0])); });
}

TEST_F(TreeEdit, MovesByTheRulesOfADrop)
{
    const auto move = [&](SoNode* node, SoNode* target, bool space = false) {
        return edited.editor.moveRow(row(node), row(target), space);
    };
    view.setCurrentItem(row(sphere));
    ASSERT_TRUE(move(sphere, wheel)); // into, last
    EXPECT_EQ(wheel->findChild(sphere), 2);
    EXPECT_EQ(view.getCurrentNode(), sphere);
    ASSERT_TRUE(move(sphere, wheel)); // onto its own parent: first
    EXPECT_EQ(wheel->findChild(sphere), 0);
    ASSERT_TRUE(move(sphere, cube)); // behind what keeps no list; it came from before it
    EXPECT_EQ(wheel->findChild(sphere), 2);
    ASSERT_TRUE(move(sphere, material)); // it came from behind it
    EXPECT_EQ(wheel->findChild(sphere), 1);
    ASSERT_TRUE(move(sphere, wheel, true));
    EXPECT_EQ(root->findChild(sphere), 1);
    for (int i = 0; i < 5; ++i)
        edited.stack.undo();
    EXPECT_EQ(root->findChild(sphere), 1);
    EXPECT_EQ(wheel->getNumChildren(), 2);

    // What is open stays open, and the same the other way.
    auto* other = new SoSeparator;
    root->addChild(other);
    edited.stack.clear();
    view.collapseItem(row(wheel));
    auto* inner = new SoSeparator;
    inner->addChild(new SoCube);
    wheel->addChild(inner);
    edited.stack.clear();
    row(inner)->setExpanded(true);
    expectUndoable([&] { return move(wheel, other); });
    EXPECT_FALSE(row(wheel)->isExpanded());
    EXPECT_TRUE(row(inner)->isExpanded());
    edited.stack.redo();
    EXPECT_FALSE(row(wheel)->isExpanded());
    EXPECT_TRUE(row(inner)->isExpanded());
}

TEST_F(TreeEdit, StepsWithTheKeyboard)
{
    constexpr auto kBoth = Qt::ControlModifier | Qt::ShiftModifier;
    view.setCurrentItem(row(cube));
    QTest::keyClick(&view, Qt::Key_Up, kBoth);
    EXPECT_EQ(wheel->findChild(cube), 0);
    QTest::keyClick(&view, Qt::Key_Up, kBoth); // nothing above it
    QTest::keyClick(&view, Qt::Key_Down, kBoth);
    EXPECT_EQ(wheel->findChild(cube), 1);
    QTest::keyClick(&view, Qt::Key_Left, kBoth);
    EXPECT_EQ(root->findChild(cube), 1);
    QTest::keyClick(&view, Qt::Key_Right, kBoth);
    EXPECT_EQ(wheel->findChild(cube), 1);
    EXPECT_EQ(view.getCurrentNode(), cube);
    EXPECT_EQ(edited.stack.count(), 4);
    EXPECT_EQ(edited.box(), "");
    // Delete goes on with the siblings: first those behind, then those before, then the parent.
    QTest::keyClick(&view, Qt::Key_Up, kBoth);
    QTest::keyClick(&view, Qt::Key_Delete);
    EXPECT_EQ(wheel->getNumChildren(), 1);
    EXPECT_EQ(view.getCurrentNode(), material);
    edited.stack.undo();
    EXPECT_EQ(view.getCurrentNode(), cube);
    edited.stack.undo();
    QTest::keyClick(&view, Qt::Key_Delete);
    EXPECT_EQ(view.getCurrentNode(), material);
    QTest::keyClick(&view, Qt::Key_Delete);
    EXPECT_EQ(view.getCurrentNode(), wheel);
    for (int i = 0; i < 6; ++i)
        edited.stack.undo();
    EXPECT_EQ(wheel->findChild(cube), 1);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeEdit, RefusesWithABoxAndChangesNothing)
{
    auto* file = new SoFile;
    file->setChildData(new SoCube);
    root->addChild(file);
    auto* link = new SoVRMLInline;
    link->setChildData(new SoSphere);
    root->addChild(link);
    for (SoNode* content :
         {file->getChildren()->getNodes()[0], link->getChildren()->getNodes()[1]}) {
        const std::string type = content->getTypeId().getName().getString();
        EXPECT_EQ(boxOf([&] { return edited.editor.deleteRow(row(content)); }),
                  "Mirabo Delete Node: <i>" + type + "</i> can't be deleted.");
        EXPECT_EQ(boxOf([&] {
                      return edited.editor.moveRow(row(content), row(wheel), false);
                  }).substr(0, 17),
                  "Mirabo Move Node:");
    }
    auto* kit = new SoShapeKit;
    kit->setPart("transform", new SoTransform);
    auto* list = static_cast<SoNodeKitListPart*>(kit->getPart("childList"));
    list->addChild(new SoShapeKit);
    root->addChild(kit);
    SoNode* group = list->containerNode.getValue();
    EXPECT_EQ(boxOf([&] { return edited.editor.deleteRow(row(group)); }),
              "Mirabo Delete Node: This SoNodeKitListPart container can't be deleted.");
    SoTreeViewItem* top = row(kit->getPart("transform"))->parentItem();
    ASSERT_EQ(top->getPartName(), "topSeparator");
    EXPECT_EQ(boxOf([&] { return edited.editor.deleteRow(top); }),
              "Mirabo Delete Node: <i>\"topSeparator\"</i> part can't be deleted.");
    // Wrong types, a kit's own groups, and no list at all.
    EXPECT_EQ(boxOf([&] { return edited.editor.moveRow(row(sphere), row(list), false); }),
              "Mirabo Move Node: Sphere can't be moved.<br>The list takes no Sphere.");
    EXPECT_NE(boxOf([&] { return edited.editor.addNode(new SoCube, top); }), "");
    auto* holder = new FieldHolder;
    holder->one = new SoCube;
    root->addChild(holder);
    EXPECT_EQ(boxOf([&] { return edited.editor.addNode(new SoSphere, row(holder->one)); }),
              "Add node: Can not add this node<br>The FieldHolder keeps no list of nodes here.");
    // Circles.
    EXPECT_EQ(boxOf([&] { return edited.editor.moveRow(row(wheel), row(cube), false); }),
              "Mirabo Move Node: wheel can't be moved.<br>The wheel would hold itself.");
    EXPECT_EQ(boxOf([&] { return edited.editor.addReference(row(root.get()), row(cube), false); }),
              "Add node: Can not add this node<br>The Group would hold itself.");
    // Fields that somebody else feeds.
    const SoRef<FieldHolder> master(new FieldHolder);
    holder->one.connectFrom(&master->one);
    master->one = new SoCube;
    pass();
    EXPECT_EQ(boxOf([&] { return edited.editor.deleteRow(row(holder->one)); }),
              "Mirabo Delete Node: <i>Cube</i> can't be deleted.<br>The field &quot;one&quot; is "
              "connected.");
    holder->one.disconnect();
    holder->one.setFieldType(SoField::EVENT_OUT);
    EXPECT_NE(boxOf([&] { return edited.editor.deleteRow(row(holder->one)); }).find("read-only"),
              std::string::npos);
    EXPECT_EQ(boxOf([&] {
                  return edited.editor.moveRow(row(root.get()), row(wheel), false);
              }).substr(0, 17),
              "Mirabo Move Node:");

    // A root that keeps no list.
    const SoRef<SoNode> alone(new SoCube);
    view.setSceneGraph(alone.get());
    EXPECT_FALSE(edited.editor.addNode(new SoSphere, row(alone.get())));
    EXPECT_EQ(edited.box(), "Add node: Can not add this node");
}

TEST_F(TreeEdit, TellsWhenAKitRefusesItsPartOnUndo)
{
    auto* kit = new SoShapeKit;
    const SoRef<SoNode> list(kit->getPart("childList"));
    root->addChild(kit);
    ASSERT_TRUE(edited.editor.deleteRow(row(list.get())));
    // Out of sight the list has come above the kit: the kit would hold itself.
    auto* above = new SoShapeKit;
    static_cast<SoNodeKitListPart*>(list.get())->addChild(above);
    static_cast<SoNodeKitListPart*>(above->getPart("childList"))->addChild(kit);
    ASSERT_EQ(edited.stack.count(), 1);
    edited.stack.undo();
    EXPECT_EQ(edited.box(), "Mirabo Set Node: Can't set childList.");
    EXPECT_EQ(check(), "");
    edited.stack.redo(); // it is in that state still
    EXPECT_EQ(edited.box(), "");
    static_cast<SoNodeKitListPart*>(list.get())->removeAllChildren();
    edited.stack.undo();
    EXPECT_EQ(kit->getPart("childList", false), list.get());
    EXPECT_EQ(check(), "");
}

TEST_F(TreeEdit, FreesItsCommandsOnceTheyAreDropped)
{
    ASSERT_TRUE(edited.editor.deleteRow(row(cube)));
    EXPECT_EQ(edited.owner.count(), 1);
    ASSERT_TRUE(edited.editor.deleteRow(row(material)));
    edited.stack.undo();
    ASSERT_TRUE(edited.editor.addNode(new SoCube, row(wheel))); // the redo tail is deleted
    EXPECT_EQ(edited.owner.count(), 2);
    // Another scene of the host's: the stack forgets, in the midst of the change.
    const SoRef<SoNode> kept(cube);
    EXPECT_EQ(kept->getRefCount(), 2);
    root->addChild(new SoCube);
    EXPECT_EQ(edited.stack.count(), 0);
    EXPECT_EQ(kept->getRefCount(), 2);
    pass();
    EXPECT_EQ(edited.owner.count(), 0);
    EXPECT_EQ(kept->getRefCount(), 1);
}

TEST_F(TreeEdit, NamesWhatIsDone)
{
    const auto host = std::make_shared<mirabo::TreeEditHost>();
    bool done = false;
    EXPECT_EQ(SoTreeMoveNodeCommand(row(wheel), row(sphere), false, host).getName(), "Move wheel");
    SoTreeDeleteNodeCommand deletion(row(cube), host, done);
    EXPECT_EQ(deletion.getName(), "Delete Cube");
    SoTreeAddNodeCommand addition(row(wheel), host);
    addition.add(new SoSphere);
    EXPECT_EQ(addition.getName(), "Add Sphere");
}
