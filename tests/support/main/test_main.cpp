// The main function of all test programs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/main/hang_watch.h"

namespace {

std::chrono::seconds secondsOf(const char* variable) {
    const char* const text = std::getenv(variable);
    return std::chrono::seconds(text != nullptr ? std::atoi(text) : 0);
}

}  // namespace

int main(int count, char** arguments) {
    testing::InitGoogleMock(&count, arguments);
    // Set by CTest, which has a limit for each program; unset under a debugger, where waiting is no hang.
    const orvantis::test::HangWatch watch(secondsOf("ORVANTIS_TEST_HANG_SECONDS"),
                                          secondsOf("ORVANTIS_TEST_IDLE_SECONDS"));
    return RUN_ALL_TESTS();
}
