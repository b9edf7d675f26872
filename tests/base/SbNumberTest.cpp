#include <kalmyr/base/SbNumber.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

using SbNumber::Status;

template <typename T, typename Parse>
void expectParsed(Parse parse, std::string_view text, Status status, T expected, std::size_t used)
{
    T value = 77;
    const SbNumber::Result r = parse(text.data(), text.data() + text.size(), value);
    EXPECT_EQ(r.status, status) << text;
    EXPECT_EQ(r.end - text.data(), static_cast<std::ptrdiff_t>(used)) << text;
    EXPECT_EQ(std::signbit(double(value)), std::signbit(double(expected))) << text;
    EXPECT_EQ(value, expected) << text;
}

void expectFloat(std::string_view text, Status status, float expected, std::size_t used)
{
    expectParsed<float>(SbNumber::parseFloat, text, status, expected, used);
}

void expectInt(std::string_view text, Status status, std::int32_t expected, std::size_t used)
{
    const auto parse = [](const char* a, const char* b, std::int32_t& v) {
        return SbNumber::parseInt(a, b, v);
    };
    expectParsed<std::int32_t>(parse, text, status, expected, used);
}

constexpr float kInfinity = std::numeric_limits<float>::infinity();

} // namespace

TEST(SbNumber, ReadsFloatsAsFilesWriteThem)
{
    expectFloat("1.5,", Status::Ok, 1.5f, 3);
    expectFloat("+.5e+1 ", Status::Ok, 5, 6);
    expectFloat("5.", Status::Ok, 5, 2);
    expectFloat("-0", Status::Ok, -0.f, 2);
    expectFloat("inf", Status::Ok, kInfinity, 3);
    expectFloat("-Infinity", Status::Ok, -kInfinity, 9);
    expectFloat("1e", Status::Ok, 1, 1);
    for (const char* text : {"", "+", "-", ".", "+-1", "--1", "e5", " 1", "x"})
        expectFloat(text, Status::NotANumber, 77, 0);
    float nan = 0;
    EXPECT_TRUE(SbNumber::toFloat("NaN", nan) && std::isnan(nan));
    EXPECT_FALSE(SbNumber::toFloat("1x", nan));
}

TEST(SbNumber, FloatsOutOfRangeBecomeTheNearestValue)
{
    expectFloat("1e39", Status::OutOfRange, kInfinity, 4);
    expectFloat("-1e400 ", Status::OutOfRange, -kInfinity, 6);
    expectFloat("-1e-400", Status::OutOfRange, -0.f, 7);
    expectFloat("+1e-60", Status::OutOfRange, 0, 6);
    expectFloat("1e99999999999999999999", Status::OutOfRange, kInfinity, 22);
    expectFloat("1e-99999999999999999999", Status::OutOfRange, 0, 23);
    expectFloat(std::string(60, '9'), Status::OutOfRange, kInfinity, 60);
    expectFloat("0." + std::string(60, '0') + "1", Status::OutOfRange, 0, 63);
    expectFloat("0." + std::string(60, '0') + "1e120", Status::OutOfRange, kInfinity, 67);
    expectFloat("0." + std::string(400, '0') + "1e10", Status::OutOfRange, 0, 406);
    expectFloat("1" + std::string(400, '0') + "e-10", Status::OutOfRange, kInfinity, 405);
    expectFloat("1e-45", Status::Ok, std::numeric_limits<float>::denorm_min(), 5);
    expectFloat("3.4028235e38", Status::Ok, std::numeric_limits<float>::max(), 12);
    double d = 0;
    EXPECT_FALSE(SbNumber::toDouble("1e400", d));
    EXPECT_EQ(d, HUGE_VAL);
}

TEST(SbNumber, ReadsWholeNumbersInBothBases)
{
    expectInt("42 ", Status::Ok, 42, 2);
    expectInt("+7", Status::Ok, 7, 2);
    expectInt("-2147483648", Status::Ok, std::numeric_limits<std::int32_t>::min(), 11);
    expectInt("2147483648", Status::OutOfRange, std::numeric_limits<std::int32_t>::max(), 10);
    expectInt("-99999999999", Status::OutOfRange, std::numeric_limits<std::int32_t>::min(), 12);
    expectInt("0x1f", Status::Ok, 31, 4);
    expectInt("-0X10", Status::Ok, -16, 5);
    expectInt("0xFFFFFFFF", Status::Ok, -1, 10);
    expectInt("-0x80000001", Status::OutOfRange, std::numeric_limits<std::int32_t>::min(), 11);
    expectInt("0x100000000", Status::OutOfRange, std::numeric_limits<std::int32_t>::max(), 11);
    expectInt("0xg", Status::Ok, 0, 1);
    expectInt("1.5", Status::Ok, 1, 1);
    for (const char* text : {"", "-", "+-1", "x1", " 1"})
        expectInt(text, Status::NotANumber, 77, 0);
    const auto parse = [](const char* a, const char* b, std::uint32_t& v) {
        return SbNumber::parseUInt(a, b, v);
    };
    expectParsed<std::uint32_t>(parse, "4294967295", Status::Ok, 4294967295u, 10);
    expectParsed<std::uint32_t>(parse, "4294967296", Status::OutOfRange, 4294967295u, 10);
    expectParsed<std::uint32_t>(parse, "-1", Status::NotANumber, 77u, 0);
}

TEST(SbNumber, WritesTheShortestTextThatReadsBackTheSame)
{
    std::mt19937 random(40);
    for (int i = 0; i < 200000; ++i) {
        const float value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        std::string text;
        SbNumber::appendFloat(text, value);
        float back = 0;
        ASSERT_TRUE(SbNumber::toFloat(text, back)) << text;
        ASSERT_TRUE(std::isnan(value)
                        ? text == "nan"
                        : std::bit_cast<std::uint32_t>(back) == std::bit_cast<std::uint32_t>(value))
            << text;
        ASSERT_LE(text.size(), 15u);
    }
    std::string text;
    for (const float value :
         {0.1f, -0.f, 100000.f, kInfinity, -kInfinity, -std::numeric_limits<float>::quiet_NaN()}) {
        SbNumber::appendFloat(text, value);
        text += ' ';
    }
    EXPECT_EQ(text, "0.1 -0 1e+05 inf -inf nan ");
    text.clear();
    SbNumber::appendDouble(text, -std::numeric_limits<double>::denorm_min());
    SbNumber::appendInt(text, std::numeric_limits<std::int64_t>::min());
    SbNumber::appendHex(text, 0xABC, 8);
    EXPECT_EQ(text, "-5e-324-92233720368547758080x00000abc");
}
