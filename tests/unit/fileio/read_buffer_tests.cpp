// The buffer that is lent to reads.

#include "fileio/read_buffer.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <new>

namespace {

using fileio::ReadBuffer;

// The sanitizers' operator new ends the process instead of throwing.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kNewThrows = false;
#else
constexpr bool kNewThrows = true;
#endif
#else
constexpr bool kNewThrows = true;
#endif

TEST(ReadBuffer, IsEmptyAtFirst) {
    const ReadBuffer buffer;
    EXPECT_EQ(buffer.capacity(), 0u);
    EXPECT_EQ(buffer.data(), nullptr);
}

TEST(ReadBuffer, GrowsAndNeverShrinks) {
    ReadBuffer buffer;
    std::byte* const first = buffer.ensure(100);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(buffer.capacity(), 100u);
    EXPECT_EQ(buffer.ensure(40), first);
    EXPECT_EQ(buffer.ensure(100), first);
    EXPECT_EQ(buffer.capacity(), 100u);
    std::byte* const second = buffer.ensure(101);
    EXPECT_EQ(buffer.capacity(), 101u);
    EXPECT_EQ(buffer.data(), second);
    second[100] = std::byte{1};  // all of it belongs to the caller
}

TEST(ReadBuffer, KeepsItsContentsWhileItNeedNotGrow) {
    ReadBuffer buffer;
    buffer.ensure(4)[3] = std::byte{42};
    EXPECT_EQ(buffer.ensure(2)[3], std::byte{42});
}

TEST(ReadBuffer, StaysAsItWasWhenMemoryRunsOut) {
    if (!kNewThrows) {
        GTEST_SKIP() << "running out of memory ends the process in this build";
    }
    ReadBuffer buffer;
    std::byte* const before = buffer.ensure(16);
    before[0] = std::byte{7};
    // Half of the address space: no system gives that.
    EXPECT_THROW(buffer.ensure(std::numeric_limits<std::size_t>::max() / 2), std::bad_alloc);
    EXPECT_EQ(buffer.capacity(), 16u);
    EXPECT_TRUE(buffer.data() == before);
    EXPECT_EQ(buffer.data()[0], std::byte{7});
}

}  // namespace
