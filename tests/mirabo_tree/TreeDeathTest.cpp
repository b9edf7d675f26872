// What no notification reports: deaths, changes below silenced nodes, and names.

#include "TreeTestScene.h"

#include "mirabo/tree/DisabledNodes.h"
#include "mirabo/tree/SoGraphTopologyManager.h"

#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>

#include <QAccessible>
#include <QSignalSpy>
#include <QtTest>

namespace {

/// A shown tree with a group that can lose what it holds without a word.
class TreeDeath : public TreeTest {
protected:
    TreeDeath()
    {
        for (int i = 0; i < 3; ++i) {
            auto* pair = new SoSeparator;
            pair->addChild(new SoCube);
            group->addChild(pair);
        }
        root->addChild(group);
        view.show();
        view.expandAll();
        pass();
    }
    void vanish(int index)
    {
        group->enableNotify(false);
        group->removeChild(index);
        group->enableNotify(true);
    }
    static QString textOf(const QTreeWidgetItem* item, int column = 0)
    {
        return item->text(column);
    }

    SoSeparator* group = new SoSeparator;
};

} // namespace

TEST_F(TreeDeath, RowsOfDeadNodesSaySoAndGoWithTheNextPass)
{
    SoTreeViewItem* pair = row(group->getChild(1));
    SoTreeViewItem* cube = pair->childItem(0);
    vanish(1);
    EXPECT_EQ(textOf(pair), "Separator (deleted)");
    EXPECT_EQ(textOf(cube), "Cube (deleted)");
    EXPECT_EQ(textOf(cube, SoTreeViewItem::Name) + textOf(cube, SoTreeViewItem::ReferenceCount),
              "");
    EXPECT_EQ(cube->getNode(), nullptr);
    EXPECT_EQ(cube->getParentNode(), nullptr);
    EXPECT_EQ(view.context().index.itemCount(), 6u);
    pass();
    EXPECT_EQ(check(), "");
    EXPECT_EQ(row(group)->childCount(), 2);
}

TEST_F(TreeDeath, AnotherNodeAtTheSameAddressIsAnotherNode)
{
    for (int i = 0; i < 50; ++i) {
        group->enableNotify(false);
        group->removeChild(1);
        group->insertChild(new SoSeparator, 1); // often where the other was
        group->enableNotify(true);
        EXPECT_TRUE(row(group)->childItem(1)->isDead());
        group->touch();
        ASSERT_EQ(check(), "");
    }
}

TEST_F(TreeDeath, EverythingThatUsesRowsBearsDeadOnes)
{
    const auto kill = [this](int index) {
        SoTreeViewItem* item = row(group->getChild(index));
        vanish(index);
        return item;
    };
    QSignalSpy chosen(&view, &SoMiraboTreeView::itemChosen);
    QSignalSpy moves(&view, &SoMiraboTreeView::moveRequested);
    view.setCurrentItem(row(group));
    SoTreeViewItem* dead = kill(0);
    view.setCurrentItem(dead);
    QTest::keyClick(&view, Qt::Key_F1);
    QTest::keyClick(&view, Qt::Key_Delete);
    QTest::keyClicks(&view, "cub"); // typing letters
    view.showReferences(dead);
    view.ignoreEnable();
    view.expandBelow(dead);
    EXPECT_FALSE(view.canIgnoreOrEnable());
    EXPECT_EQ(view.getCurrentKit(), nullptr);
    EXPECT_FALSE(mirabo::mayDisable(dead));
    for (int column = 0; column < SoTreeViewItem::kColumnCount; ++column)
        for (int role = 0; role < 20; ++role)
            dead->data(column, role);
    view.onCustomContextMenu(view.visualItemRect(dead).center());
    view.contextMenu();
    pass();
    EXPECT_EQ(check(), "");

    dead = kill(0);
    view.resizeAllColumns();
    view.grab();
    EXPECT_EQ(check(), ""); // painting compares

    view.showReferences(row(group->getChild(0)));
    const SoNode* marked = group->getChild(0);
    QTest::mousePress(view.viewport(), Qt::LeftButton, {},
                      view.visualItemRect(row(marked)).center());
    dead = kill(0);
    EXPECT_FALSE(view.hasMarkedReferences());
    view.nextReference();
    QTest::mouseRelease(view.viewport(), Qt::LeftButton);
    pass();
    EXPECT_EQ(check(), "");
    for (const QList<QVariant>& choice : chosen)
        EXPECT_TRUE(choice[0].value<SoTreeViewItem*>());
    EXPECT_EQ(moves.size(), 0);
}

TEST_F(TreeDeath, ForgetsKitsAndFieldsThatDie)
{
    auto* kit = new SoShapeKit;
    auto* holder = new FieldHolder;
    const SoRef<SoCube> survivor(new SoCube);
    kit->setPart("shape", survivor.get());
    holder->one = survivor.get();
    group->addChild(kit);
    group->addChild(holder);
    std::vector<SoTreeViewItem*> rows = view.itemsOf(survivor.get());
    ASSERT_EQ(rows.size(), 2u);
    SoTreeViewItem* part = rows[0]->getPartKit() ? rows[0] : rows[1];
    SoTreeViewItem* value = rows[0]->getPartKit() ? rows[1] : rows[0];
    ASSERT_TRUE(value->getSourceField());
    group->enableNotify(false);
    group->removeChild(4);
    group->removeChild(3);
    EXPECT_EQ(part->getPartKit(), nullptr);
    EXPECT_EQ(value->getSourceField(), nullptr);
    EXPECT_TRUE(value->isDirectlyFromField());
    view.graphChanged();
    EXPECT_EQ(part->getNode(), survivor.get());
    EXPECT_EQ(textOf(part), "Cube");
    part->getPartParentName();
    part->isPublicPart();
    value->data(0, Qt::FontRole);
    group->enableNotify(true);
    pass();
    EXPECT_EQ(rowsOf(survivor.get()), 0);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeDeath, TheRootMayDieInAContainerThatIsSilent)
{
    view.setSceneGraph(nullptr);
    const SoRef<SoSeparator> container(new SoSeparator);
    view.topologyManager().attach(container.get());
    auto* scene = new SoSeparator;
    scene->addChild(new SoCube);
    container->addChild(scene);
    ASSERT_EQ(view.getRoot(), scene);
    container->enableNotify(false);
    container->removeAllChildren();
    view.grab();
    pass();
    EXPECT_EQ(view.topLevelItemCount(), 0);
    container->enableNotify(true);
    container->addChild(new SoCube);
    EXPECT_EQ(view.topLevelItemCount(), 1);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeDeath, FindsWhatHappenedBelowASilentNodeWithItsNextNotification)
{
    auto* inner = static_cast<SoSeparator*>(group->getChild(1));
    const auto inSilence = [this](auto edit) {
        group->enableNotify(false);
        edit();
        group->enableNotify(true);
    };
    inSilence([&] { inner->addChild(new SoMaterial); });
    group->touch();
    EXPECT_EQ(check(), "");

    // Any notification that passes it will do, not only one of its own.
    inSilence([&] {
        auto* deep = new SoSeparator;
        inner->addChild(deep);
        deep->addChild(new SoCube);
        static_cast<SoGroup*>(group->getChild(0))->removeAllChildren();
    });
    static_cast<SoCube*>(static_cast<SoGroup*>(group->getChild(2))->getChild(0))->width = 5;
    EXPECT_EQ(check(), "");

    // One silent node below another, with the outer one heard first and last.
    for (const bool outerFirst : {true, false}) {
        group->enableNotify(false);
        inner->enableNotify(false);
        inner->addChild(new SoCube);
        group->removeChild(2);
        group->addChild(new SoSeparator);
        inner->enableNotify(true);
        inner->touch();
        if (outerFirst)
            group->enableNotify(true), group->touch();
        inner->enableNotify(false);
        inner->removeChild(0);
        inner->enableNotify(true);
        group->enableNotify(true);
        outerFirst ? inner->touch() : group->touch();
        EXPECT_EQ(check(), "") << outerFirst;
    }

    // Silent when it was shown first.
    auto* quiet = new SoSeparator;
    quiet->addChild(new SoSeparator);
    quiet->enableNotify(false);
    root->addChild(quiet);
    static_cast<SoGroup*>(quiet->getChild(0))->addChild(new SoCube);
    quiet->enableNotify(true);
    quiet->touch();
    EXPECT_EQ(check(), "");
}

TEST_F(TreeDeath, ComparesOnlyWhatChangedInSilence)
{
    auto* wide = new SoSeparator;
    for (int i = 0; i < 200; ++i) {
        auto* pair = new SoSeparator;
        pair->addChild(new SoCube);
        wide->addChild(pair);
    }
    root->addChild(wide);
    wide->enableNotify(false);
    static_cast<SoGroup*>(wide->getChild(100))->addChild(new SoMaterial);
    // A row that is wrong, though its node has not changed, tells whether it was compared.
    SoTreeViewItem* other = row(wide->getChild(50));
    SoTreeViewItem* lost = other->childItem(0);
    other->removeChildItem(lost);
    wide->enableNotify(true);
    wide->touch();
    EXPECT_EQ(row(wide->getChild(100))->childCount(), 2);
    EXPECT_EQ(other->childCount(), 0);
    other->addChildItem(lost);
    EXPECT_EQ(check(), "");
}

TEST_F(TreeDeath, ShowsNamesGivenByTheHost)
{
    std::vector<SoNode*> named;
    QObject::connect(&view, &SoMiraboTreeView::nodeNameChanged, &view,
                     [&named](SoNode* node) { named.push_back(node); });
    const QImage before = view.grab().toImage();
    const quint64 id = group->getChangeId();
    group->setName("engine");
    const SoRef<SoCube> stranger(new SoCube);
    stranger->setName("stranger");
    pass();
    EXPECT_EQ(textOf(row(group), SoTreeViewItem::Name), "engine");
    EXPECT_NE(view.grab().toImage(), before);
    EXPECT_EQ(named, std::vector<SoNode*>{group});
    EXPECT_EQ(group->getChangeId(), id); // nothing is drawn anew for a name
}
