// Cut, copy and paste in the real window.
#include "mirabo/core/SoCommandManager.h"
#include "mirabo/extender/private/Observed.h"
#include "mirabo/extension/MrbServicesImpl.h"
#include "mirabo/tree/SoTreeViewItem.h"
#include "mirabo/viewer/SceneClipboard.h"
#include "StandaloneSupport.h"
#include "support/DialogAnswers.h"

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>
#include <kalmyr/vrml/SoVRMLBox.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLShape.h>

#include <QAction>
#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QTest>

namespace {

using mirabo::ActionId;

class Clipboard : public StandaloneTest {
protected:
    void SetUp() override
    {
        StandaloneTest::SetUp();
        QGuiApplication::clipboard()->clear();
        // root { material, wheel { hub { group { cube } } }, sphere }
        root = SoRef<SoSeparator>(new SoSeparator);
        material = new SoMaterial;
        wheel = new SoSeparator;
        hubNode = new SoSeparator;
        group = new SoGroup;
        cube = new SoCube;
        cube->setName("R\xc3\xa4"
                      "der");
        auto* shift = new SoTranslation;
        auto* follower = new SoTranslation;
        follower->translation.connectFrom(&shift->translation);
        root->addChild(material);
        root->addChild(wheel);
        root->addChild(new SoSphere);
        wheel->addChild(shift);
        wheel->addChild(follower);
        wheel->addChild(hubNode);
        hubNode->addChild(group);
        group->addChild(cube);
        viewer->setScene(root.get(), true);
        support::flush();
    }
    static SoCommandManager* hub() { return MrbServicesImpl::getInstance()->getCommandManager(); }
    void choose(const SoNode* node) const
    {
        ASSERT_TRUE(tree()->revealNode(node));
        support::flush();
    }
    bool isEnabled(ActionId id) const
    {
        support::flush();
        return window()->action(id)->isEnabled();
    }
    int numTops() const { return viewer->getSelectionNode()->getNumChildren(); }

    SoRef<SoSeparator> root;
    SoMaterial* material = nullptr;
    SoSeparator* wheel = nullptr;
    SoSeparator* hubNode = nullptr;
    SoGroup* group = nullptr;
    SoCube* cube = nullptr;
};

TEST_F(Clipboard, PastesWhatWasCopiedBesideTheSceneAndSavesIt)
{
    hub()->copy();
    EXPECT_FALSE(mirabo::mayHoldPath(QGuiApplication::clipboard()->mimeData()))
        << "nothing is chosen yet";
    EXPECT_FALSE(isEnabled(ActionId::Copy));
    EXPECT_FALSE(isEnabled(ActionId::Paste));
    const SoRef<SoPath> whole(new SoPath(root.get()));
    viewer->highlight(whole.get());
    EXPECT_TRUE(isEnabled(ActionId::Copy)) << "selected without a change of the current row";
    viewer->highlight(nullptr);
    EXPECT_FALSE(isEnabled(ActionId::Copy));
    choose(wheel);
    EXPECT_TRUE(isEnabled(ActionId::Copy));
    hub()->copy();
    EXPECT_TRUE(isEnabled(ActionId::Paste));
    hub()->paste();
    support::flush();

    ASSERT_EQ(numTops(), 2);
    ASSERT_EQ(tree()->topLevelItemCount(), 2);
    // As it hung under the root: with the material that it is drawn with, without its siblings.
    auto* pasted = static_cast<SoGroup*>(viewer->getSelectionNode()->getChild(1));
    ASSERT_EQ(pasted->getNumChildren(), 2);
    EXPECT_EQ(pasted->getChild(0)->getTypeId(), SoMaterial::getClassTypeId());
    auto* copy = static_cast<SoSeparator*>(pasted->getChild(1));
    ASSERT_EQ(copy->getNumChildren(), 3);
    const auto* follower = static_cast<SoTranslation*>(copy->getChild(1));
    EXPECT_EQ(follower->translation.getConnectedField(),
              &static_cast<SoTranslation*>(copy->getChild(0))->translation);
    const SoNode* copiedCube =
        static_cast<SoGroup*>(static_cast<SoGroup*>(copy->getChild(2))->getChild(0))->getChild(0);
    EXPECT_EQ(copiedCube->getName(), "R\xc3\xa4"
                                     "der");

    EXPECT_EQ(hub()->undoStack().nameOf(0), "Paste Separator");
    // A pasted node can be chosen, and outlined.
    choose(copiedCube);
    ASSERT_EQ(viewer->getSelectionNode()->getNumSelected(), 1);
    EXPECT_EQ(viewer->getSelectionNode()->getPath(0)->getTail(), copiedCube);

    hub()->undo();
    support::flush();
    EXPECT_EQ(tree()->topLevelItemCount(), 1);
    hub()->redo();
    support::flush();
    EXPECT_EQ(tree()->topLevelItemCount(), 2);

    QTemporaryDir folder;
    for (const auto format :
         {mirabo::SceneFileFormat::KalmyrAscii, mirabo::SceneFileFormat::KalmyrBinary,
          mirabo::SceneFileFormat::Vrml1, mirabo::SceneFileFormat::Vrml2}) {
        const QString path = folder.filePath("scene");
        QFile::remove(path);
        ASSERT_TRUE(viewer->writeScene(nullptr, path, format, false));
        SoInput in;
        ASSERT_TRUE(in.openFile(path.toUtf8().constData()));
        SoSearchAction cubes;
        cubes.setType(format == mirabo::SceneFileFormat::Vrml2 ? SoVRMLBox::getClassTypeId()
                                                               : SoCube::getClassTypeId());
        cubes.setInterest(SoSearchAction::ALL);
        cubes.setSearchingAll(true);
        const SoRef<SoNode> read(in.isFileVRML2() ? static_cast<SoNode*>(SoDB::readAllVRML(&in))
                                                  : SoDB::readAll(&in));
        ASSERT_TRUE(read);
        cubes.apply(read.get());
        EXPECT_EQ(cubes.getPaths().size(), 2u) << static_cast<int>(format);
    }
}

TEST_F(Clipboard, CutsWithWhatIsLeftEmptyAsOneStep)
{
    choose(cube);
    hub()->cutNode();
    support::flush();
    EXPECT_EQ(root->findChild(wheel), -1) << "group, hub and wheel hold no shape any more";
    EXPECT_EQ(root->getNumChildren(), 2) << "the root still holds a sphere";
    EXPECT_EQ(viewer->getSelectionNode()->getNumChildren(), 1);
    EXPECT_EQ(hub()->undoStack().count(), 1);
    EXPECT_EQ(hub()->undoStack().nameOf(0), QString::fromUtf8("Cut R\xc3\xa4"
                                                              "der"));
    hub()->undo();
    support::flush();
    EXPECT_EQ(root->findChild(wheel), 1);
    EXPECT_EQ(wheel->findChild(hubNode), 2);
    EXPECT_EQ(hubNode->findChild(group), 0);
    EXPECT_EQ(group->findChild(cube), 0);
    EXPECT_EQ(static_cast<SoTreeViewItem*>(tree()->currentItem())->getNode(), cube);
    hub()->redo();
    EXPECT_EQ(root->findChild(wheel), -1);
    hub()->paste();
    EXPECT_EQ(numTops(), 2);

    // A separator that holds another shape stays.
    hub()->undo();
    hub()->undo();
    hubNode->addChild(new SoSphere);
    support::flush();
    choose(cube);
    hub()->cutNode();
    EXPECT_EQ(hubNode->findChild(group), -1);
    EXPECT_EQ(wheel->findChild(hubNode), 2);
}

TEST_F(Clipboard, CutsAndPastesTheWholeScene)
{
    choose(cube);
    choose(root.get()); // it is current at first, but not chosen
    hub()->cutNode();
    support::flush();
    EXPECT_EQ(numTops(), 0);
    EXPECT_EQ(tree()->topLevelItemCount(), 0);
    EXPECT_FALSE(viewer->getScene());
    EXPECT_FALSE(isEnabled(ActionId::Save));
    hub()->paste();
    support::flush();
    ASSERT_EQ(tree()->topLevelItemCount(), 1);
    EXPECT_TRUE(viewer->getScene());
    EXPECT_TRUE(isEnabled(ActionId::Save));
    hub()->undo();
    hub()->undo();
    support::flush();
    EXPECT_EQ(viewer->getScene(), root.get());
    EXPECT_EQ(tree()->topLevelItemCount(), 1);
}

TEST_F(Clipboard, CopiesTheCurrentRowWhenNothingCanBeSelected)
{
    viewer->setHighlightMode(SoMiraboViewer::NOT_HIGHLIGHTED);
    choose(cube);
    EXPECT_EQ(viewer->getSelectionNode()->getNumSelected(), 0);
    hub()->cutNode();
    hub()->paste();
    ASSERT_EQ(numTops(), 2);
    EXPECT_EQ(viewer->getSelectionNode()->getChild(1)->getTypeId(), SoCube::getClassTypeId());
}

TEST_F(Clipboard, CutsWhatIsOutlinedWhenThePickedNodeHangsOnAField)
{
    auto* world = new SoVRMLGroup;
    auto* shape = new SoVRMLShape;
    auto* box = new SoVRMLBox;
    shape->geometry = box;
    world->addChild(shape);
    root->addChild(world);
    support::flush();
    const SoRef<SoPath> picked(new SoPath(root.get()));
    picked->append(world, 3);
    picked->append(shape, 0);
    picked->append(box, -1);
    ASSERT_TRUE(tree()->revealPath(*picked));
    support::flush();
    EXPECT_EQ(static_cast<SoTreeViewItem*>(tree()->currentItem())->getNode(), box);
    hub()->cutNode();
    support::flush();
    EXPECT_EQ(world->getNumChildren(), 0);
    EXPECT_EQ(root->findChild(world), -1) << "an empty group goes as well";
    hub()->undo();
    EXPECT_EQ(shape->geometry.getValue(), box);
    EXPECT_EQ(root->findChild(world), 3);
}

TEST_F(Clipboard, LetsTheOldSceneGoWithItsCommands)
{
    choose(cube);
    hub()->cutNode();
    hub()->undo();
    hub()->copy();
    hub()->paste();
    support::flush();
    choose(viewer->getSelectionNode()->getChild(1));
    hub()->treeDeleteNode(); // held by its command alone
    choose(root->getChild(2));
    hub()->treeDeleteNode();
    support::flush();
    ASSERT_EQ(hub()->undoStack().count(), 3);
    mirabo::Observed<SoNode> old;
    old.reset(root.get());
    mirabo::Observed<SoNode> oldCube;
    oldCube.reset(cube);
    root.reset();
    ASSERT_TRUE(old);
    support::DialogAnswers answers({[](QDialog* box) { QTest::keyClick(box, Qt::Key_Escape); }});
    hub()->closeFile();
    support::flush();
    ASSERT_NE(viewer->getScene(), old.get()) << "the changes are not wanted";
    EXPECT_FALSE(old);
    EXPECT_FALSE(oldCube);
}

TEST_F(Clipboard, TakesNothingElse)
{
    for (const char* text :
         {"", "Hello, world", "{\"json\": [1, 2]}", "#Kalmyr V1.0 ascii\nCube { ",
          "Path { head Separator { } indices [ 7 ] }", "\xff\xfe\x00 nonsense"}) {
        QGuiApplication::clipboard()->setText(QString::fromLatin1(text));
        hub()->paste();
        auto* data = new QMimeData;
        data->setData(mirabo::kSceneMimeType, QByteArray(text));
        QGuiApplication::clipboard()->setMimeData(data);
        hub()->paste();
        EXPECT_EQ(numTops(), 1) << text;
    }
    EXPECT_EQ(hub()->undoStack().count(), 0);
}

} // namespace
