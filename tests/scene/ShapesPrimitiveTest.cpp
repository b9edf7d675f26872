#include "NodesSupport.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/details/SoFaceDetail.h>
#include <kalmyr/nodes/SoComplexity.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoMaterialBinding.h>
#include <kalmyr/nodes/SoPickStyle.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoCylinder.h>
#include <kalmyr/shapes/SoSphere.h>

#include <cmath>
#include <numbers>

namespace {

struct Primitive {
    const char* type;
    const char* fields;
    float volume;
    SbBox3f box;
};

class PrimitiveTest : public nodetest::NodesTest, public ::testing::WithParamInterface<Primitive> {
protected:
    SoRef<SoSeparator> makeScene()
    {
        SoRef<SoSeparator> root(new SoSeparator);
        auto* shape = SoNode::create(SoType::fromName(SbName(GetParam().type)));
        EXPECT_TRUE(shape->set(GetParam().fields));
        root->addChild(shape);
        return root;
    }
};

constexpr float kPi = std::numbers::pi_v<float>;

} // namespace

TEST_P(PrimitiveTest, IsAClosedOutwardSurfaceOfTheRightSize)
{
    const auto root = makeScene();
    auto* complexity = new SoComplexity;
    complexity->value.setValue(1);
    root->insertChild(complexity, 0);
    const auto g = nodetest::geometryOf(root.get());
    ASSERT_TRUE(g);
    float volume = 0;
    for (std::size_t i = 0; i < g->triangles.size(); i += 3) {
        const SbVec3f &a = g->positions[g->triangles[i]], &b = g->positions[g->triangles[i + 1]],
                      &c = g->positions[g->triangles[i + 2]];
        volume += a.dot(b.cross(c)) / 6;
        const SbVec3f face = (b - a).cross(c - a).normalized();
        for (int k = 0; k < 3; ++k) {
            const SbVec3f& n = g->normals[g->triangles[i + static_cast<std::size_t>(k)]];
            EXPECT_NEAR(n.length(), 1, 1e-5f);
            EXPECT_GT(n.dot(face), 0.9f);
        }
    }
    EXPECT_NEAR(volume / GetParam().volume, 1, 0.02f);
    EXPECT_TRUE(g->solid);
    EXPECT_EQ(g->texCoords.size(), g->positions.size());
}

TEST_P(PrimitiveTest, BoxNeedsNoGeometryAndHoldsIt)
{
    const auto root = makeScene();
    SoGetBoundingBoxAction measure(SbViewportRegion(100, 100));
    measure.apply(root.get());
    const SbBox3f box = measure.getBoundingBox();
    EXPECT_EQ(box, GetParam().box);
    const SbBox3f& drawn = nodetest::geometryOf(root.get())->getBox();
    for (int k = 0; k < 3; ++k) {
        EXPECT_GE(drawn.getMin()[k], box.getMin()[k] - 1e-5f);
        EXPECT_LE(drawn.getMax()[k], box.getMax()[k] + 1e-5f);
    }
}

TEST_P(PrimitiveTest, EqualShapesShareOneGeometryWhileItLives)
{
    const auto one = makeScene(), two = makeScene();
    const std::uint64_t id = nodetest::geometryOf(one.get())->getId();
    EXPECT_EQ(nodetest::geometryOf(two.get())->getId(), id);
    two->removeAllChildren();
    EXPECT_EQ(nodetest::geometryOf(one.get())->getId(), id);
    one->getChild(0)->touch();
    EXPECT_NE(nodetest::geometryOf(one.get())->getId(), id); // the last user had let go
}

TEST_P(PrimitiveTest, IsPickedOnItsSurface)
{
    const auto root = makeScene();
    SoRayPickAction pick(SbViewportRegion(100, 100));
    pick.setPickAll(true);
    const SbVec3f start(0.11f, 0.12f, 10);
    pick.setRay(start, {0, 0, -1});
    pick.apply(root.get());
    ASSERT_EQ(pick.getPickedPoints().size(), 2u);
    EXPECT_GT(pick.getPickedPoint(0)->getNormal()[2], 0);
    EXPECT_LT(pick.getPickedPoint(1)->getNormal()[2], 0);
    EXPECT_NE(pick.getPickedPoint(0)->getDetail(), nullptr);
    EXPECT_TRUE(GetParam().box.intersect(pick.getPickedPoint(0)->getPoint()));
    pick.setRay(start + SbVec3f(20, 0, 0), {0, 0, -1});
    pick.apply(root.get());
    EXPECT_TRUE(pick.getPickedPoints().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, PrimitiveTest,
    ::testing::Values(
        Primitive{"Cube", "width 2 height 4 depth 6", 48, SbBox3f(-1, -2, -3, 1, 2, 3)},
        Primitive{"Sphere", "radius 3", 36 * kPi, SbBox3f(-3, -3, -3, 3, 3, 3)},
        Primitive{"Cone", "bottomRadius 2 height 3", 4 * kPi, SbBox3f(-2, -1.5f, -2, 2, 1.5f, 2)},
        Primitive{"Cylinder", "radius 2 height 3", 12 * kPi, SbBox3f(-2, -1.5f, -2, 2, 1.5f, 2)}),
    [](const auto& info) { return std::string(info.param.type); });

namespace {
using ShapeTest = nodetest::NodesTest;
}

TEST_F(ShapeTest, ComplexityRefines)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* complexity = new SoComplexity;
    root->addChild(complexity);
    root->addChild(new SoSphere);
    std::size_t last = 0;
    for (const float value : {0.0f, 0.5f, 1.0f}) {
        complexity->value.setValue(value);
        const std::size_t now = nodetest::geometryOf(root.get())->getNumTriangles();
        EXPECT_GT(now, last);
        last = now;
    }
}

TEST_F(ShapeTest, PartsCanBeLeftOutAndColored)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* material = new SoMaterial;
    material->diffuseColor.setValues({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    auto* binding = new SoMaterialBinding;
    auto* cylinder = new SoCylinder;
    for (SoNode* node : std::initializer_list<SoNode*>{material, binding, cylinder})
        root->addChild(node);
    const std::size_t whole = nodetest::geometryOf(root.get())->getNumTriangles();
    EXPECT_TRUE(nodetest::geometryOf(root.get())->colors.empty());
    binding->value.setValue(SoMaterialBinding::PER_PART);
    auto g = nodetest::geometryOf(root.get());
    for (std::size_t i = 0; i < g->triangles.size(); ++i) {
        const float up = g->normals[g->triangles[i]][1];
        const std::uint32_t expected = up > 0.5f    ? 0x00ff00ffu
                                       : up < -0.5f ? 0x0000ffffu
                                                    : 0xff0000ffu;
        ASSERT_EQ(g->colors[g->triangles[i]], expected);
    }
    cylinder->parts.setValue(SoCylinder::SIDES);
    g = nodetest::geometryOf(root.get());
    EXPECT_LT(g->getNumTriangles(), whole);
    EXPECT_TRUE(g->twoSided);
    EXPECT_FALSE(g->solid);
    cylinder->parts.setValue(0);
    binding->value.setValue(SoMaterialBinding::OVERALL);
    EXPECT_FALSE(nodetest::geometryOf(root.get()));
}

TEST_F(ShapeTest, PickStyleIsObeyed)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* style = new SoPickStyle;
    root->addChild(style);
    root->addChild(new SoSphere);
    const auto picks = [&](float x, float y) {
        SoRayPickAction pick(SbViewportRegion(100, 100));
        pick.setRay({x, y, 10}, {0, 0, -1});
        pick.apply(root.get());
        return pick.getPickedPoint() ? pick.getPickedPoint()->getPoint()[2] : -1.0f;
    };
    EXPECT_EQ(picks(0.9f, 0.9f), -1);
    EXPECT_NEAR(picks(0, 0), 1, 1e-3f);
    style->style.setValue(SoPickStyle::BOUNDING_BOX);
    EXPECT_NEAR(picks(0.9f, 0.9f), 1, 1e-5f);
    style->style.setValue(SoPickStyle::UNPICKABLE);
    EXPECT_EQ(picks(0, 0), -1);
}

TEST_F(ShapeTest, PrimitivesAreCountedAndHandedOut)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* material = new SoMaterial;
    material->diffuseColor.setValue(0, 0, 1);
    root->addChild(material);
    auto* cube = new SoCube;
    root->addChild(cube);
    root->addChild(cube);
    SoGetPrimitiveCountAction count;
    count.apply(root.get());
    EXPECT_EQ(count.getTriangleCount(), 24u);
    int triangles = 0;
    SoCallbackAction action;
    action.addTriangleCallback(SoShape::getClassTypeId(),
                               [&](SoCallbackAction*, const SoNode* node,
                                   const SoPrimitiveVertex& a, const SoPrimitiveVertex&,
                                   const SoPrimitiveVertex&) {
                                   ++triangles;
                                   EXPECT_EQ(node, cube);
                                   EXPECT_EQ(a.color, 0x0000ffffu);
                                   EXPECT_NEAR(std::abs(a.point.dot(a.normal)), 1, 1e-5f);
                               });
    action.apply(root.get());
    EXPECT_EQ(triangles, 24);
}
