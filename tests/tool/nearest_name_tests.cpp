// The nearest of several names.
#include "tool/shared/base/nearest_name.h"

#include <gtest/gtest.h>

#include <vector>

namespace simhost::tool {
namespace {

const std::vector<std::string> kNames = {"info", "frames", "audio", "async", "report", "doctor"};

TEST(NearestName, FindsSlipsOfTheHand) {
    EXPECT_EQ(nearestName("inof", kNames), "info");
    EXPECT_EQ(nearestName("frame", kNames), "frames");
    EXPECT_EQ(nearestName("DOCTER", kNames), "doctor");
    EXPECT_EQ(nearestName("reprot", kNames), "report");
    EXPECT_EQ(nearestName("asinc", kNames), "async");
}

TEST(NearestName, AnotherWordHasNone) {
    EXPECT_EQ(nearestName("zebra", kNames), "");
    EXPECT_EQ(nearestName("", kNames), "");
    EXPECT_EQ(nearestName(std::string(10'000, 'x'), kNames), "");
}

}  // namespace
}  // namespace simhost::tool
