#include "mirabo/core/ErrorScope.h"

#include <kalmyr/base/SoReadError.h>

#include <thread>

#include <gtest/gtest.h>

namespace {

void count(const SoError*, void* number)
{
    ++*static_cast<int*>(number);
}

} // namespace

TEST(ErrorScope, LeavesTheHandlersAsTheyWere)
{
    int base = 0;
    int own = 0;
    {
        const mirabo::ErrorScope<SoError> host(&count, &base);
        {
            const mirabo::FirstError<SoReadError> first;
            SoReadError::post("file.ky", 1, 1, "the cause");
            SoReadError::post("file.ky", 1, 1, "what follows");
            EXPECT_TRUE(first.text().contains("the cause"));
            EXPECT_FALSE(first.text().contains("follows"));
        }
        // A class without a handler of its own follows its base class again.
        int other = 0;
        const mirabo::ErrorScope<SoError> changed(&count, &other);
        SoReadError::post("file.ky", 1, 1, "to the new handler");
        EXPECT_EQ(base, 0);
        EXPECT_EQ(other, 1);
    }
    {
        const mirabo::ErrorScope<SoReadError> handler(&count, &base);
        {
            const mirabo::FirstError<SoReadError> inner;
        }
        SoReadError::post("file.ky", 1, 1, "to the handler of the class");
        EXPECT_EQ(base, 1);
    }
    SoErrorCB* const before = SoReadError::getHandlerCallback();
    {
        const mirabo::FirstError<SoReadError> first;
        SoReadError::setHandlerCallback(&count, &own); // somebody else's, which stays
    }
    SoReadError::post("file.ky", 1, 1, "to the later handler");
    EXPECT_EQ(own, 1);
    SoReadError::setHandlerCallback(nullptr, nullptr);
    EXPECT_EQ(SoReadError::getHandlerCallback(), before);
}

TEST(ErrorScope, LeavesOtherThreadsTheirErrors)
{
    int base = 0;
    int hosts = 0;
    const mirabo::ErrorScope<SoError> host(&count, &base);
    const auto postElsewhere = [] {
        std::thread([] { SoReadError::post("theirs.ky", 1, 1, "of a host's thread"); }).join();
    };
    {
        const mirabo::FirstError<SoReadError> first;
        postElsewhere();
        EXPECT_EQ(base, 1) << "by the handler of the base class";
        SoReadError::post("file.ky", 1, 1, "ours");
        EXPECT_TRUE(first.text().contains("ours"));
    }
    const mirabo::ErrorScope<SoReadError> read(&count, &hosts);
    const mirabo::FirstError<SoReadError> first;
    postElsewhere();
    EXPECT_EQ(hosts, 1);
    EXPECT_EQ(base, 1);
    EXPECT_TRUE(first.text().isEmpty());
}
