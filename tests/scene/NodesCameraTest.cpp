#include "NodesSupport.h"

#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoSphere.h>

namespace {

class CameraTest : public nodetest::NodesTest, public ::testing::WithParamInterface<const char*> {
protected:
    SoCamera* makeCamera() const
    {
        return static_cast<SoCamera*>(SoNode::create(SoType::fromName(SbName(GetParam()))));
    }
};

/// All corners of a box as the camera shows them, x and y within 0 to 1, depth too.
void expectInView(const SbViewVolume& volume, const SbBox3f& box)
{
    for (int i = 0; i < 8; ++i) {
        SbVec3f screen;
        volume.projectToScreen(box.getCorner(i), screen);
        for (int k = 0; k < 3; ++k) {
            EXPECT_GE(screen[k], -1e-3f) << i << ' ' << k;
            EXPECT_LE(screen[k], 1 + 1e-3f) << i << ' ' << k;
        }
    }
}

} // namespace

TEST_P(CameraTest, ViewAllShowsEverythingInAnyWindow)
{
    for (const SbViewportRegion& region :
         {SbViewportRegion(400, 100), SbViewportRegion(100, 400), SbViewportRegion(100, 100)}) {
        const SoRef<SoSeparator> root(new SoSeparator);
        SoCamera* camera = makeCamera();
        camera->orientation.setValue(SbRotation({1, 2, 3}, 1));
        root->addChild(camera);
        auto* transform = new SoTransform;
        transform->translation.setValue(100, 20, 3);
        root->addChild(transform);
        root->addChild(new SoCube);
        camera->viewAll(root.get(), region);
        const SbBox3f box(99, 19, 2, 101, 21, 4);
        expectInView(camera->getViewVolume(region), box);
        SbVec3f middle;
        camera->getViewVolume(region).projectToScreen(box.getCenter(), middle);
        EXPECT_NEAR(middle[0], 0.5f, 1e-3f);
        EXPECT_NEAR(middle[1], 0.5f, 1e-3f);
        // Not much smaller than the window either.
        const SbVec2f size = camera->getViewVolume(region).projectBox(box);
        EXPECT_GT(std::max(size[0], size[1]), 0.5f);
        EXPECT_GT(camera->nearDistance.getValue(), 0);
        EXPECT_LT(camera->nearDistance.getValue(), camera->farDistance.getValue());
    }
}

TEST_P(CameraTest, ViewAllWorksInsideATransformedSpace)
{
    const SbViewportRegion region(200, 100);
    const SoRef<SoSeparator> root(new SoSeparator);
    auto* transform = new SoTransform;
    transform->translation.setValue(50, 0, 0);
    transform->rotation.setValue(SbRotation({0, 1, 0}, 1));
    root->addChild(transform);
    SoCamera* camera = makeCamera();
    root->addChild(camera);
    root->addChild(new SoSphere);
    camera->viewAll(root.get(), region);
    SoRayPickAction pick(region);
    pick.setPoint({100, 50});
    pick.apply(root.get());
    ASSERT_NE(pick.getPickedPoint(), nullptr);
    EXPECT_NEAR((pick.getPickedPoint()->getPoint() - SbVec3f(50, 0, 0)).length(), 1, 0.02f);
}

TEST_P(CameraTest, PointsAtItsTargetWithUpUpwards)
{
    const SoRef<SoCamera> camera(makeCamera());
    camera->position.setValue(3, 4, 5);
    for (const SbVec3f& target :
         {SbVec3f(0, 0, 0), SbVec3f(3, 10, 5), SbVec3f(3, -10, 5), SbVec3f(9, 4, 5)}) {
        camera->pointAt(target);
        const SbVec3f ahead = camera->orientation.getValue().rotated({0, 0, -1});
        EXPECT_TRUE(ahead.equals((target - SbVec3f(3, 4, 5)).normalized(), 1e-5f));
        EXPECT_GE(camera->orientation.getValue().rotated({0, 1, 0})[1], -1e-5f);
        EXPECT_NEAR(camera->orientation.getValue().rotated({1, 0, 0})[1], 0, 1e-5f);
    }
}

TEST_P(CameraTest, SetsTheViewOfWhatFollows)
{
    const SoRef<SoSeparator> root(new SoSeparator);
    SoCamera* camera = makeCamera();
    camera->position.setValue(1, 2, 3);
    root->addChild(camera);
    root->addChild(new SoCube);
    std::uint64_t id = 0;
    const auto look = [&] {
        nodetest::atShapes(root.get(), [&](SoState* state, SoShape*) {
            const SoView& view = SoViewElement::get(state);
            EXPECT_TRUE(view.valid);
            EXPECT_TRUE(view.viewing.point(camera->position.getValue()).equals({0, 0, 0}, 1e-5f));
            EXPECT_NE(state->get<SoViewElement>().getValueId(), id);
            id = state->get<SoViewElement>().getValueId();
        });
    };
    look();
    camera->position.setValue(7, 8, 9);
    look();
}

TEST_P(CameraTest, SurvivesNonsense)
{
    const SoRef<SoCamera> camera(makeCamera());
    camera->nearDistance.setValue(0);
    camera->farDistance.setValue(-5);
    camera->aspectRatio.setValue(0);
    camera->scaleHeight(0);
    const SbViewVolume volume = camera->getViewVolume();
    EXPECT_GT(volume.getDepth(), 0);
    EXPECT_GT(volume.getWidth(), 0);
    const SbVec3f before = camera->position.getValue();
    const SoRef<SoSeparator> empty(new SoSeparator);
    camera->viewAll(empty.get(), SbViewportRegion(100, 100));
    EXPECT_EQ(camera->position.getValue(), before);
}

TEST_P(CameraTest, CropsTheViewportToItsAspectRatio)
{
    const SoRef<SoCamera> camera(makeCamera());
    const SbViewportRegion region(400, 100);
    EXPECT_EQ(camera->getViewport(region), region);
    camera->viewportMapping.setValue(SoCamera::CROP_VIEWPORT_NO_FRAME);
    camera->aspectRatio.setValue(2);
    EXPECT_EQ(camera->getViewport(region).getViewportSizePixels(), SbVec2s(200, 100));
    camera->aspectRatio.setValue(8);
    EXPECT_EQ(camera->getViewport(region).getViewportSizePixels(), SbVec2s(400, 50));
}

INSTANTIATE_TEST_SUITE_P(Cameras, CameraTest,
                         ::testing::Values("PerspectiveCamera", "OrthographicCamera"),
                         [](const auto& info) { return std::string(info.param); });
