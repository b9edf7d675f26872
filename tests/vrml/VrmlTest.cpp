#include "support/ErrorGuard.h"

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/elements/SoState.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/vrml/SoVRMLGeometry.h>
#include <kalmyr/vrml/SoVRMLGroup.h>
#include <kalmyr/vrml/SoVRMLInline.h>
#include <kalmyr/vrml/SoVRMLShape.h>
#include <kalmyr/vrml/SoVRMLViewpoint.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>

namespace {

class VrmlTest : public testing::Test {
protected:
    VrmlTest() { SoDB::init(); }
};

SoRef<SoVRMLGroup> scene(const std::string& text)
{
    SoInput in;
    const std::string whole = "#VRML V2.0 utf8\n" + text;
    if (!in.setBuffer(whole.data(), whole.size()))
        return nullptr;
    return SoRef<SoVRMLGroup>(SoDB::readAllVRML(&in));
}

SbBox3f boxOf(SoNode* node)
{
    SoGetBoundingBoxAction action{SbViewportRegion()};
    action.apply(node);
    return action.getBoundingBox();
}

/// The geometry of "Shape { geometry TEXT }".
SoRef<SoGeometry> geometry(const std::string& text)
{
    const auto root = scene("Shape { geometry " + text + " }");
    if (!root)
        return nullptr;
    auto* shape = static_cast<SoVRMLShape*>(root->getChild(0));
    SoCallbackAction action;
    return static_cast<SoVRMLGeometry*>(shape->geometry.getValue())->getGeometry(action.getState());
}

/// Volume inside the triangles; negative when they show their backs.
double volume(const SoGeometry& g)
{
    double sum = 0;
    for (std::size_t i = 0; i + 2 < g.triangles.size(); i += 3) {
        const SbVec3f& a = g.positions[g.triangles[i]];
        sum += a.dot(g.positions[g.triangles[i + 1]].cross(g.positions[g.triangles[i + 2]])) / 6;
    }
    return sum;
}

} // namespace

TEST_F(VrmlTest, BodiesAreClosedAndFaceOutwards)
{
    const double disk = 16 * std::sin(std::numbers::pi / 16); // the round ones have 32 corners
    EXPECT_NEAR(volume(*geometry("Box { size 1 2 3 }")), 6, 1e-4);
    EXPECT_NEAR(volume(*geometry("Cylinder { radius 2 height 3 }")), disk * 4 * 3, 1e-3);
    EXPECT_NEAR(volume(*geometry("Cone { bottomRadius 2 height 3 }")), disk * 4, 1e-3);
    const double ball = volume(*geometry("Sphere { radius 2 }"));
    EXPECT_LT(ball, 4.0 / 3 * std::numbers::pi * 8);
    EXPECT_GT(ball, 4.0 / 3 * std::numbers::pi * 8 * 0.97);
    EXPECT_NEAR(volume(*geometry("Extrusion { }")), 4, 1e-4);
    // Along x, half as wide: the section stands square to the spine.
    EXPECT_NEAR(volume(*geometry("Extrusion { spine [ 0 0 0, 5 0 0 ] scale 0.5 0.5 }")), 5, 1e-4);
    EXPECT_NEAR(volume(*geometry("Extrusion { spine [ 0 0 0, 0 1 0 ] scale [ 1 1, 0 0 ] }")),
                4.0 / 3, 1e-4);
    for (const char* text : {"Box { }", "Sphere { }", "Cone { }", "Cylinder { }"}) {
        const auto body = geometry(text);
        for (std::size_t i = 0; i < body->positions.size(); ++i)
            EXPECT_GE(body->normals[i].dot(body->positions[i]), -1e-5f) << text;
    }
}

TEST_F(VrmlTest, GridsRiseAndFaceUp)
{
    const auto grid = geometry(
        "ElevationGrid { xDimension 3 zDimension 2 xSpacing 2 zSpacing 5 height [ 0 1 0 0 1 0 ] }");
    ASSERT_EQ(grid->getNumTriangles(), 4u);
    EXPECT_EQ(grid->getBox().getMax(), SbVec3f(4, 1, 5));
    for (const SbVec3f& normal : grid->normals)
        EXPECT_GT(normal[1], 0);
    auto errors = support::expectErrors();
    EXPECT_FALSE(geometry("ElevationGrid { xDimension 50000 zDimension 50000 height [ 0 ] }"));
}

TEST_F(VrmlTest, FaceSetsTakeColoursAndLeaveBrokenFacesOut)
{
    const char* corners = "coord Coordinate { point [ 0 0 0, 1 0 0, 1 1 0, 0 1 0 ] } color Color { "
                          "color [ 1 0 0, 0 0 1 ] } colorPerVertex FALSE ";
    const auto faces = geometry("IndexedFaceSet { " + std::string(corners)
                                + "coordIndex [ 0 1 2 -1 0 2 3 ] colorIndex [ 1 0 ] }");
    ASSERT_EQ(faces->getNumTriangles(), 2u);
    EXPECT_EQ(faces->colors[faces->triangles[0]], 0x0000ffffu);
    EXPECT_EQ(faces->colors[faces->triangles[3]], 0xff0000ffu);
    auto errors = support::expectErrors();
    EXPECT_EQ(
        geometry("IndexedFaceSet { " + std::string(corners) + "coordIndex [ 0 1 2 -1 0 2 9 -1 ] }")
            ->getNumTriangles(),
        1u);
}

TEST_F(VrmlTest, TransformsKeepToTheirChildren)
{
    const auto root = scene(R"(
        Transform { translation 10 0 0 scale 2 2 2 children Shape { geometry Box { } } }
        Shape { geometry Box { } })");
    EXPECT_EQ(boxOf(root.get()).getMin(), SbVec3f(-1, -2, -2));
    EXPECT_EQ(boxOf(root.get()).getMax(), SbVec3f(12, 2, 2));
}

TEST_F(VrmlTest, SwitchesAndFieldsShowInTheBox)
{
    const auto root = scene("Switch { whichChoice 1 choice [ Shape { geometry Box { size 9 9 9 } } "
                            "Shape { geometry Box { } } ] }");
    EXPECT_EQ(boxOf(root.get()).getMax(), SbVec3f(1, 1, 1));
    root->getChild(0)->set("whichChoice 0");
    EXPECT_EQ(boxOf(root.get()).getMax(), SbVec3f(4.5f, 4.5f, 4.5f));
    root->getChild(0)->set("whichChoice 7");
    EXPECT_TRUE(boxOf(root.get()).isEmpty());
}

TEST_F(VrmlTest, ChildrenAreOneWithTheirField)
{
    const SoRef<SoVRMLGroup> group(new SoVRMLGroup);
    group->addChild(new SoVRMLGroup);
    EXPECT_EQ(group->children.getNum(), 1);
    group->children.addNode(new SoVRMLShape);
    EXPECT_EQ(group->getNumChildren(), 2);
    const SoRef<SoNode> copy(group->copy());
    EXPECT_EQ(copy->getChildren()->getLength(), 2);
    EXPECT_EQ(group->getField("addChildren")->getFieldType(), SoField::EVENT_IN);
}

TEST_F(VrmlTest, InlinesReadTheirFilesAndNeverThemselves)
{
    SoInput::addInMemoryTextFile(
        "inner.wrl",
        "#VRML V2.0 utf8\nShape { geometry Box { size 4 4 4 } } Inline { url \"outer.wrl\" }");
    SoInput::addInMemoryTextFile(
        "outer.wrl", "#VRML V2.0 utf8\nInline { url [ \"http://example.invalid/x.wrl\", "
                     "\"inner.wrl\" ] } Inline { url \"none.wrl\" bboxSize 20 2 2 }");
    auto warnings = support::expectErrors();
    SoInput in;
    ASSERT_TRUE(in.openFile("outer.wrl"));
    const SoRef<SoVRMLGroup> root(SoDB::readAllVRML(&in));
    ASSERT_TRUE(root);
    EXPECT_EQ(warnings.count(), 2u);
    EXPECT_TRUE(warnings.contains("inline 'outer.wrl' holds itself"));
    EXPECT_TRUE(warnings.contains("inline 'none.wrl' cannot be found"));
    auto* first = static_cast<SoVRMLInline*>(root->getChild(0));
    ASSERT_TRUE(first->getChildData());
    EXPECT_EQ((*first->getChildren())[1], first->getChildData());
    EXPECT_EQ(boxOf(first).getMax(), SbVec3f(2, 2, 2));
    EXPECT_EQ(boxOf(root.get()).getMax()[0], 10); // of the box that the second one declares
    const SoRef<SoNode> copy(first->copy());
    EXPECT_EQ(copy->getChildren()->getLength(), 2);
    EXPECT_TRUE(first->requestChildrenFromURL());
    EXPECT_EQ(first->getChildren()->getLength(), 2);
    for (const char* name : {"inner.wrl", "outer.wrl"})
        SoInput::removeInMemoryTextFile(name);
}

TEST_F(VrmlTest, ViewpointsSeeTheSmallerSideUnderTheirAngle)
{
    const SoRef<SoVRMLViewpoint> view(new SoVRMLViewpoint);
    view->fieldOfView = 1;
    EXPECT_FLOAT_EQ(view->getHeightAngle(2), 1);
    const float tall = view->getHeightAngle(0.5f);
    EXPECT_NEAR(std::tan(tall / 2) * 0.5f, std::tan(0.5f), 1e-5f);
    SbMatrix moved;
    moved.setTranslate({1, 2, 3});
    EXPECT_EQ(view->getPosition(moved), SbVec3f(1, 2, 13));
}
