#include "support/ErrorGuard.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoError.h>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace {

TEST(ErrorGuard, CollectsInTheInnermostScope)
{
    auto outer = support::expectErrors();
    SoError::post("first %d", 1);
    {
        auto inner = support::expectErrors();
        SoDebugError::postWarning("ErrorGuardTest", "second");
        EXPECT_EQ(inner.count(), 1u);
        EXPECT_TRUE(inner.contains("second"));
    }
    EXPECT_EQ(outer.count(), 1u);
    EXPECT_TRUE(outer.contains("first 1"));
}

TEST(ErrorGuard, LetsNoticesPass)
{
    auto errors = support::expectErrors();
    errors.mayStayEmpty();
    SoDebugError::postInfo("ErrorGuardTest", "by the way");
    EXPECT_EQ(errors.count(), 0u);
}

TEST(ErrorGuard, FailsWhenTheAnnouncedErrorDoesNotCome)
{
    EXPECT_NONFATAL_FAILURE({ auto errors = support::expectErrors(); }, "was not posted");
}

// Either order of the two shows that a handler which a test left behind is gone in the next.
class ErrorGuardHandler : public ::testing::TestWithParam<int> {};

TEST_P(ErrorGuardHandler, IsPutBackForEachTest)
{
    auto errors = support::expectErrors();
    SoError::post("seen");
    EXPECT_EQ(errors.count(), 1u);
    SoError::setHandlerCallback([](const SoError*, void*) {});
}

INSTANTIATE_TEST_SUITE_P(Twice, ErrorGuardHandler, ::testing::Values(1, 2));

} // namespace
