#pragma once

#include "mirabo/tree/SoGraphTopologyManager.h"
#include "mirabo/tree/SoTreeDeleteNodeCommand.h"
#include "TreeEditScene.h"

#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

#include <string>

/// root { Separator wheel { Material, Cube }, Sphere }
class TreeEdit : public TreeTest {
protected:
    TreeEdit() : edited(view)
    {
        view.topologyManager().recentChanges().setQuietTime(0);
        wheel = new SoSeparator;
        wheel->setName("wheel");
        wheel->addChild(material = new SoMaterial);
        wheel->addChild(cube = new SoCube);
        root->addChild(wheel);
        root->addChild(sphere = new SoSphere);
        view.show();
        view.expandAll();
        pass();
    }
    ~TreeEdit() override { view.setSceneGraph(nullptr); }

    /// Makes an edit; it, its undo and its redo leave tree and graph as they have to be.
    template <class Edit>
    void expectUndoable(const Edit& edit)
    {
        const std::string before = textOf(root.get());
        const SoNode* current = view.getCurrentNode();
        ASSERT_TRUE(edit());
        EXPECT_EQ(edited.box(), "");
        const std::string behind = textOf(root.get());
        EXPECT_EQ(check(), "");
        for (int i = 0; i < 2; ++i) {
            edited.stack.undo();
            EXPECT_EQ(textOf(root.get()), before);
            EXPECT_EQ(check(), "");
            EXPECT_EQ(view.getCurrentNode(), current);
            edited.stack.redo();
            EXPECT_EQ(textOf(root.get()), behind);
            EXPECT_EQ(check(), "");
            pass();
        }
        edited.stack.undo();
        EXPECT_EQ(textOf(root.get()), before);
    }
    /// An edit that is refused: nothing has changed.
    template <class Edit>
    std::string boxOf(const Edit& edit)
    {
        const std::string before = textOf(root.get());
        const int count = edited.stack.count();
        EXPECT_FALSE(edit());
        EXPECT_EQ(textOf(root.get()), before);
        EXPECT_EQ(edited.stack.count(), count);
        EXPECT_EQ(check(), "");
        return edited.box();
    }
    int kindOf(SoTreeViewItem* item)
    {
        bool done = false;
        SoTreeDeleteNodeCommand command(item, std::make_shared<mirabo::TreeEditHost>(), done);
        EXPECT_TRUE(done);
        const int kind = command.getDeleteKind();
        command.undo();
        return kind;
    }

    EditedTree edited;
    SoSeparator* wheel;
    SoMaterial* material;
    SoCube* cube;
    SoSphere* sphere;
};
