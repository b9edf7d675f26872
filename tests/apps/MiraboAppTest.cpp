#include "support/Program.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

using support::Outcome;

class MiraboAppTest : public testing::Test, protected support::TempFolder {
protected:
    MiraboAppTest() { setenv("XDG_CONFIG_HOME", folder().c_str(), 1); }

    static Outcome run(const std::string& arguments)
    {
        return support::runProgram("mirabo", arguments);
    }
    /// Width and height from a PNG file's header; zeros for what is none.
    static std::array<unsigned, 2> sizeOfPng(const std::string& file)
    {
        std::ifstream in(file, std::ios::binary);
        std::array<unsigned char, 24> head{};
        in.read(reinterpret_cast<char*>(head.data()), head.size());
        if (!in || head[1] != 'P' || head[2] != 'N' || head[3] != 'G')
            return {0, 0};
        const auto number = [&head](std::size_t at) {
            return (unsigned{head[at]} << 24) | (unsigned{head[at + 1]} << 16)
                   | (unsigned{head[at + 2]} << 8) | head[at + 3];
        };
        return {number(16), number(20)};
    }
};

TEST_F(MiraboAppTest, SaysWhatItIsAndHowItIsUsed)
{
    const Outcome help = run("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("usage: mirabo"), std::string::npos);
    const Outcome version = run("--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output.rfind("mirabo 0.", 0), 0U) << version.output;
}

TEST_F(MiraboAppTest, RefusesAWrongCommandLine)
{
    for (const char* arguments : {"--nonsense", "--screenshot", "--size 10", "--size 10xq a.ky",
                                  "--size 0x10 a.ky", "a.ky b.ky"}) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_NE(result.errors.find("mirabo: error: "), std::string::npos) << arguments;
    }
}

TEST_F(MiraboAppTest, WritesAPictureOfItsWindow)
{
    const std::string file = write("a.ky", "#Kalmyr V1.0 ascii\nSeparator { Cube {} }\n");
    const Outcome result = run("--screenshot " + path("a.png") + " --size 640x480 " + file);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(sizeOfPng(path("a.png")), (std::array<unsigned, 2>{640, 480}));
    EXPECT_EQ(run("--screenshot /nowhere/at/all.png " + file).status, 1);
}

TEST_F(MiraboAppTest, SaysWhereAFileIsBad)
{
    const std::string bad = write("bad.ky", "#Kalmyr V1.0 ascii\nSeparator {\n  12 {}\n}\n");
    const Outcome result = run("--screenshot " + path("bad.png") + " " + bad);
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find(bad + ":3:3"), std::string::npos) << result.errors;
    EXPECT_EQ(sizeOfPng(path("bad.png"))[0], 0U) << "no picture of an empty window";

    const Outcome missing = run("--screenshot " + path("no.png") + " " + path("no.ky"));
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.errors.find("no.ky"), std::string::npos) << missing.errors;
}

} // namespace
