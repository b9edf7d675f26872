#include "NodesSupport.h"

#include <kalmyr/actions/SoGetMatrixAction.h>
#include <kalmyr/elements/SoCoordinateElements.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoLightElement.h>
#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/lights/SoDirectionalLight.h>
#include <kalmyr/lights/SoPointLight.h>
#include <kalmyr/lights/SoSpotLight.h>
#include <kalmyr/nodes/SoBaseColor.h>
#include <kalmyr/nodes/SoCoordinate4.h>
#include <kalmyr/nodes/SoDrawStyle.h>
#include <kalmyr/nodes/SoEnvironment.h>
#include <kalmyr/nodes/SoGradientBackground.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoMatrixTransform.h>
#include <kalmyr/nodes/SoPackedColor.h>
#include <kalmyr/nodes/SoResetTransform.h>
#include <kalmyr/nodes/SoRotationXYZ.h>
#include <kalmyr/nodes/SoScale.h>
#include <kalmyr/nodes/SoTexture2Transform.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/nodes/SoTranslation.h>
#include <kalmyr/shapes/SoCube.h>

namespace {

using PropertyTest = nodetest::NodesTest;

/// What the shape at the end of these nodes sees.
void seenBy(const std::vector<SoNode*>& nodes, const std::function<void(SoState*)>& look)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    for (SoNode* node : nodes)
        root->addChild(node);
    root->addChild(new SoCube);
    int seen = 0;
    nodetest::atShapes(root.get(), [&](SoState* state, SoShape*) {
        ++seen;
        look(state);
    });
    EXPECT_EQ(seen, 1);
}

SbVec3f originThrough(const std::vector<SoNode*>& nodes, const SbVec3f& point)
{
    SbVec3f moved;
    seenBy(nodes, [&](SoState* state) { moved = SoModelMatrixElement::get(state).point(point); });
    return moved;
}

} // namespace

TEST_F(PropertyTest, TransformationsApplyInnermostFirst)
{
    auto* shift = new SoTranslation;
    shift->translation.setValue(10, 0, 0);
    auto* turn = new SoRotationXYZ;
    turn->axis.setValue(SoRotationXYZ::Z);
    turn->angle.setValue(1.5707963f);
    auto* size = new SoScale;
    size->scaleFactor.setValue(2, 2, 2);
    EXPECT_TRUE(originThrough({shift, turn, size}, {1, 0, 0}).equals({10, 2, 0}, 1e-5f));
    auto* matrix = new SoMatrixTransform;
    SbMatrix m;
    m.setTranslate({0, 0, 5});
    matrix->matrix.setValue(m);
    EXPECT_TRUE(originThrough({matrix}, {1, 1, 1}).equals({1, 1, 6}, 1e-6f));
}

TEST_F(PropertyTest, TransformTurnsAboutItsCenterAndIgnoresIgnoredFields)
{
    const SoRef<SoTransform> transform(new SoTransform);
    transform->center.setValue(1, 0, 0);
    transform->rotation.setValue(SbRotation({0, 0, 1}, 3.1415927f));
    EXPECT_TRUE(originThrough({transform.get()}, {2, 0, 0}).equals({0, 0, 0}, 1e-5f));
    transform->rotation.setIgnored(true);
    EXPECT_TRUE(originThrough({transform.get()}, {2, 0, 0}).equals({2, 0, 0}, 1e-6f));
    transform->rotation.setIgnored(false);

    const SbMatrix before = transform->getLocalMatrix();
    transform->recenter({5, 5, 5});
    EXPECT_EQ(transform->center.getValue(), SbVec3f(5, 5, 5));
    EXPECT_TRUE(transform->getLocalMatrix().equals(before, 1e-4f));
    EXPECT_FALSE(transform->setMatrix(SbMatrix(1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)));
}

TEST_F(PropertyTest, ResetTransformReturnsToTheWorld)
{
    auto* shift = new SoTranslation;
    shift->translation.setValue(10, 0, 0);
    EXPECT_EQ(originThrough({shift, new SoResetTransform}, {1, 2, 3}), SbVec3f(1, 2, 3));
}

TEST_F(PropertyTest, LaterMaterialsReplaceOnlyWhatTheySet)
{
    auto* first = new SoMaterial;
    first->diffuseColor.setValue(1, 0, 0);
    first->shininess.setValue(0.7f);
    auto* second = new SoMaterial;
    second->diffuseColor.setIgnored(true);
    second->shininess.setValue(0.1f);
    seenBy({first, second}, [](SoState* state) {
        const SoMaterialValues& v = SoMaterialElement::get(state);
        EXPECT_EQ(v.getDiffuse(), SbColor(1, 0, 0));
        EXPECT_EQ(v.shininess, 0.1f);
    });
}

TEST_F(PropertyTest, OverrideLocksAgainstWhatFollows)
{
    auto* first = new SoMaterial;
    first->diffuseColor.setValue(1, 0, 0);
    first->setOverride(true);
    auto* color = new SoBaseColor;
    color->rgb.setValue(0, 1, 0);
    auto* style = new SoDrawStyle;
    style->lineWidth.setValue(3);
    seenBy({first, color, style}, [](SoState* state) {
        EXPECT_EQ(SoMaterialElement::get(state).getDiffuse(), SbColor(1, 0, 0));
        EXPECT_EQ(SoDrawStyleElement::get(state).lineWidth, 3);
    });
}

TEST_F(PropertyTest, ValueIdsTellDifferentMaterialsApart)
{
    // Render lists and geometries are kept under these ids.
    const SoRef<SoMaterial> material(new SoMaterial);
    const auto idOf = [](const std::vector<SoNode*>& nodes) {
        std::uint64_t id = 0;
        seenBy(nodes, [&](SoState* state) { id = state->get<SoMaterialElement>().getValueId(); });
        return id;
    };
    const std::uint64_t before = idOf({material.get()});
    EXPECT_EQ(idOf({material.get()}), before);
    const SoRef<SoBaseColor> color(new SoBaseColor);
    EXPECT_NE(idOf({material.get(), color.get()}), before);
    material->transparency.setValue(0.5f);
    EXPECT_NE(idOf({material.get()}), before);
}

TEST_F(PropertyTest, PackedColorsBecomeColorsAndTransparencies)
{
    const SoRef<SoPackedColor> packed(new SoPackedColor);
    packed->orderedRGBA.setValues({0xff0000ffu, 0x00ff0000u});
    const auto look = [](SoState* state) {
        const SoMaterialValues& v = SoMaterialElement::get(state);
        EXPECT_EQ(v.getDiffuse(0), SbColor(1, 0, 0));
        EXPECT_EQ(v.getTransparency(0), 0);
        EXPECT_EQ(v.getTransparency(1), 1);
    };
    seenBy({packed.get()}, look);
    packed->orderedRGBA.set1Value(1, 0x0000ff00u);
    seenBy({packed.get()}, [](SoState* state) {
        EXPECT_EQ(SoMaterialElement::get(state).getDiffuse(1), SbColor(0, 0, 1));
    });
}

TEST_F(PropertyTest, HomogeneousCoordinatesAreDivided)
{
    auto* coordinates = new SoCoordinate4;
    coordinates->point.setValues({SbVec4f(2, 4, 6, 2)});
    seenBy({coordinates}, [](SoState* state) {
        const auto points = state->get<SoCoordinateElement>().get();
        ASSERT_EQ(points.size(), 1u);
        EXPECT_EQ(points[0], SbVec3f(1, 2, 3));
    });
}

TEST_F(PropertyTest, LightsAddUpUntilTheirSeparatorEnds)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* off = new SoDirectionalLight;
    off->on.setValue(false);
    auto* shift = new SoTranslation;
    shift->translation.setValue(0, 5, 0);
    auto* fading = new SoEnvironment;
    fading->attenuation.setValue(0.25f, 0.5f, 1);
    auto* spot = new SoSpotLight;
    spot->color.setValue(0, 0, 1);
    spot->cutOffAngle.setValue(0.3f);
    auto* inner = new SoSeparator;
    inner->addChild(new SoPointLight);
    inner->addChild(new SoCube);
    for (SoNode* node : std::initializer_list<SoNode*>{off, shift, fading, spot, inner, new SoCube})
        root->addChild(node);
    std::vector<std::vector<SoLightRecord>> seen;
    nodetest::atShapes(root.get(), [&](SoState* state, SoShape*) {
        const auto& lights = state->get<SoLightElement>().value();
        seen.push_back(lights ? *lights : std::vector<SoLightRecord>());
    });
    ASSERT_EQ(seen.size(), 2u);
    ASSERT_EQ(seen[0].size(), 2u);
    EXPECT_EQ(seen[0][1].kind, SoLightRecord::POINT);
    ASSERT_EQ(seen[1].size(), 1u);
    const SoLightRecord& light = seen[1][0];
    EXPECT_EQ(light.kind, SoLightRecord::SPOT);
    EXPECT_EQ(light.color, SbColor(0, 0, 1));
    EXPECT_EQ(light.cutOffAngle, 0.3f);
    EXPECT_EQ(light.toWorld.point({0, 0, 0}), SbVec3f(0, 5, 0));
    EXPECT_EQ(light.attenuation, SbVec3f(1, 0.5f, 0.25f));
}

TEST_F(PropertyTest, TextureTransformWorksAboutItsCenter)
{
    auto* transform = new SoTexture2Transform;
    transform->center.setValue(0.5f, 0.5f);
    transform->scaleFactor.setValue(2, 2);
    seenBy({transform}, [](SoState* state) {
        EXPECT_TRUE(SoTextureMatrixElement::get(state)
                        .point({0.5f, 0.5f, 0})
                        .equals({0.5f, 0.5f, 0}, 1e-6f));
        EXPECT_TRUE(
            SoTextureMatrixElement::get(state).point({1, 1, 0}).equals({1.5f, 1.5f, 0}, 1e-6f));
    });
}

TEST_F(PropertyTest, SwappedBackgroundExchangesItsColors)
{
    const SoRef<SoGradientBackground> background(new SoGradientBackground);
    const SbColor top = background->getTopColor();
    EXPECT_FALSE(top == background->getBottomColor());
    background->swapColors.setValue(true);
    EXPECT_EQ(background->getBottomColor(), top);
}

TEST_F(PropertyTest, EveryConcreteTypeCanBeMadeCopiedAndTraversed)
{
    int made = 0;
    for (const SoType type : SoType::getAllDerivedFrom(SoNode::getClassTypeId())) {
        if (!type.canCreateInstance()
            || type.getName().view().find("Test") != std::string_view::npos)
            continue;
        const SoRef<SoNode> node(SoNode::create(type));
        ASSERT_TRUE(node) << type.getName().getString();
        EXPECT_EQ(node->getTypeId(), type);
        EXPECT_TRUE(node->hasDefaultValues()) << type.getName().getString();
        const SoRef<SoNode> copy(node->copy());
        ASSERT_TRUE(copy);
        EXPECT_EQ(copy->getFields().size(), node->getFields().size());
        const SoRef<SoSeparator> root(new SoSeparator);
        root->addChild(copy.get());
        nodetest::geometryOf(root.get());
        ++made;
    }
    EXPECT_GT(made, 55);
}
