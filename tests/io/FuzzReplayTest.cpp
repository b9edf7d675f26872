#include "IoSupport.h"

#include "../../fuzz/ReadScene.h"
#include "support/ErrorGuard.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <random>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::vector<std::string> corpus()
{
    std::vector<std::string> files;
    for (const char* folder : {"formats", "fuzz"})
        for (const auto& entry :
             fs::recursive_directory_iterator(fs::path(MIRABO_TEST_DATA_DIR) / folder))
            if (entry.is_regular_file())
                files.push_back(io::readFile(entry.path().string()));
    std::sort(files.begin(), files.end());
    return files;
}

/// A few bytes changed, removed, doubled, or taken from another file.
std::string damaged(const std::vector<std::string>& files, std::minstd_rand& random)
{
    static const char* const kWords[] = {"{",
                                         "}",
                                         "[",
                                         "]",
                                         "DEF A ",
                                         "USE A ",
                                         "PROTO",
                                         " IS ",
                                         "ROUTE A.a TO A.b ",
                                         "\"",
                                         "-1 ",
                                         "1e39 ",
                                         "#",
                                         "NULL",
                                         "@0 ",
                                         "fields [ SFNode a ] "};
    const auto pick = [&](std::size_t n) { return n ? random() % n : 0; };
    std::string text = files[pick(files.size())];
    const std::size_t changes = 1 + pick(4);
    for (std::size_t i = 0; i < changes; ++i) {
        const std::size_t at = pick(text.size());
        const std::size_t length = std::min<std::size_t>(pick(40), text.size() - at);
        const std::string& other = files[pick(files.size())];
        switch (pick(5)) {
        case 0:
            text.insert(at, kWords[pick(std::size(kWords))]);
            break;
        case 1:
            text.erase(at, length);
            break;
        case 2:
            text.insert(at, text.substr(pick(text.size()), length));
            break;
        case 3:
            text.insert(at, other, pick(other.size()), length);
            break;
        default:
            if (!text.empty())
                text[at] = static_cast<char>(random());
        }
    }
    return text;
}

} // namespace

TEST(FuzzReplayTest, WhatCanBeReadIsWrittenAlike)
{
    SoDB::init();
    auto errors = support::expectErrors();
    errors.mayStayEmpty();
    for (const std::string& text : corpus())
        EXPECT_STREQ(fuzz::findDisagreement(text), nullptr) << text.substr(0, 400);
}

TEST(FuzzReplayTest, DamageDoesNoHarm)
{
    constexpr int kRounds = 500;
    SoDB::init();
    const std::vector<std::string> files = corpus();
    // A number of rounds asks for a long run, with other damage each time.
    const char* wanted = std::getenv("KALMYR_FUZZ_ROUNDS");
    const int rounds = wanted ? std::atoi(wanted) : kRounds;
    std::minstd_rand random(wanted ? std::random_device()() : 11);
    for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
        auto errors = support::expectErrors();
        errors.mayStayEmpty();
        const std::string text = damaged(files, random);
        if (wanted) // stays for whoever looks for what went wrong
            std::ofstream(fs::temp_directory_path() / "kalmyr_fuzz_last", std::ios::binary) << text;
        EXPECT_STREQ(fuzz::findDisagreement(text), nullptr) << "round " << round << "\n" << text;
    }
}
