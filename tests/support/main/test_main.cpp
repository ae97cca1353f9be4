// The main function of all test programs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/main/hang_watch.h"

int main(int count, char** arguments) {
    testing::InitGoogleMock(&count, arguments);
    // Set by CTest, which has a limit for each program; unset under a debugger, where waiting is no hang.
    const char* const limit = std::getenv("ORVANTIS_TEST_HANG_SECONDS");
    const orvantis::test::HangWatch watch(std::chrono::seconds(limit != nullptr ? std::atoi(limit) : 0));
    return RUN_ALL_TESTS();
}
