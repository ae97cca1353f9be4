// One test that passes and one that fails: tests/scripts looks at what is shown of them.
#include <gtest/gtest.h>

namespace {

TEST(FailingExample, Passes) {
    EXPECT_EQ(1 + 1, 2);
}

TEST(FailingExample, Fails) {
    EXPECT_EQ(1 + 1, 3) << "this one says what was wrong";
}

}  // namespace
