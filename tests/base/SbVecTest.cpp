#include <kalmyr/base/SbColor.h>
#include <kalmyr/base/SbVec.h>

#include <algorithm>
#include <cmath>
#include <random>
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

template <class Vec>
class SbVecKinds : public testing::Test {
};
using Kinds = testing::Types<SbVec2f, SbVec3f, SbVec4f, SbVec2s, SbVec3s, SbVec4s, SbVec2i32,
                             SbVec3i32, SbVec4i32, SbVec2d, SbVec3d, SbVec4d>;
TYPED_TEST_SUITE(SbVecKinds, Kinds);

TYPED_TEST(SbVecKinds, AgreesWithArithmeticInDoubles)
{
    constexpr int kSize = sizeof(TypeParam) / sizeof(std::declval<TypeParam&>()[0]);
    std::minstd_rand random(3);
    // Small whole numbers: exact in every kind.
    const auto number = [&random] { return static_cast<int>(random() % 41) - 20; };
    for (int round = 0; round < 200; ++round) {
        TypeParam a, b;
        double dot = 0, square = 0;
        for (int i = 0; i < kSize; ++i) {
            a[i] = static_cast<std::decay_t<decltype(a[i])>>(number());
            b[i] = static_cast<std::decay_t<decltype(b[i])>>(number());
            dot += double(a[i]) * double(b[i]);
            square += double(a[i]) * double(a[i]);
        }
        EXPECT_EQ(double(a.dot(b)), dot);
        EXPECT_EQ(double(a.sqrLength()), square);
        EXPECT_NEAR(double(a.length()), std::sqrt(square), 1e-5);
        const TypeParam sum = a + b, difference = a - b, twice = a * 2, back = -a;
        for (int i = 0; i < kSize; ++i) {
            EXPECT_EQ(double(sum[i]), double(a[i]) + double(b[i]));
            EXPECT_EQ(double(difference[i]), double(a[i]) - double(b[i]));
            EXPECT_EQ(double(twice[i]), 2 * double(a[i]));
            EXPECT_EQ(double(back[i]), -double(a[i]));
        }
        EXPECT_EQ(a == b, difference == TypeParam());
    }
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
    for (double hue = 0; hue < 1; hue += 0.01) {
        // A colour of full saturation: each component is a trapezoid over the hue.
        SbColor full;
        full.setHSVValue(static_cast<float>(hue), 1, 1);
        for (int i = 0; i < 3; ++i) {
            const double away = std::fabs(std::remainder(hue - i / 3.0, 1.0)); // from its own hue
            EXPECT_NEAR(full[i], std::clamp(2 - 6 * away, 0.0, 1.0), 1e-5) << hue;
        }
    }
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
