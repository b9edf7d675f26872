#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/cameras/SoOrthographicCamera.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoDrawStyle.h>
#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <kalmyr/shapes/SoCube.h>
#include <kalmyr/shapes/SoShape.h>

#include <gtest/gtest.h>

namespace {

constexpr int kWidth = 60;
constexpr int kHeight = 45;

/// Rectangles of 7 by 4 pixels whose lower left corner is 2 pixels right of and 1 below a place.
class Stamps final : public SoShape {
    SO_NODE_HEADER(Stamps)

public:
    Stamps() { SO_NODE_CONSTRUCTOR(SoShape); }
    static void initClass()
    {
        if (s_classTypeId.isBad())
            SO_NODE_INIT_CLASS(Stamps, SoShape, "TestStamps");
    }
    std::vector<SbVec3f> places{SbVec3f(0, 0, 0)};

protected:
    void buildGeometry(SoState*, SoGeometry& geometry) override
    {
        for (const SbVec3f& place : places) {
            const auto first = static_cast<std::uint32_t>(geometry.positions.size());
            geometry.positions.insert(geometry.positions.end(), 4, place);
            for (const SbVec2f& offset :
                 {SbVec2f(2, -1), SbVec2f(9, -1), SbVec2f(9, 3), SbVec2f(2, 3)})
                geometry.pixelOffsets.push_back(offset);
            for (const std::uint32_t i : {0u, 1u, 2u, 0u, 2u, 3u})
                geometry.triangles.push_back(first + i);
        }
    }
};

SO_NODE_SOURCE(Stamps)

class PixelOffsets : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        Stamps::initClass();
        if (!SoOffscreenContext::shared().isValid())
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
        m_root = new SoSeparator;
        auto* camera = new SoPerspectiveCamera;
        camera->position = SbVec3f(0.3f, -0.2f, 6);
        camera->nearDistance = 1;
        camera->farDistance = 40;
        m_root->addChild(camera);
        m_look = new SoMaterial;
        m_look->diffuseColor = SbColor(1, 1, 1);
        m_root->addChild(m_look);
        m_place = new SoTransform;
        m_root->addChild(m_place);
        m_stamps = new Stamps;
        m_root->addChild(m_stamps);
    }

    bool isWhite(int x, int y) const { return m_renderer.getBuffer()[3 * (y * kWidth + x)] > 128; }

    int countWhite() const
    {
        int count = 0;
        for (int i = 0; i < kWidth * kHeight; ++i)
            count += isWhite(i % kWidth, i / kWidth);
        return count;
    }

    bool isPicked(int x, int y)
    {
        SoRayPickAction pick(m_region);
        pick.setPoint(SbVec2s(static_cast<short>(x), static_cast<short>(y)));
        pick.apply(m_root.get());
        return pick.getPickedPoint() != nullptr;
    }

    SoRef<SoSeparator> m_root;
    SoMaterial* m_look = nullptr;
    SoTransform* m_place = nullptr;
    Stamps* m_stamps = nullptr;
    SbViewportRegion m_region{kWidth, kHeight};
    SoOffscreenRenderer m_renderer{m_region};
};

TEST_F(PixelOffsets, KeepTheirPixelsWhereverTheyStandAndArePickedThere)
{
    auto* style = new SoDrawStyle;
    m_root->insertChild(style, 1);
    for (int round = 0; round < 12; ++round) {
        const float t = static_cast<float>(round);
        m_place->translation = SbVec3f(0.123f * t - 0.9f, 0.5f - 0.077f * t, 0.4f * t - 3);
        m_place->rotation = SbRotation(SbVec3f(1, 2, 3), 0.7f * t);
        m_place->scaleFactor = SbVec3f(1 + t, 2, round % 2 ? -0.1f : 3.0f);
        style->style = round % 3 ? SoDrawStyle::FILLED : SoDrawStyle::LINES;
        ASSERT_TRUE(m_renderer.render(m_root.get()));
        EXPECT_EQ(countWhite(), 7 * 4) << round;
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x)
                ASSERT_EQ(isPicked(x, y), isWhite(x, y)) << round << ": " << x << ' ' << y;
        }
    }
}

TEST_F(PixelOffsets, AreSeenWhenTheirPositionsAreOutOfViewAndHiddenByWhatIsInFront)
{
    // The left edge of the picture at the depth of the position, one pixel farther out.
    auto* flat = new SoOrthographicCamera; // 45 pixels high: a unit is a pixel
    flat->position = SbVec3f(0, 0, 10);
    flat->nearDistance = 1;
    flat->farDistance = 40;
    flat->height = kHeight;
    m_root->replaceChild(0, flat);
    auto* group = new SoSeparator;
    for (int i = 0; i < 4; ++i) // enough for a list of its own
        group->addChild(i ? static_cast<SoNode*>(new SoMaterial) : m_stamps);
    m_root->replaceChild(m_stamps, group);
    m_stamps->places = {SbVec3f(-34, 0, 0)};
    for (int frame = 0; frame < 3; ++frame) {
        ASSERT_TRUE(m_renderer.render(m_root.get()));
        EXPECT_EQ(countWhite(), 5 * 4) << frame;
    }

    auto* cover = new SoSeparator;
    auto* black = new SoMaterial;
    black->diffuseColor = SbColor(0, 0, 0);
    auto* before = new SoTransform;
    before->translation = SbVec3f(-30, 0, 3);
    before->scaleFactor = SbVec3f(2, 50, 0.5f);
    cover->addChild(black);
    cover->addChild(before);
    cover->addChild(new SoCube); // the two columns at the left
    m_root->addChild(cover);
    ASSERT_TRUE(m_renderer.render(m_root.get()));
    EXPECT_EQ(countWhite(), 3 * 4);
    before->translation = SbVec3f(-30, 0, -3);
    ASSERT_TRUE(m_renderer.render(m_root.get()));
    EXPECT_EQ(countWhite(), 5 * 4);
}

} // namespace
