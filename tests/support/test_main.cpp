// The main of every GoogleTest binary: isolate the environment before anything runs.

#include "support/test_env.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testIsolateEnvironment();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
