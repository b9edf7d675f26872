#include "TreeTestScene.h"

#include "mirabo/tree/NodeAdding.h"
#include "mirabo/tree/SoMiraboAddDialog.h"

#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>

#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

namespace {

/// Adds as the edit commands do: into a group, behind anything else.
class NodeAddingTest : public TreeTest {
protected:
    NodeAddingTest()
    {
        group = new SoSeparator;
        cube = new SoCube;
        group->addChild(cube);
        root->addChild(group);
        adding = new mirabo::NodeAdding(&view, &view, [this](SoNode* node, SoTreeViewItem* target) {
            if (refuses)
                return false;
            SoNode* at = target->getNode();
            if (at->isOfType(SoGroup::getClassTypeId())) {
                static_cast<SoGroup*>(at)->addChild(node);
            } else {
                auto* parent = static_cast<SoGroup*>(target->getParentNode());
                parent->insertChild(node, parent->findChild(at) + 1);
            }
            return true;
        });
        view.show();
    }
    void openAt(SoNode* node)
    {
        view.setCurrentItem(row(node));
        adding->open();
    }
    void addType(const char* name)
    {
        for (auto* list : adding->dialog()->findChildren<QTreeWidget*>())
            for (auto* entry : list->findItems(name, Qt::MatchExactly | Qt::MatchRecursive))
                if (entry->childCount() == 0)
                    list->setCurrentItem(entry);
        for (QPushButton* button : adding->dialog()->findChildren<QPushButton*>())
            if (button->text() == "&Add")
                QTest::mouseClick(button, Qt::LeftButton);
    }
    std::string typesIn(const SoGroup* in) const
    {
        std::string types;
        for (int i = 0; i < in->getNumChildren(); ++i)
            types += std::string(in->getChild(i)->getTypeId().getName().view()) + ' ';
        return types;
    }

    SoSeparator* group;
    SoCube* cube;
    mirabo::NodeAdding* adding;
    bool refuses = false;
};

TEST_F(NodeAddingTest, KeepsItsTargetFromNodeToNode)
{
    openAt(group);
    addType("Separator");
    EXPECT_EQ(view.getCurrentNode(), group->getChild(1)) << "the added one is current";
    addType("Cone");
    pass();
    EXPECT_EQ(typesIn(group), "Cube Separator Cone ") << "not into the one that is current now";
    EXPECT_EQ(adding->target(), row(group));

    view.setCurrentItem(row(cube)); // the user's choice
    addType("Sphere");
    addType("Cylinder");
    EXPECT_EQ(typesIn(group), "Cube Sphere Separator Cone Cylinder ");

    refuses = true;
    addType("Cone");
    EXPECT_EQ(typesIn(group), "Cube Sphere Separator Cone Cylinder ");
    EXPECT_EQ(adding->target(), row(group));
}

TEST_F(NodeAddingTest, StaysAtItsOccurrenceOfASharedTarget)
{
    auto* other = new SoSeparator;
    other->addChild(group);
    root->addChild(other);
    SoTreeViewItem* second = view.occurrencesOf(group)[1];
    view.setCurrentItem(second);
    adding->open();
    addType("Cone");
    EXPECT_EQ(rowsOf(group->getChild(1)), 2);
    EXPECT_EQ(asRow(view.currentItem())->parentItem(), second);
    EXPECT_EQ(adding->target(), second);
}

TEST_F(NodeAddingTest, GoesOnWhenTheTargetOrTheSceneGoes)
{
    openAt(group);
    root->removeChild(group);
    pass();
    addType("Cone");
    EXPECT_EQ(typesIn(root.get()), "Cone ") << "at the row that is current instead";
    view.setSceneGraph(nullptr);
    addType("Cone");
    EXPECT_EQ(view.topLevelItemCount(), 0);
}

TEST_F(NodeAddingTest, ClosesAndOpensAgain)
{
    openAt(group);
    const QPointer<SoMiraboAddDialog> first = adding->dialog();
    adding->open();
    EXPECT_EQ(adding->dialog(), first) << "only brought to the front";
    QTest::keyClick(first, Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(first.isNull());
    adding->open();
    addType("Cone");
    EXPECT_EQ(typesIn(group), "Cube Cone ");
    delete adding;
}

} // namespace
