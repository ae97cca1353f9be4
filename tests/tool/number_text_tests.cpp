// Numbers and dates for people, and when announcing frames did not pay.
#include "tool/shared/base/number_text.h"

#include <gtest/gtest.h>

#include "tool/async/async_timing.h"

namespace simhost::tool {
namespace {

TEST(NumberText, OneIsNotMany) {
    EXPECT_EQ(counted(0, "file", "files"), "0 files");
    EXPECT_EQ(counted(1, "file", "files"), "1 file");
    EXPECT_EQ(counted(2, "file", "files"), "2 files");
}

TEST(NumberText, DatesAreThoseOfTheCalendar) {
    EXPECT_EQ(dateText(0), "1970-01-01 00:00:00 UTC");
    EXPECT_EQ(dateText(951'827'696), "2000-02-29 12:34:56 UTC");
    EXPECT_EQ(dateText(-1), "1969-12-31 23:59:59 UTC");
}

TEST(NumberText, TheTimeLeftGoesByThePaceSoFar) {
    EXPECT_EQ(timeLeftText(0.9, 50, 100), "");
    EXPECT_EQ(timeLeftText(10, 0, 100), "");
    EXPECT_EQ(timeLeftText(10, 25, 100), ", 0:30 left");
    EXPECT_EQ(timeLeftText(100, 1, 100), ", 165:00 left");
    EXPECT_EQ(timeLeftText(10, 100, 100), ", 0:00 left");
    EXPECT_EQ(timeLeftText(1000, 1, 1'000'000), "");
}

TEST(AsyncTiming, SlowerIsToldBeyondWhatMeasuringBlurs) {
    const PlayTiming synchronous{1.0, 0.5, 10};
    EXPECT_TRUE(asynchronousIsSlower(synchronous, {1.2, 0.7, 10}));
    EXPECT_FALSE(asynchronousIsSlower(synchronous, {1.01, 0.5, 10}));
    EXPECT_FALSE(asynchronousIsSlower(synchronous, {0.6, 0.1, 10}));
    EXPECT_FALSE(asynchronousIsSlower({}, {1.0, 0.5, 10}));
}

}  // namespace
}  // namespace simhost::tool
