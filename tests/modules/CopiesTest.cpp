#include "support/DrawnItems.h"
#include "support/HostScene.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/copies/SoArray.h>
#include <kalmyr/copies/SoCopyDetail.h>
#include <kalmyr/copies/SoMultipleCopy.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoLevelOfDetail.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCone.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>
#include <kalmyr/tilevex/TvSymTool.h>

#include <algorithm>
#include <random>
#include <tuple>

#include <gtest/gtest.h>

namespace {

class CopiesTest : public testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        ASSERT_TRUE(TvSymTool::initModule("Copies"));
        root = new SoSeparator;
    }
    void TearDown() override
    {
        root = nullptr;
        TvSymTool::finishModule("Copies");
    }
    float unit(float low, float high)
    {
        return std::uniform_real_distribution<float>(low, high)(m_random);
    }
    SbVec3f point(float size) { return {unit(-size, size), unit(-size, size), unit(-size, size)}; }
    SbMatrix matrix(float size)
    {
        SbMatrix made;
        made.setTransform(point(size), SbRotation(point(1), unit(0, 6)),
                          {unit(0.5f, 2), unit(0.5f, 2), unit(0.5f, 2)});
        return made;
    }
    const SoPickedPoint* pick(SoRayPickAction& action, const SbVec3f& from, const SbVec3f& along)
    {
        action.setRay(from, along);
        action.apply(root.get());
        return action.getPickedPoint();
    }
    static int copyOf(const SoPickedPoint& point, const SoNode* group)
    {
        const SoDetail* detail = point.getDetail(group);
        return detail && detail->isOfType(SoCopyDetail::getClassTypeId())
                   ? static_cast<const SoCopyDetail*>(detail)->getCopyIndex()
                   : -1;
    }

    SoRef<SoSeparator> root;
    std::mt19937 m_random{99};
};

TEST_F(CopiesTest, APickTellsWhichCopyWasMetAlsoInNestedGroups)
{
    auto* rows = new SoArray;
    rows->numElements1 = std::int16_t{4};
    rows->separation1 = SbVec3f(10, 0, 0);
    auto* pairs = new SoMultipleCopy;
    for (int i = 0; i < 3; ++i) {
        SbMatrix place;
        place.setTransform(SbVec3f(0, 3.0f * float(i), 0), SbRotation(), SbVec3f(1, 1, 1) * 0.5f);
        pairs->matrix.set1Value(i, place);
    }
    auto* inner = new SoSeparator;
    auto* turn = new SoTransform;
    turn->translation = SbVec3f(0.5f, 0, 0);
    inner->addChild(turn);
    inner->addChild(new SoCube);
    pairs->addChild(inner);
    rows->addChild(pairs);
    auto* around = new SoTransform;
    around->translation = SbVec3f(0, 0, -7);
    root->addChild(around);
    root->addChild(rows);
    SoRayPickAction action{SbViewportRegion()};
    for (int again = 0; again < 2; ++again)
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 3; ++j) {
                const SbVec3f center(10.0f * float(i) + 0.25f, 3.0f * float(j), -7);
                const auto* point = pick(action, center + SbVec3f(0, 0, 20), {0, 0, -1});
                ASSERT_TRUE(point);
                const SoPickedPoint copy(*point);
                EXPECT_EQ(copyOf(copy, rows), i);
                EXPECT_EQ(copyOf(copy, pairs), j);
                EXPECT_EQ(copy.getDetail(inner), nullptr);
                EXPECT_EQ(copy.getDetail(nullptr), copy.getDetail());
                // Spaces on the way are those of the copy, too.
                const auto origin = [&copy](const SoNode* node) {
                    return copy.getObjectToWorld(node).point(SbVec3f());
                };
                EXPECT_TRUE(origin(nullptr).equals(center, 1e-4f));
                EXPECT_TRUE(origin(inner).equals(center - SbVec3f(0.25f, 0, 0), 1e-4f));
                EXPECT_TRUE(origin(pairs).equals(center - SbVec3f(0.25f, 0, 0), 1e-4f));
                EXPECT_TRUE(origin(rows).equals(SbVec3f(10.0f * float(i), 0, -7), 1e-4f));
            }
    action.setPickAll(true);
    pick(action, {-20, 0.1f, -7}, {1, 0, 0});
    ASSERT_EQ(action.getPickedPoints().size(), 8u);
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(copyOf(action.getPickedPoints()[i], rows), int(i / 2));
}

using Drawn = std::tuple<const SoNode*, std::array<float, 12>, std::array<float, 3>>;

/// What is drawn, whatever the order.
std::vector<Drawn> drawn(SoGLRenderAction& action, SoNode* scene)
{
    std::vector<Drawn> all;
    for (const support::DrawnItem& item : support::drawnItems(action, scene)) {
        std::array<float, 12> places{};
        for (int i = 0; i < 12; ++i)
            places[std::size_t(i)] = std::round(item.toWorld[i / 3][i % 3] * 100);
        const SbColor& color = item.appearance->diffuse;
        all.emplace_back(nullptr, places, std::array{color[0], color[1], color[2]});
    }
    std::sort(all.begin(), all.end());
    return all;
}

TEST_F(CopiesTest, KeptListsShowWhatWouldBeWrittenOutAfterEveryEdit)
{
    auto* copies = new SoMultipleCopy;
    for (int i = 0; i < 5; ++i)
        copies->matrix.set1Value(i, matrix(20));
    auto* child = new SoSeparator;
    auto* material = new SoMaterial;
    auto* place = new SoTransform;
    copies->addChild(material); // colours what follows in the same copy
    copies->addChild(place);
    copies->addChild(child);
    copies->addChild(new SoSphere);
    for (int i = 0; i < 6; ++i)
        child->addChild(new SoCube);
    auto* inside = new SoSeparator;
    inside->addChild(copies);
    const SoRef<SoNode> camera(support::wideCamera());
    root->addChild(camera.get());
    root->addChild(inside);
    root->addChild(new SoCone);
    SoGLRenderAction keeping;
    for (int step = 0; step < 40; ++step) {
        switch (m_random() % 4) {
        case 0:
            copies->matrix.set1Value(int(m_random() % 5), matrix(20));
            break;
        case 1:
            material->diffuseColor = SbColor(unit(0, 1), unit(0, 1), unit(0, 1));
            break;
        case 2:
            place->translation = point(3);
            break;
        default:
            if (child->getNumChildren() < 12)
                child->addChild(new SoCube);
        }
        const SoRef<SoSeparator> written(new SoSeparator);
        written->addChild(camera.get());
        for (int i = 0; i < copies->getNumCopies(); ++i) {
            auto* one = new SoSeparator;
            auto* matrixNode = new SoTransform;
            matrixNode->setMatrix(copies->getCopyMatrix(i));
            one->addChild(matrixNode);
            for (int c = 0; c < copies->getNumChildren(); ++c)
                one->addChild(copies->getChild(c));
            written->addChild(one);
        }
        written->addChild(new SoCone);
        SoGLRenderAction fresh;
        fresh.setCaching(false);
        const auto wanted = drawn(fresh, written.get());
        for (int frame = 0; frame < 1 + step % 4; ++frame)
            ASSERT_EQ(drawn(keeping, root.get()), wanted) << "step " << step;
        SoGetBoundingBoxAction box{SbViewportRegion()};
        box.apply(root.get());
        for (const support::DrawnItem& item : support::drawnItems(fresh, written.get()))
            EXPECT_TRUE(box.getBoundingBox().intersect(item.toWorld.point(SbVec3f())));
    }
}

TEST_F(CopiesTest, ADetailLevelIsChosenForEachCopyByItsSizeOnTheScreen)
{
    auto* camera = new SoPerspectiveCamera;
    camera->heightAngle = 2 * std::atan(0.5f); // as high as it is far away
    camera->position = SbVec3f(0, 0, 0);
    camera->nearDistance = 0.1f;
    camera->farDistance = 1000;
    root->addChild(camera);
    auto* rows = new SoArray;
    rows->numElements1 = std::int16_t{4};
    rows->separation1 = SbVec3f(0, 0, -20);
    auto* levels = new SoLevelOfDetail;
    for (SoNode* level : {static_cast<SoNode*>(new SoSphere), static_cast<SoNode*>(new SoCone),
                          static_cast<SoNode*>(new SoCube)})
        levels->addChild(level);
    auto* place = new SoTransform;
    place->translation = SbVec3f(0, 0, -11);
    rows->addChild(place);
    rows->addChild(levels);
    root->addChild(rows);
    // The near sides are 10, 30, 50, 70 away: 2/10, 2/30, ... of 100 pixels.
    const float areas[] = {60, 10};
    levels->screenArea.setValues(0, 2, areas);
    const auto seen = [&](SoGLRenderAction& action) {
        std::vector<int> found;
        for (const support::DrawnItem& item : support::drawnItems(action, root.get()))
            found.push_back(levels->findChild(item.node));
        return found;
    };
    SoGLRenderAction action(SbViewportRegion(100, 100));
    EXPECT_EQ(seen(action), (std::vector{0, 1, 1, 2}));
    for (int frame = 0; frame < 3; ++frame)
        seen(action);
    camera->position = SbVec3f(0, 0, 60);
    EXPECT_EQ(seen(action), (std::vector{2, 2, 2, 2}));
    action.setViewportRegion(SbViewportRegion(1000, 1000));
    EXPECT_EQ(seen(action), (std::vector{0, 0, 0, 0}));
    levels->screenArea.set1Value(0, 500);
    EXPECT_EQ(seen(action), (std::vector{0, 1, 1, 1}));
    // Picks go to what is seen.
    SoRayPickAction pick(SbViewportRegion(1000, 1000));
    pick.setPoint(SbVec2s(500, 500));
    pick.setPickAll(true);
    pick.apply(root.get());
    ASSERT_FALSE(pick.getPickedPoints().empty());
    EXPECT_EQ(pick.getPickedPoints().front().getPath()->getTail(), levels->getChild(0));
    EXPECT_EQ(pick.getPickedPoints().back().getPath()->getTail(), levels->getChild(1));
}

} // namespace
