#include "support/ErrorGuard.h"

#include <kalmyr/core/SoType.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/tilevex/TvSymTool.h>

#include <gtest/gtest.h>

namespace {

int s_inits = 0;
int s_finishes = 0;

TEST(TvSymTool, CountsTheUsersOfAModule)
{
    s_inits = s_finishes = 0;
    ASSERT_TRUE(TvSymTool::registerModule(
        "Counted", [] { ++s_inits; }, [] { ++s_finishes; }));
    EXPECT_FALSE(TvSymTool::isInitialized("Counted"));
    EXPECT_TRUE(TvSymTool::initModule("Counted"));
    EXPECT_TRUE(TvSymTool::initModule("Counted"));
    EXPECT_EQ(s_inits, 1);
    EXPECT_FALSE(TvSymTool::registerModule("Counted", nullptr, nullptr)) << "it is in use";
    EXPECT_TRUE(TvSymTool::finishModule("Counted"));
    EXPECT_TRUE(TvSymTool::isInitialized("Counted"));
    EXPECT_TRUE(TvSymTool::finishModule("Counted"));
    EXPECT_FALSE(TvSymTool::isInitialized("Counted"));
    EXPECT_TRUE(TvSymTool::finishModule("Counted")) << "one too many is no fault";
    EXPECT_EQ(s_finishes, 1);
    EXPECT_TRUE(TvSymTool::initModule("Counted"));
    EXPECT_EQ(s_inits, 2);
    EXPECT_TRUE(TvSymTool::finishModule("Counted"));
}

TEST(TvSymTool, NamesAModuleThatIsNotKnown)
{
    auto errors = support::expectErrors();
    EXPECT_FALSE(TvSymTool::initModule("Nonsense"));
    EXPECT_FALSE(TvSymTool::finishModule("Nonsense"));
    EXPECT_TRUE(errors.contains("Nonsense"));
}

TEST(TvSymTool, StartsAndFinishesEveryModuleTwice)
{
    SoDB::init();
    const SoType shape = SoType::fromName("VRMLShape");
    EXPECT_FALSE(shape.isBad());
    const auto names = TvSymTool::getModuleNames();
    for (int round = 0; round < 2; ++round) {
        for (const SbName& name : names)
            EXPECT_TRUE(TvSymTool::initModule(name)) << name.getString();
        for (auto name = names.rbegin(); name != names.rend(); ++name)
            EXPECT_TRUE(TvSymTool::finishModule(*name)) << name->getString();
        for (const SbName& name : names)
            EXPECT_FALSE(TvSymTool::isInitialized(name)) << name.getString();
        EXPECT_EQ(SoType::fromName("VRMLShape"), shape) << "the toolkit's own stay";
    }
}

} // namespace
