#include "support/Program.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

/// Runs an example for a second beside the inspector that it opens.
class ExampleHostsTest : public testing::TestWithParam<const char*>, protected support::TempFolder {
protected:
    ExampleHostsTest()
    {
        setenv("XDG_CONFIG_HOME", folder().c_str(), 1);
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    }
};

TEST_P(ExampleHostsTest, RunsWithTheInspectorOpen)
{
    const support::Outcome host = support::runProgram(GetParam(), "--run 1 --swap");
    const std::string told = host.output + host.errors;
    EXPECT_EQ(host.status, 0) << told;
    EXPECT_NE(told.find("inspector running: 1\n"), std::string::npos) << told;
    EXPECT_NE(told.find("frames drawn: several\n"), std::string::npos) << told;
}

INSTANTIATE_TEST_SUITE_P(Hosts, ExampleHostsTest,
                         testing::Values("example_host_qt", "example_host_plain",
                                         "example_host_views_qt"));

} // namespace
