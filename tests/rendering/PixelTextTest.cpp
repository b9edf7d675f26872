#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/details/SoTextDetail.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/io/SoInput.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoOffscreenContext.h>
#include <kalmyr/rendering/SoOffscreenRenderer.h>
#include <support/ErrorGuard.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr int kWidth = 160, kHeight = 100;

class PixelText : public ::testing::Test {
protected:
    void SetUp() override
    {
        SoDB::init();
        if (!SoOffscreenContext::shared().isValid())
            GTEST_SKIP() << "no OpenGL: " << SoOffscreenContext::shared().getError();
    }

    /// White text on black, in front of a camera at `distance`.
    void show(const std::string& text, float distance = 5, const std::string& place = "0 0 0")
    {
        const std::string file =
            "#Kalmyr V1.0 ascii\nSeparator { PerspectiveCamera { position 0 0 "
            + std::to_string(distance)
            + " nearDistance 1 farDistance 400 } Font { name \"DejaVu Sans\" size 16 } BaseColor { "
              "rgb 1 1 1 } Translation { translation "
            + place + " } Text2 { " + text + " } }";
        SoInput in;
        in.setBuffer(file.data(), file.size());
        m_root.reset(SoDB::readAll(&in));
        ASSERT_TRUE(m_root);
        m_renderer.setBackgroundColor(SbColor(0, 0, 0));
        ASSERT_TRUE(m_renderer.render(m_root.get()));
    }
    int at(int x, int y) const { return m_renderer.getBuffer()[3 * (y * kWidth + x)]; }
    /// Brightness of all pixels.
    std::vector<int> picture() const
    {
        std::vector<int> values;
        for (int i = 0; i < kWidth * kHeight; ++i)
            values.push_back(at(i % kWidth, i / kWidth));
        return values;
    }
    /// The rectangle of pixels that are not black: left, bottom, right, top.
    std::vector<int> extent() const
    {
        std::vector<int> box{kWidth, kHeight, 0, 0};
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                if (at(x, y) == 0)
                    continue;
                box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x + 1),
                       std::max(box[3], y + 1)};
            }
        }
        return box;
    }
    const SoPickedPoint* pick(int x, int y)
    {
        m_pick.setPoint(SbVec2s(static_cast<short>(x), static_cast<short>(y)));
        m_pick.apply(m_root.get());
        return m_pick.getPickedPoint();
    }

    SoRef<SoSeparator> m_root;
    SbViewportRegion m_region{kWidth, kHeight};
    SoOffscreenRenderer m_renderer{m_region};
    SoRayPickAction m_pick{m_region};
};

} // namespace

TEST_F(PixelText, KeepsItsPixelsAtEveryDistance)
{
    show("string \"Hit 42\"");
    const std::vector<int> close = picture();
    int bright = 0, between = 0;
    for (const int value : close) {
        bright += value > 250;
        between += value > 20 && value < 230;
    }
    EXPECT_GT(bright, 40);  // strokes are full
    EXPECT_GT(between, 20); // and edges smooth
    show("string \"Hit 42\"", 200);
    EXPECT_EQ(picture(), close);
    // H and 4 are as high as capitals: 0.73 of 16 pixels, on the line through the middle.
    const std::vector<int> box = extent();
    EXPECT_EQ(box[1], kHeight / 2);
    EXPECT_NEAR(box[3] - box[1], 12, 1);
    EXPECT_NEAR(box[0], kWidth / 2, 2);
}

TEST_F(PixelText, JustifiesLinesAndSpacesThem)
{
    show("string [ \"H\", \"HHHH\" ] justification RIGHT spacing 1.5");
    const std::vector<int> right = extent();
    show("string [ \"H\", \"HHHH\" ] justification CENTER spacing 1.5");
    const std::vector<int> middle = extent();
    show("string [ \"H\", \"HHHH\" ] spacing 1.5");
    const std::vector<int> left = extent();
    const int width = left[2] - left[0];
    EXPECT_NEAR(right[2], kWidth / 2, 2);
    EXPECT_NEAR(middle[2], kWidth / 2 + width / 2, 2);
    EXPECT_NEAR(right[2] - right[0], width, 1);
    EXPECT_EQ(left[1], kHeight / 2 - 24);
    EXPECT_NEAR(left[3], kHeight / 2 + 12, 1);
}

TEST_F(PixelText, IsPickedAndMeasuredWhereItIsSeen)
{
    show("string [ \"Wide\", \"i\" ] spacing 1.5", 7, "0.4 0.2 -1");
    const std::vector<int> box = extent();
    for (int y = 0; y < kHeight; y += 3) {
        for (int x = 0; x < kWidth; x += 3) {
            const SoPickedPoint* point = pick(x, y);
            if (at(x, y) > 0) {
                ASSERT_TRUE(point) << x << ' ' << y;
            }
            const bool isNear =
                x >= box[0] - 2 && x < box[2] + 2 && y >= box[1] - 2 && y < box[3] + 2;
            EXPECT_TRUE(isNear || !point) << x << ' ' << y;
        }
    }
    const auto character = [&](int x, int y) {
        const SoPickedPoint* point = pick(x, y);
        if (!point || !point->getDetail()->isOfType(SoTextDetail::getClassTypeId()))
            return std::pair(-1, -1);
        const auto* detail = static_cast<const SoTextDetail*>(point->getDetail());
        return std::pair(detail->getStringIndex(), detail->getCharacterIndex());
    };
    EXPECT_EQ(character(box[0] + 7, box[3] - 6), std::pair(0, 0));
    EXPECT_EQ(character(box[2] - 3, box[3] - 9), std::pair(0, 3));
    EXPECT_EQ(character(box[0] + 2, box[1] + 3), std::pair(1, 0));

    SoGetBoundingBoxAction measure{m_region};
    measure.apply(m_root.get());
    const float size = measure.getBoundingBox().getSize()[0];
    show("string [ \"Wide\", \"i\" ] spacing 1.5", 14, "0.4 0.2 -1");
    measure.apply(m_root.get());
    EXPECT_NEAR(measure.getBoundingBox().getSize()[0], size * 15 / 8, size * 0.05f);
}

TEST_F(PixelText, SurvivesImpossibleSizesAndLengths)
{
    show("string [ \"\", \" \" ]");
    EXPECT_EQ(extent()[2], 0);
    // Very long lines are drawn in parts; the middle of the text stands at the origin.
    show("justification CENTER string \"" + std::string(4000, 'H') + "\"");
    const std::vector<int> box = extent();
    EXPECT_EQ(box[0], 0);
    EXPECT_EQ(box[2], kWidth);
    EXPECT_NEAR(box[3] - box[1], 12, 1);
    const auto errors = support::expectErrors();
    const std::string file = "#Kalmyr V1.0 ascii\nSeparator { PerspectiveCamera { } Font { size "
                             "1e9 } Text2 { string \"A\" } }";
    SoInput in;
    in.setBuffer(file.data(), file.size());
    m_root.reset(SoDB::readAll(&in));
    EXPECT_TRUE(m_renderer.render(m_root.get()));
}
