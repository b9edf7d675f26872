#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

/// Runs an example for a second beside the inspector that it opens.
class ExampleHostsTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "mirabo_host_XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        setenv("XDG_CONFIG_HOME", m_folder.c_str(), 1);
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

private:
    std::string m_folder;
};

TEST_P(ExampleHostsTest, RunsWithTheInspectorOpen)
{
    const std::string command =
        std::string(MIRABO_RUNTIME_DIR) + "/" + GetParam() + " --run 1 2>&1 </dev/null";
    FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string output;
    std::array<char, 512> part;
    while (fgets(part.data(), part.size(), pipe))
        output += part.data();
    const int status = pclose(pipe);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << output;
    EXPECT_NE(output.find("inspector running: 1\n"), std::string::npos) << output;
    EXPECT_NE(output.find("frames drawn: several\n"), std::string::npos) << output;
}

INSTANTIATE_TEST_SUITE_P(Hosts, ExampleHostsTest,
                         testing::Values("example_host_qt", "example_host_plain"));

} // namespace
