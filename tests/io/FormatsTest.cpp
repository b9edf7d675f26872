#include "IoSupport.h"

#include "support/ErrorGuard.h"

#include <kalmyr/nodes/SoSeparator.h>

#include <algorithm>
#include <random>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::vector<std::string> corpus(bool bad)
{
    std::vector<std::string> files;
    for (const auto& entry :
         fs::recursive_directory_iterator(fs::path(MIRABO_TEST_DATA_DIR) / "formats")) {
        const std::string name = entry.path().filename().string();
        const std::string kind = entry.path().extension().string();
        if ((kind != ".ky" && kind != ".wrl") || (name.find("_bad_") != std::string::npos) != bad)
            continue;
        files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string nameOf(const testing::TestParamInfo<std::string>& info)
{
    std::string name = fs::path(info.param).parent_path().filename().string() + "_"
                       + fs::path(info.param).stem().string();
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

class GoodFile : public io::IoTest, public testing::WithParamInterface<std::string> {};
class BadFile : public io::IoTest, public testing::WithParamInterface<std::string> {};

} // namespace

TEST_P(GoodFile, IsWrittenAsItWasRead)
{
    auto warnings = support::expectErrors();
    warnings.mayStayEmpty();
    SoInput in;
    ASSERT_TRUE(in.openFile(GetParam()));
    const SoRef<SoNode> first(SoDB::readAll(&in));
    ASSERT_TRUE(first);
    const std::string once = io::write(first.get());
    const SoRef<SoNode> second = io::read(once);
    ASSERT_TRUE(second) << once;
    EXPECT_EQ(io::write(second.get()), once);
    const fs::path expected = fs::path(GetParam()).replace_extension(".written");
    if (fs::exists(expected)) {
        EXPECT_EQ(once, io::readFile(expected));
    }
    for (const std::string& text : warnings.texts())
        EXPECT_EQ(text.find("error:"), std::string::npos) << text;
}

TEST_P(GoodFile, MayEndAtAnyByteOrBeDamaged)
{
    auto errors = support::expectErrors();
    errors.mayStayEmpty();
    const std::string text = io::readFile(GetParam());
    for (std::size_t n = 0; n < text.size(); ++n)
        io::read(std::string_view(text).substr(0, n));
    std::minstd_rand random(7);
    for (int round = 0; round < 300; ++round) {
        std::string damaged = text;
        for (int i = 0; i < 3; ++i)
            damaged[random() % damaged.size()] = "{}[]\"\\#~ \n0-.+DEFx\0\xff"[random() % 21];
        damaged.replace(0, text.find('\n'), text, 0, text.find('\n'));
        io::read(damaged);
    }
    SUCCEED();
}

TEST_P(BadFile, IsRefusedWithTheFirstFault)
{
    auto errors = support::expectErrors();
    const std::string text = io::readFile(GetParam());
    std::string expected = "1:1 the file is empty; expected one of";
    const fs::path beside = fs::path(GetParam()).replace_extension(".expect"); // of binary files
    if (fs::exists(beside)) {
        expected = io::readFile(beside);
        expected.resize(expected.find('\n'));
    } else if (const auto at = text.find("# expect "); at != std::string::npos) {
        expected = text.substr(at + 9, text.find('\n', at) - at - 9);
    }
    expected.insert(expected.find(' '), ": error:");
    SoInput in;
    ASSERT_TRUE(in.openFile(GetParam()));
    EXPECT_EQ(SoDB::readAll(&in), nullptr);
    const auto texts = errors.texts();
    ASSERT_FALSE(texts.empty());
    // Binary files have no lines.
    const std::string file = GetParam() + (expected.starts_with(':') ? "" : ":");
    EXPECT_TRUE(errors.contains(file + expected)) << expected << "\n" << texts.back();
    EXPECT_EQ(
        std::count_if(texts.begin(), texts.end(),
                      [](const std::string& t) { return t.find("error:") != std::string::npos; }),
        1);
}

INSTANTIATE_TEST_SUITE_P(Corpus, GoodFile, testing::ValuesIn(corpus(false)), nameOf);
INSTANTIATE_TEST_SUITE_P(Corpus, BadFile, testing::ValuesIn(corpus(true)), nameOf);
