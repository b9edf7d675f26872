#include "support/ErrorGuard.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    support::installErrorGuard();
    return RUN_ALL_TESTS();
}
