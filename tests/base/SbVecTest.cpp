#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbVec.h>

#include <type_traits>

#include <gtest/gtest.h>

static_assert(std::is_trivially_copyable_v<SbVec3f> && sizeof(SbVec3f) == 3 * sizeof(float));
static_assert(std::is_trivially_copyable_v<SbColor> && sizeof(SbColor) == 3 * sizeof(float));
static_assert(SbVec3f(1, 2, 3) + SbVec3f(1, 1, 1) * 2 == SbVec3f(3, 4, 5));

TEST(SbVec, LengthSurvivesTheEndsOfTheFloatRange)
{
    SbVec3f huge(3e38f, 0, 0);
    EXPECT_FLOAT_EQ(huge.length(), 3e38f);
    EXPECT_FLOAT_EQ(huge.normalize(), 3e38f);
    EXPECT_EQ(huge, SbVec3f(1, 0, 0));
    SbVec3f tiny(0, 3e-30f, 4e-30f);
    EXPECT_FLOAT_EQ(tiny.normalize(), 5e-30f);
    EXPECT_TRUE(tiny.equals(SbVec3f(0, 0.6f, 0.8f), 1e-6f));
    SbVec3f zero;
    EXPECT_EQ(zero.normalize(), 0);
    EXPECT_EQ(zero, SbVec3f(0, 0, 0));
}

TEST(SbVec, CrossProductIsRightHanded)
{
    EXPECT_EQ(SbVec3f(1, 0, 0).cross(SbVec3f(0, 1, 0)), SbVec3f(0, 0, 1));
    EXPECT_EQ(SbVec3d(0, 1, 0).cross(SbVec3d(0, 0, 1)), SbVec3d(1, 0, 0));
}

TEST(SbVec, ConvertsBetweenElementTypes)
{
    EXPECT_EQ(SbVec3s(SbVec3f(1.9f, -1.9f, 7)), SbVec3s(1, -1, 7));
    const SbVec2i32 a(1 << 20, -3);
    EXPECT_EQ(SbVec2d(a), SbVec2d(1048576, -3));
    SbVec3f real;
    SbVec4f(2, 4, 6, 2).getReal(real);
    EXPECT_EQ(real, SbVec3f(1, 2, 3));
    SbVec4f(2, 4, 6, 0).getReal(real);
    EXPECT_EQ(real, SbVec3f(2, 4, 6));
    float x, y, z;
    SbVec3f(SbVec2f(1, 2), 3).getValue(x, y, z);
    EXPECT_EQ(x * 100 + y * 10 + z, 123);
}

TEST(SbVec, EqualsIsComponentWiseAndNeverTrueForNotANumber)
{
    EXPECT_TRUE(SbVec2f(1, 2).equals(SbVec2f(1.5f, 1.5f), 0.5f));
    EXPECT_FALSE(SbVec2f(1, 2).equals(SbVec2f(1, 2.6f), 0.5f));
    const SbVec2f nan(NAN, 0);
    EXPECT_FALSE(nan.equals(nan, 1));
    EXPECT_FALSE(nan == nan);
}

TEST(SbColor, PacksWithRoundingAndClamping)
{
    EXPECT_EQ(SbColor(1, 0.5f, 0).getPackedValue(), 0xFF8000FFu);
    EXPECT_EQ(SbColor(2, -1, NAN).getPackedValue(0.75f), 0xFF000040u);
    for (unsigned byte = 0; byte < 256; ++byte) {
        const unsigned packed = byte << 24 | (255 - byte) << 16 | 17 << 8 | byte;
        float transparency;
        SbColor c;
        c.setPackedValue(packed, transparency);
        EXPECT_EQ(c.getPackedValue(transparency), packed);
        EXPECT_EQ(SbColorRGBA().setPackedValue(packed).getPackedValue(), packed);
    }
}

TEST(SbColor, ConvertsToHueAndBack)
{
    float h, s, v;
    SbColor(0, 1, 1).getHSVValue(h, s, v);
    EXPECT_FLOAT_EQ(h, 0.5f);
    EXPECT_FLOAT_EQ(s, 1);
    SbColor(0.25f, 0.25f, 0.25f).getHSVValue(h, s, v);
    EXPECT_EQ(SbVec3f(h, s, v), SbVec3f(0, 0, 0.25f));
    for (int i = 0; i < 6 * 6 * 6; ++i) {
        const SbColor c((i % 6) * 0.2f, (i / 6 % 6) * 0.2f, (i / 36) * 0.2f);
        c.getHSVValue(h, s, v);
        SbColor back;
        back.setHSVValue(h + 2, s, v);
        EXPECT_TRUE(back.equals(c, 2e-6f)) << i;
        SbColorRGBA rgba(0, 0, 0, 0.5f);
        rgba.setHSVValue(h, s, v);
        EXPECT_TRUE(rgba.getRGB().equals(c, 2e-6f) && rgba[3] == 0.5f) << i;
    }
}
