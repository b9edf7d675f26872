#include "support/Clock.h"

#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SbString.h>
#include <kalmyr/base/SbTime.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <gtest/gtest.h>

using namespace std::string_literals;

TEST(SbString, MixesWithOtherKindsOfText)
{
    const SbName name("node");
    const std::string standard = "std";
    SbString s = SbString("a") + "b" + standard + name + 'c';
    s = "<" + s + std::string_view(">");
    s += name;
    s += standard;
    EXPECT_EQ(s, "<abstdnodec>nodestd");
    EXPECT_TRUE(s != name && name == "node" && SbString(name) == name
                && standard == SbString("std"));
    EXPECT_TRUE(SbString("a") < SbString("ab") && SbString() < SbString("a"));
    EXPECT_EQ(SbString(static_cast<const char*>(nullptr)), "");
    EXPECT_EQ(SbString("a\0b", 3).getLength(), 3u);
    EXPECT_EQ(std::hash<SbString>()(s), std::hash<std::string>()(s.toStdString()));
}

TEST(SbString, CutsOutPartsWithinItsBounds)
{
    const SbString s("0123456789");
    EXPECT_EQ(s.getSubString(3, 5), "345");
    EXPECT_EQ(s.getSubString(8), "89");
    EXPECT_EQ(s.getSubString(8, 100), "89");
    EXPECT_EQ(s.getSubString(10), "");
    EXPECT_EQ(s.getSubString(5, 4), "");
    SbString cut = s;
    cut.deleteSubString(2, 7);
    EXPECT_EQ(cut, "0189");
    cut.deleteSubString(3);
    EXPECT_EQ(cut, "018");
    cut.deleteSubString(9, 12);
    EXPECT_EQ(cut, "018");
    EXPECT_EQ(s.find("45"), 4u);
    EXPECT_EQ(s.find("45", 5), SbString::npos);
    EXPECT_EQ(SbString("abab").rfind("ab"), 2u);
}

TEST(SbString, ChangesAsciiOnly)
{
    EXPECT_EQ(SbString("Zoë ÄB1").upper(), "ZOë ÄB1");
    EXPECT_EQ(SbString("Zoë ÄB1").lower(), "zoë Äb1");
    EXPECT_EQ(SbString(" \t\r\n a b \v\f").trim(), "a b");
    EXPECT_EQ(SbString(" \n ").trim(), "");
    EXPECT_EQ(SbString("aXbXX").replaced("X", "XX"), "aXXbXXXX");
    EXPECT_EQ(SbString("abc").replaced("", "x"), "abc");
}

TEST(SbString, FormatsTextsOfAnyLength)
{
    EXPECT_EQ(SbString::format("%d-%s-%05.2f", 7, "x", 3.14159), "7-x-03.14");
    const std::string longText(100000, 'x');
    EXPECT_EQ(SbString::format("<%s>", longText.c_str()), "<" + longText + ">");
    EXPECT_EQ(SbString(-5) + SbString(0.1f) + SbString(0.1), "-50.10.1");
}

TEST(SbString, Utf16RoundTripsEveryCharacter)
{
    std::u16string all;
    for (char32_t c = 1; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF)
            continue;
        if (c < 0x10000)
            all += static_cast<char16_t>(c);
        else
            all.append({static_cast<char16_t>(0xD7C0 + (c >> 10)),
                        static_cast<char16_t>(0xDC00 + (c & 0x3FF))});
    }
    const SbString utf8 = SbString::fromUtf16(all);
    EXPECT_TRUE(utf8.isValidUtf8());
    EXPECT_TRUE(utf8.toUtf16() == all);
    EXPECT_EQ(SbString::fromUtf16(u"aß€😀"), "aß€😀");
}

TEST(SbString, BrokenUtf8BecomesOneReplacementForEachMaximalPart)
{
    const struct {
        SbString bytes;
        std::u16string expected;
    } kCases[] = {
        {"a\x80z", u"a\uFFFDz"},                           // lone continuation
        {"\xC3", u"\uFFFD"},                               // cut off at the end
        {"\xE2\x82", u"\uFFFD"},                           // cut off after two
        {"\xE2\x82z", u"\uFFFDz"},                         // cut off in the middle
        {"\xC0\xAF", u"\uFFFD\uFFFD"},                     // overlong
        {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD"},           // overlong
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},           // surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}, // beyond U+10FFFF
        {"\xF0\x9F\x98x\xFF", u"\uFFFDx\uFFFD"},
    };
    for (const auto& c : kCases) {
        EXPECT_TRUE(c.bytes.toUtf16() == c.expected) << c.bytes;
        EXPECT_FALSE(c.bytes.isValidUtf8()) << c.bytes;
    }
    EXPECT_EQ(SbString::fromUtf16(std::u16string{u'a', 0xD800, u'b', 0xDC00, 0xDBFF}),
              "a\uFFFDb\uFFFD\uFFFD");
}

TEST(SbString, Latin1KeepsItsCharactersAndReplacesTheRest)
{
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    EXPECT_EQ(SbString::fromLatin1(all).toLatin1(), all);
    EXPECT_EQ(SbString("é€").toLatin1(), "\xE9?");
}

TEST(SbName, EqualTextsAreOneHandle)
{
    const std::string built = "Sepa"s + "rator";
    EXPECT_EQ(SbName(built), SbName("Separator"));
    EXPECT_EQ(SbName(built).getString(), SbName("Separator").getString());
    EXPECT_NE(SbName("separator"), SbName("Separator"));
    EXPECT_EQ(SbName(""), SbName::empty());
    EXPECT_EQ(SbName(static_cast<const char*>(nullptr)).getString(), ""s);
    EXPECT_EQ(SbName(std::string_view("ab\0c", 4)).getLength(), 4u);
    EXPECT_TRUE(SbName::find("never made before").isEmpty());
    EXPECT_EQ(SbName::find("Separator"), SbName("Separator"));
    EXPECT_TRUE(SbName("b") < SbName("c") && !(SbName("c") < SbName("b"))
                && !(SbName("b") < SbName("b")));
    EXPECT_EQ((std::unordered_set<SbName>{"x", "y", "x"}).size(), 2u);
}

TEST(SbName, ThreadsAgreeOnOneHandleForEachText)
{
    constexpr int kThreads = 4;
    constexpr int kNames = 20000; // Enough for the table to grow several times.
    std::vector<std::vector<SbName>> seen(kThreads, std::vector<SbName>(kNames));
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&seen, t] {
            for (int i = 0; i < kNames; ++i) {
                const int n = (i * 7919 + t * 5000) % kNames;
                seen[t][n] = SbName("thread_" + std::to_string(n));
            }
        });
    for (std::thread& t : threads)
        t.join();
    std::unordered_set<const char*> distinct;
    for (int n = 0; n < kNames; ++n) {
        distinct.insert(seen[0][n].getString());
        ASSERT_EQ(seen[0][n].view(), "thread_" + std::to_string(n));
        for (int t = 1; t < kThreads; ++t)
            ASSERT_EQ(seen[t][n], seen[0][n]);
    }
    EXPECT_EQ(distinct.size(), std::size_t(kNames));
}

TEST(SbName, LongTextsDoNotDisturbTheirNeighbours)
{
    const std::string longText(200000, 'q');
    const SbName before("neighbour a"), big(longText), after("neighbour b");
    EXPECT_EQ(big.view(), longText);
    EXPECT_EQ(before.view(), "neighbour a");
    EXPECT_EQ(after.view(), "neighbour b");
}

TEST(SbName, KnowsWhichCharactersMayStandWhere)
{
    const auto count = [](bool (*test)(char)) {
        int n = 0;
        for (int c = 0; c < 256; ++c)
            n += test(static_cast<char>(c));
        return n;
    };
    EXPECT_EQ(count(SbName::isIdentStartChar), 53);
    EXPECT_EQ(count(SbName::isIdentChar), 63);
    // 94 visible ASCII characters without ten forbidden ones, and 128 bytes of longer characters.
    EXPECT_EQ(count(SbName::isBaseNameChar), 94 - 10 + 128);
    EXPECT_EQ(count(SbName::isBaseNameStartChar), 94 - 10 - 12 + 128);
    EXPECT_FALSE(SbName::isBaseNameStartChar('-') || SbName::isBaseNameChar('.')
                 || SbName::isBaseNameChar(' '));
}

TEST(SbTime, FormatsSpans)
{
    const SbTime t(93784.0625);
    EXPECT_EQ(t.format("%D d %H:%M:%S.%I"), "1 d 02:03:04.062");
    EXPECT_EQ(t.format("%H:%M"), "26:03");
    EXPECT_EQ(t.format("%S,%U 100%%"), "93784,062500 100%");
    EXPECT_EQ(t.format("%I/%U"), "93784062/500");
    EXPECT_EQ((-t).format("%M"), "-1563");
    EXPECT_EQ(SbTime(59.9999999).format("%M:%S"), "1:00");
    EXPECT_EQ(SbTime(INFINITY).format(), "inf");
    EXPECT_EQ(SbTime(1.5).format("%x %"), "%x %");
}

TEST(SbTime, ClocksMoveOn)
{
    const SbTime start = SbTime::monotonic();
    SbTime later = start;
    while (later == start)
        later = SbTime::monotonic();
    EXPECT_GT(later, start);
    EXPECT_GT(SbTime::getTimeOfDay(), SbTime(1.6e9));
    EXPECT_EQ(SbTime(86400. * 365).formatDate("%Y").getLength(), 4u);
}

TEST(SbTime, ClocksFollowASourceWhileThereIsOne)
{
    {
        const support::Clock clock;
        const SbTime start = SbTime::monotonic();
        EXPECT_EQ(SbTime::getTimeOfDay(), start);
        support::Clock::advance(1e6);
        EXPECT_NEAR((SbTime::monotonic() - start).getValue(), 1e6, 1e-3);
        EXPECT_EQ(SbTime::getTimeOfDay(), SbTime::monotonic());
    }
    const SbTime real = SbTime::getTimeOfDay();
    const support::Clock clock;
    EXPECT_LT((SbTime::getTimeOfDay() - real).getValue(), 1e5) << "the advance is forgotten";
}
