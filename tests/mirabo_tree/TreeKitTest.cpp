#include "TreeTestScene.h"

#include "mirabo/tree/DisabledNodes.h"

#include <kalmyr/nodekits/SoAppearanceKit.h>
#include <kalmyr/nodekits/SoNodeKitListPart.h>
#include <kalmyr/nodekits/SoNodekitsInit.h>
#include <kalmyr/nodekits/SoSeparatorKit.h>
#include <kalmyr/nodekits/SoShapeKit.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

namespace {

class TreeKitTest : public TreeTest {
protected:
    TreeKitTest() { root->addChild(kit.get()); }
    QString nameOf(const SoNode* node) const
    {
        return row(node) ? row(node)->data(1, Qt::DisplayRole).toString() : QString("no row");
    }
    SoNode* part(const char* name, bool make = true) { return kit->getPart(name, make); }

    SoRef<SoShapeKit> kit{new SoShapeKit};
};

} // namespace

TEST_F(TreeKitTest, ShowsPartsWhereTheyHangAndOnce)
{
    SoNode* material = part("appearance.material");
    SoNode* transform = part("transform");
    ASSERT_NE(material, nullptr);
    EXPECT_EQ(check(), "");
    EXPECT_EQ(rowsOf(material), 1);
    EXPECT_EQ(rowsOf(transform), 1);
    const SoTreeViewItem* top = row(kit.get())->childItem(0);
    EXPECT_EQ(top->getPartName(), SbName("topSeparator"));
    EXPECT_EQ(top->getPartKind(), PartInfo::TopSeparator);
    EXPECT_FALSE(top->isPublicPart());
    EXPECT_TRUE(top->isDirectlyFromField());

    const SoTreeViewItem* item = row(transform);
    EXPECT_EQ(item->parentItem(), top);
    EXPECT_EQ(nameOf(transform), "transform");
    EXPECT_EQ(item->getPartKind(), PartInfo::Part);
    EXPECT_EQ(item->getPartNumber(), kit->getNodekitCatalog()->getPartNumber("transform"));
    EXPECT_EQ(item->getPartParentName(), SbName("topSeparator"));
    EXPECT_TRUE(item->isPublicPart());
    EXPECT_EQ(item->getPartKit(), kit.get());
    EXPECT_EQ(item->data(0, Qt::FontRole).value<QFont>(), view.context().styles.type.font);
    EXPECT_FALSE(mirabo::mayDisable(item));
}

TEST_F(TreeKitTest, FollowsPartsThatComeGoAndChange)
{
    EXPECT_TRUE(kit->setPart("shape", new SoSphere));
    EXPECT_EQ(nameOf(part("shape")), "shape");
    EXPECT_EQ(check(), "");
    SoNode* material = part("appearance.material");
    EXPECT_EQ(check(), "");
    EXPECT_TRUE(kit->setPart("appearance.material", new SoMaterial));
    EXPECT_EQ(rowsOf(part("appearance.material")), 1);
    EXPECT_EQ(check(), "");
    (void)material;
    EXPECT_TRUE(kit->setPart("appearance", nullptr));
    EXPECT_EQ(check(), "");
    kit->transform = new SoTransform;
    EXPECT_EQ(nameOf(kit->transform.getValue()), "transform");
    EXPECT_EQ(check(), "");
}

TEST_F(TreeKitTest, NamesEntriesOfListsAsTheyStandNow)
{
    std::vector<SoNode*> entries;
    for (int i = 0; i < 3; ++i) {
        const SbString name(("childList[" + std::to_string(i) + "]").c_str());
        ASSERT_TRUE(kit->setPart(name, new SoShapeKit));
        entries.push_back(kit->getPart(name, false));
    }
    EXPECT_EQ(check(), "");
    EXPECT_EQ(nameOf(entries[2]), "childList[2]");
    auto* list = static_cast<SoNodeKitListPart*>(part("childList", false));
    ASSERT_NE(list, nullptr);
    list->removeChild(0);
    EXPECT_EQ(check(), "");
    EXPECT_EQ(nameOf(entries[2]), "childList[1]");
    list->removeAllChildren();
    EXPECT_EQ(check(), "");
}

TEST_F(TreeKitTest, KeepsTheNodesOwnNameWhenTheKitDoesNotKnowIt)
{
    auto* group = new SoGroup;
    auto* cube = new SoCube;
    cube->setName("mine");
    group->addChild(cube);
    ASSERT_TRUE(kit->setPart("callbackList", nullptr));
    auto* holder = new SoSeparatorKit;
    root->addChild(holder);
    root->addChild(group);
    EXPECT_EQ(nameOf(cube), "mine");
    EXPECT_FALSE(row(cube)->isPart());
    EXPECT_EQ(check(), "");
    EXPECT_EQ(row(root.get())->getPartNumber(), -1);
}

TEST_F(TreeKitTest, CountsKitsAsTheSettingsSay)
{
    const SoTreeViewItem* item = row(kit.get());
    EXPECT_EQ(item->shownReferenceCount(), 1); // the group that holds it
    view.context().realKitCounter = true;
    EXPECT_EQ(item->shownReferenceCount(), 2);
}
