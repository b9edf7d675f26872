#include <kalmyr/base/SbDict.h>
#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SbString.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(SbDict, KeepsKeysInTheOrderOfEntry)
{
    SbDict<SbName, int> dict;
    EXPECT_TRUE(dict.enter("b", 1));
    EXPECT_TRUE(dict.enter("a", 2));
    EXPECT_FALSE(dict.enter("b", 3)) << "replaced in its place";
    EXPECT_EQ(*dict.find("b"), 3);
    EXPECT_EQ(dict.find("c"), nullptr);
    EXPECT_EQ(dict.getKeys(), (std::vector<SbName>{"b", "a"}));
    EXPECT_TRUE(dict.remove("b"));
    EXPECT_FALSE(dict.remove("b"));
    EXPECT_TRUE(dict.enter("b", 4));
    EXPECT_EQ(dict.getKeys(), (std::vector<SbName>{"a", "b"})) << "entered anew, so it is last";
}

TEST(SbDict, AgreesWithAPlainListUnderRandomEdits)
{
    std::mt19937 random(11);
    SbDict<int, SbString> dict;
    std::vector<std::pair<int, std::string>> model;
    for (int step = 0; step < 20'000; ++step) {
        const int key = static_cast<int>(random() % 200);
        const auto at = std::find_if(model.begin(), model.end(),
                                     [key](const auto& entry) { return entry.first == key; });
        if (random() % 2) {
            const std::string value = std::to_string(step);
            EXPECT_EQ(dict.enter(key, SbString(value)), at == model.end());
            if (at == model.end())
                model.emplace_back(key, value);
            else
                at->second = value;
        } else {
            EXPECT_EQ(dict.remove(key), at != model.end());
            if (at != model.end())
                model.erase(at);
        }
        ASSERT_EQ(dict.getLength(), static_cast<int>(model.size()));
    }
    std::size_t i = 0;
    dict.forEach([&](int key, const SbString& value) {
        EXPECT_EQ(key, model[i].first);
        EXPECT_EQ(value, model[i++].second);
    });
}

} // namespace
