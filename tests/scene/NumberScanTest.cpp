// Numbers are read by methods of our own; here they are compared with the standard library's.
#include <kalmyr/base/SbNumber.h>
#include <kalmyr/core/SoTokenizer.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Random = std::mt19937_64;

std::string printed(const char* format, double value, int digits)
{
    char text[1200];
    const int size = std::snprintf(text, sizeof text, format, digits, value);
    return std::string(text, static_cast<std::size_t>(size));
}

/// A finite number with any bits.
template <class T, class Bits>
T anyBits(Random& random)
{
    for (;;) {
        const T value = std::bit_cast<T>(static_cast<Bits>(random()));
        if (std::isfinite(value))
            return value;
    }
}

/// The text half-way between two neighbouring floats, exactly, or a little beside it.
std::string halfWay(Random& random)
{
    const float low = std::fabs(random() % 2 ? anyBits<float, std::uint32_t>(random)
                                             : static_cast<float>(random() % 40'000'000));
    const float high = std::nextafter(low, std::numeric_limits<float>::infinity());
    std::string text = printed("%.*f", (double(low) + double(high)) / 2, 160);
    text.erase(text.find_last_not_of('0') + 1);
    if (random() % 3 == 0)
        text += std::string(random() % 30, '0') + '1';
    else if (random() % 2 == 0 && text.back() > '1')
        --text.back();
    return text;
}

std::string digits(Random& random, std::size_t most)
{
    std::string text;
    for (std::size_t n = random() % (most + 1); n > 0; --n)
        text += static_cast<char>('0' + (random() % 4 ? random() % 10 : 0));
    return text;
}

std::string anyNumber(Random& random)
{
    const char* const sign = random() % 3 == 0 ? "-" : random() % 20 == 0 ? "+" : "";
    switch (random() % 8) {
    case 0:
        return printed("%.*g", anyBits<float, std::uint32_t>(random), 9);
    case 1:
        return printed("%.*g", anyBits<double, std::uint64_t>(random), 17);
    case 2:
        return sign + halfWay(random);
    case 3: // whole numbers about the limits of exactness
        return sign
               + std::to_string((std::uint64_t(1) << (random() % 2 ? 24 : 53)) + random() % 64
                                - 32);
    case 4:
        return sign + ('1' + digits(random, 24)) + 'e' + std::to_string(int(random() % 90) - 45);
    case 5: { // a few digits, as most files have them
        const double value = static_cast<double>(random() % 2'000'000) / 1000 - 1000;
        return printed("%.*g", value, 6);
    }
    case 6:
        return sign + digits(random, 10) + '.' + digits(random, 18) + '0';
    default:
        return sign + std::to_string(random() % 100'000);
    }
}

const char* separator(Random& random)
{
    constexpr const char* kAll[] = {" ",    " ",  " ",   ", ",       "\n",
                                    "\r\n", "\t", ",\n", " # 1 2\n", " ]"};
    return kAll[random() % 9];
}

template <class T>
bool isSameNumber(T a, T b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

template <class T>
void compareMany(bool (SoTokenizer::*readOne)(T&))
{
    Random random(4711);
    std::vector<std::string> numbers(60'000);
    std::string text;
    for (std::string& number : numbers) {
        number = anyNumber(random);
        text += number + separator(random);
    }
    std::vector<T> values(numbers.size() + 1);
    SoTokenizer in(text.data(), text.size());
    ASSERT_EQ(in.readNumbers(values.data(), values.size()), numbers.size());
    EXPECT_TRUE(in.atEnd());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const char* const first = numbers[i].data();
        const char* const last = numbers[i].data() + numbers[i].size();
        T wanted = 0, alone = 0;
        ASSERT_TRUE(SbNumber::detail::parseFloating(first, last, wanted)) << numbers[i];
        ASSERT_TRUE(isSameNumber(values[i], wanted)) << numbers[i] << ": " << values[i];
        SoTokenizer one(numbers[i].c_str(), numbers[i].size());
        ASSERT_TRUE((one.*readOne)(alone) && one.atEnd()) << numbers[i];
        ASSERT_TRUE(isSameNumber(alone, wanted)) << numbers[i] << ": " << alone;
    }
}

} // namespace

TEST(NumberScan, ReadsFloatsAndDoublesToTheLastBit)
{
    compareMany<float>(&SoTokenizer::readFloat);
    compareMany<double>(&SoTokenizer::readDouble);
}

TEST(NumberScan, ReadsWholeNumbersOfAllLengthsAndStopsInFrontOfOthers)
{
    Random random(4712);
    for (int round = 0; round < 300; ++round) {
        std::vector<std::int32_t> wanted;
        std::string text;
        for (int i = 0; i < 100; ++i) {
            wanted.push_back(static_cast<std::int32_t>(random()) >> (random() % 32));
            text += std::to_string(wanted.back()) + separator(random);
        }
        const std::size_t size = text.size();
        constexpr const char* kOthers[] = {"2147483648", "1.5", "x", "-", "1e3", "--1", "1-x", "]"};
        const std::string other = kOthers[random() % 8];
        text += other + std::string(random() % 2 ? 0 : 200, ' ');
        std::vector<std::int32_t> values(300);
        SoTokenizer in(text.data(), text.size());
        std::size_t count = in.readNumbers(values.data(), values.size());
        // "1.5" and "1-x" are refused whole or where the rest begins, as alone.
        SoTokenizer alone(text.data() + size, text.size() - size);
        std::int32_t last = 0;
        if (alone.readNumbers(&last, 1) == 1)
            wanted.push_back(last);
        ASSERT_EQ(count, wanted.size()) << other;
        values.resize(count);
        EXPECT_EQ(values, wanted);
        in.peek();
        alone.peek();
        EXPECT_EQ(in.getOffset(), size + alone.getOffset()) << other;
    }
}
