#include <kalmyr/core/SoTokenizer.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

SoTokenizer over(const std::string& text)
{
    return SoTokenizer(text.data(), text.size(), "test");
}

template <class T>
using Reader = bool (SoTokenizer::*)(T&);

template <class T>
T readOne(const std::string& text, Reader<T> read)
{
    SoTokenizer in = over(text);
    T value{};
    EXPECT_TRUE((in.*read)(value)) << text << ": " << in.getError();
    EXPECT_TRUE(in.atEnd()) << text;
    return value;
}

template <class T>
void expectRefused(const std::string& text, Reader<T> read)
{
    SoTokenizer in = over(text);
    T value{};
    EXPECT_FALSE((in.*read)(value)) << text;
    EXPECT_TRUE(in.hasFailed()) << text;
    EXPECT_NE(in.getError().find("expected"), std::string::npos) << in.getError();
}

} // namespace

TEST(SoTokenizer, SkipsSeparatorsAndComments)
{
    const std::string text = " \t\r\n,# note { } \r# other\n, Group # end";
    SoTokenizer in = over(text);
    std::string_view word;
    EXPECT_TRUE(in.readWord(word));
    EXPECT_EQ(word, "Group");
    EXPECT_TRUE(in.atEnd());
    EXPECT_EQ(in.peek(), 0);
    EXPECT_FALSE(in.accept(0)) << "the zero behind the text is no character of it";
}

TEST(SoTokenizer, EndsIdentifiersAtPunctuation)
{
    const std::string text = "a+b-1.c{d}[e]\"s\"\xc3\xa9_{x'";
    SoTokenizer in = over(text);
    std::string_view word;
    ASSERT_TRUE(in.readWord(word));
    EXPECT_EQ(word, "a+b-1");
    EXPECT_TRUE(in.accept('.'));
    for (const char* part : {"c", "{", "d", "}", "[", "e", "]"}) {
        EXPECT_TRUE(std::isalpha(*part) ? in.acceptWord(part) : in.accept(*part)) << part;
    }
    std::string string;
    EXPECT_TRUE(in.readString(string));
    EXPECT_EQ(string, "s");
    EXPECT_EQ(in.peekWord(), "\xc3\xa9_");
    EXPECT_FALSE(in.acceptWord("\xc3\xa9"));
    EXPECT_TRUE(in.readWord(word));
    EXPECT_TRUE(in.expect('{'));
    EXPECT_TRUE(in.acceptWord("x"));
    EXPECT_FALSE(in.readWord(word)) << "a quote begins no name";
    EXPECT_FALSE(in.hasFailed()) << "and that alone is no error";
}

TEST(SoTokenizer, TakesDigitsAndSignsFirstInNamesOnly)
{
    for (const std::string text : {"+1", "9lives", "-x"}) {
        SoTokenizer in = over(text);
        std::string_view word;
        EXPECT_FALSE(in.readWord(word)) << text;
        EXPECT_TRUE(in.readName(word));
        EXPECT_EQ(word, text);
    }
    const std::string text = "A|B_2)";
    SoTokenizer in = over(text);
    std::string_view word;
    EXPECT_TRUE(in.readIdentifier(word));
    EXPECT_EQ(word, "A");
    EXPECT_TRUE(in.accept('|') && in.readIdentifier(word));
    EXPECT_EQ(word, "B_2");
}

TEST(SoTokenizer, ReadsWholeNumbers)
{
    const auto readInt = &SoTokenizer::readInt;
    EXPECT_EQ(readOne<std::int32_t>(" -2147483648", readInt), std::numeric_limits<int>::min());
    EXPECT_EQ(readOne<std::int32_t>("+2147483647", readInt), std::numeric_limits<int>::max());
    EXPECT_EQ(readOne<std::int32_t>("0xFFffFFff", readInt), -1);
    EXPECT_EQ(readOne<std::int32_t>("-0x10", readInt), -16);
    EXPECT_EQ(readOne<std::int32_t>("000000000000000000000000007", readInt), 7);
    EXPECT_EQ(readOne<std::uint32_t>("4294967295", &SoTokenizer::readUInt), 4294967295u);
    EXPECT_EQ(readOne<std::int16_t>("-32768", &SoTokenizer::readShort), -32768);
    EXPECT_EQ(readOne<std::uint16_t>("0x0000ffff", &SoTokenizer::readUShort), 65535);
    for (const char* text : {"", "2147483648", "-2147483649", "0x", "0x100000000", "1.5", "1.", "x",
                             "+-1", "--1", "99999999999999999999999999999", "-0x80000001"}) {
        expectRefused<std::int32_t>(text, readInt);
    }
    expectRefused<std::uint32_t>("-1", &SoTokenizer::readUInt);
    expectRefused<std::uint16_t>("65536", &SoTokenizer::readUShort);
    expectRefused<std::int16_t>("32768", &SoTokenizer::readShort);
}

TEST(SoTokenizer, ReadsFloats)
{
    const auto readFloat = &SoTokenizer::readFloat;
    EXPECT_EQ(readOne<float>("+.5e1", readFloat), 5.0f);
    EXPECT_EQ(readOne<float>("-1.e-3,", readFloat), -1e-3f);
    EXPECT_TRUE(std::signbit(readOne<float>("-0", readFloat)));
    EXPECT_EQ(readOne<float>("1e-45", readFloat), std::numeric_limits<float>::denorm_min());
    EXPECT_TRUE(std::isnan(readOne<float>("nan", readFloat)));
    EXPECT_EQ(readOne<float>("-inf", readFloat), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(readOne<float>("1e39", readFloat), std::numeric_limits<float>::infinity());
    EXPECT_EQ(readOne<float>("1e-99", readFloat), 0.0f);
    EXPECT_EQ(readOne<double>("1e39", &SoTokenizer::readDouble), 1e39);
    for (const char* text : {"", "-", "+-1", "e5", ".", "infrared", "nano", "TRUE"}) {
        expectRefused<float>(text, readFloat);
    }
}

TEST(SoTokenizer, ReadsBoolsByNameAndNumber)
{
    EXPECT_TRUE(readOne<bool>("TRUE", &SoTokenizer::readBool));
    EXPECT_TRUE(readOne<bool>("1", &SoTokenizer::readBool));
    EXPECT_FALSE(readOne<bool>("FALSE", &SoTokenizer::readBool));
    EXPECT_FALSE(readOne<bool>("0", &SoTokenizer::readBool));
    EXPECT_TRUE(readOne<bool>("true", &SoTokenizer::readBool));
    EXPECT_FALSE(readOne<bool>("False", &SoTokenizer::readBool));
    for (const char* text : {"", "Truth", "2", "10", "TRUEST", "{"}) {
        expectRefused<bool>(text, &SoTokenizer::readBool);
    }
}

TEST(SoTokenizer, ReadsStrings)
{
    const auto readString = &SoTokenizer::readString;
    EXPECT_EQ(readOne<std::string>("\"\"", readString), "");
    EXPECT_EQ(readOne<std::string>("\"a\\\"b\\\\\"", readString), "a\"b\\");
    EXPECT_EQ(readOne<std::string>("\"C:\\new # no comment\n2nd, line\"", readString),
              "C:\\new # no comment\n2nd, line");
    EXPECT_EQ(readOne<std::string>("pictures/sky.png,", readString), "pictures/sky.png");
    for (const char* text : {"", "\"open", "\"open\\\"", "\"open\\", "]"}) {
        expectRefused<std::string>(text, readString);
    }
}

TEST(SoTokenizer, StopsListsInFrontOfWhatIsNoNumber)
{
    std::string text;
    for (int i = 0; i < 5000; ++i) {
        text += std::to_string(i) + (i % 3 ? ", " : " # tail\n");
    }
    text += "] -1 name";
    SoTokenizer in = over(text);
    std::vector<std::int32_t> ints{7};
    EXPECT_EQ(in.readInts(ints), 5000u);
    EXPECT_EQ(ints.size(), 5001u);
    EXPECT_EQ(ints.back(), 4999);
    EXPECT_TRUE(in.accept(']'));
    std::vector<float> floats;
    EXPECT_EQ(in.readFloats(floats), 1u);
    EXPECT_EQ(in.peekWord(), "name");
    EXPECT_FALSE(in.hasFailed());
}

TEST(SoTokenizer, KeepsTheFirstErrorAndItsPosition)
{
    const std::string text = "Cube {\r\n  width\r  x }\n";
    SoTokenizer in = over(text);
    EXPECT_TRUE(in.acceptWord("Cube") && in.accept('{') && in.acceptWord("width"));
    EXPECT_EQ(in.getErrorLine(), 0);
    float width = 0;
    EXPECT_FALSE(in.readFloat(width));
    EXPECT_EQ(in.getErrorLine(), 3);
    EXPECT_EQ(in.getErrorColumn(), 3);
    EXPECT_EQ(in.peek(), 'x') << "the position stays at the offending token";
    const std::string first = in.getError();
    std::string_view word;
    EXPECT_FALSE(in.readWord(word)) << "nothing is read after an error";
    EXPECT_FALSE(in.expect('}'));
    EXPECT_EQ(in.getError(), first);
}

TEST(SoTokenizer, RefusesOverlongNames)
{
    const std::string longest(SoTokenizer::kMaxWordLength, 'a');
    SoTokenizer in = over(longest);
    std::string_view word;
    EXPECT_TRUE(in.readWord(word));
    const std::string longer = longest + 'a';
    SoTokenizer other = over(longer);
    EXPECT_FALSE(other.readWord(word));
    EXPECT_TRUE(other.hasFailed());
}

TEST(SoTokenizer, ReportsProgressOnceAStep)
{
    std::string text;
    while (text.size() < 3 * SoTokenizer::kProgressStep + 10) {
        text += "1.25 ";
    }
    std::vector<std::size_t> offsets;
    SoTokenizer in = over(text);
    in.setProgress(
        [](void* data, std::size_t offset, std::size_t) {
            static_cast<std::vector<std::size_t>*>(data)->push_back(offset);
        },
        &offsets);
    std::vector<float> values;
    in.readFloats(values);
    ASSERT_EQ(offsets.size(), 3u) << "the first at once, then one a step";
    for (std::size_t i = 1; i < offsets.size(); ++i) {
        EXPECT_NEAR(offsets[i] - offsets[i - 1], SoTokenizer::kProgressStep, 10000);
    }
}
