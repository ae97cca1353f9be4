// The files that stand in for the disk in other tests must keep to the contract of a real file, and their
// faults and counters must be what those tests take them for.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <stdexcept>
#include <string>

#include "tests/support/failing_file.h"
#include "tests/support/memory_file.h"
#include "tests/support/sparse_file.h"

namespace {

using namespace orvantis::test;

std::string readSome(fileio::File& file, std::uint64_t count) {
    std::string bytes(static_cast<std::size_t>(count), '?');
    bytes.resize(static_cast<std::size_t>(file.read(bytes.data(), count)));
    return bytes;
}

TEST(MemoryFileContract, BehavesAsAFileOnTheDisk) {
    MemoryFile file(std::string_view("0123456789"));
    EXPECT_EQ(file.size(), 10);
    EXPECT_EQ(readSome(file, 4), "0123");
    EXPECT_EQ(file.tell(), 4);
    EXPECT_FALSE(file.seek(-1));
    EXPECT_EQ(file.tell(), 4);
    EXPECT_EQ(readSome(file, 100), "456789");
    EXPECT_EQ(readSome(file, 1), "");
    EXPECT_TRUE(file.seek(20));
    EXPECT_EQ(file.tell(), 20);
    EXPECT_EQ(readSome(file, 1), "");
    EXPECT_TRUE(file.seek(8));
    EXPECT_EQ(file.writeAt("xyz", 3, 9), 3u);
    EXPECT_EQ(file.tell(), 8);
    EXPECT_EQ(readSome(file, 9), "8xyz");
    char byte = '?';
    EXPECT_TRUE(file.seek(0));
    EXPECT_EQ(file.read(&byte, 0x100000001u), 1u);
    EXPECT_EQ(byte, '0');
    EXPECT_TRUE(file.seek(14));
    EXPECT_EQ(file.write("!", 1), 1u);
    EXPECT_EQ(file.size(), 15);
}

TEST(MemoryFileContract, ClosedItGivesNothing) {
    MemoryFile file(std::string_view("0123"));
    file.close();
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(file.size(), 0);
    EXPECT_FALSE(file.seek(0));
    EXPECT_EQ(readSome(file, 4), "");
    EXPECT_TRUE(file.open("", fileio::kOpenRead));
    EXPECT_EQ(readSome(file, 4), "0123");
    EXPECT_TRUE(file.open("", fileio::kOpenWrite));
    EXPECT_EQ(file.size(), 0);
}

TEST(MemoryFileContract, CountsWhatIsAskedOfIt) {
    MemoryFile file(std::string_view("0123456789"));
    readSome(file, 4);
    readSome(file, 100);
    file.seek(-1);
    file.seek(5);
    file.tell();
    file.size();
    file.size();
    file.close();
    const FileCounts counts = file.counts();
    EXPECT_EQ(counts.reads, 2u);
    EXPECT_EQ(counts.bytesRead, 10u);
    EXPECT_EQ(counts.largestRead, 100u);
    EXPECT_EQ(counts.seeks, 2u);
    EXPECT_EQ(counts.tells, 1u);
    EXPECT_EQ(counts.sizes, 2u);
    EXPECT_EQ(counts.closes, 1u);
    EXPECT_EQ(counts.operations(), 7u);
    file.resetCounts();
    EXPECT_EQ(file.counts().operations(), 0u);
}

TEST(SparseFileContract, HasZerosBetweenItsPlaces) {
    constexpr std::int64_t kFar = std::int64_t{1} << 40;
    const std::byte bytes[] = {std::byte{'a'}, std::byte{'b'}, std::byte{'c'}};
    SparseFile file(100);
    file.put(2, bytes);
    file.put(kFar, bytes);
    EXPECT_EQ(file.size(), kFar + 3);
    EXPECT_EQ(readSome(file, 7), std::string("\0\0abc\0\0", 7));
    EXPECT_EQ(file.tell(), 7);
    ASSERT_TRUE(file.seek(3));
    EXPECT_EQ(readSome(file, 1), "b");
    ASSERT_TRUE(file.seek(kFar - 1));
    EXPECT_EQ(readSome(file, 100), std::string("\0abc", 4));
    EXPECT_EQ(readSome(file, 100), "");
    EXPECT_FALSE(file.seek(-1));
    EXPECT_EQ(file.write("x", 1), 0u);
    EXPECT_EQ(file.counts().bytesRead, 12u);
}

TEST(FailingFileFaults, WithoutAPlanEverythingPasses) {
    MemoryFile memory(std::string_view("0123"));
    FailingFile file(memory);
    EXPECT_EQ(readSome(file, 4), "0123");
    EXPECT_TRUE(file.seek(1));
    EXPECT_EQ(file.tell(), 1);
    EXPECT_EQ(file.size(), 4);
    EXPECT_EQ(file.write("x", 1), 1u);
    EXPECT_EQ(file.faults(), 0u);
}

TEST(FailingFileFaults, OneOperationFailsAndTheNextPasses) {
    MemoryFile memory(std::string_view("0123456789"));
    FailingFile file(memory);
    file.plan(FileFault::kFail, 2, FileOperation::kRead);
    EXPECT_TRUE(file.seek(0));
    EXPECT_EQ(readSome(file, 2), "01");
    EXPECT_EQ(readSome(file, 2), "");
    EXPECT_EQ(readSome(file, 2), "23");
    EXPECT_EQ(file.seen(), 3u);
    EXPECT_EQ(file.faults(), 1u);
}

TEST(FailingFileFaults, AllOperationsFromOneOnFail) {
    MemoryFile memory(std::string_view("0123456789"));
    FailingFile file(memory);
    file.plan(FileFault::kFail, 3, FileOperation::kAny, true);
    EXPECT_EQ(readSome(file, 2), "01");
    EXPECT_TRUE(file.seek(5));
    EXPECT_FALSE(file.seek(6));
    EXPECT_EQ(file.tell(), 0);
    EXPECT_EQ(file.size(), 0);
    EXPECT_EQ(readSome(file, 2), "");
    EXPECT_EQ(file.write("x", 1), 0u);
    EXPECT_EQ(file.faults(), 5u);
    EXPECT_EQ(memory.tell(), 5);
}

TEST(FailingFileFaults, ShortReadsGiveHalf) {
    MemoryFile memory(std::string_view("0123456789"));
    FailingFile file(memory);
    file.plan(FileFault::kShortRead, 1, FileOperation::kAny, true);
    EXPECT_TRUE(file.seek(0));
    EXPECT_EQ(readSome(file, 5), "01");
    EXPECT_EQ(readSome(file, 1), "");
    EXPECT_EQ(file.size(), 10);
}

TEST(FailingFileFaults, Throwing) {
    MemoryFile memory(std::string_view("0123456789"));
    FailingFile file(memory);
    file.plan(FileFault::kThrowRuntime, 1);
    EXPECT_THROW(file.seek(0), std::runtime_error);
    EXPECT_TRUE(file.seek(0));
    file.plan(FileFault::kThrowBadAlloc, 1, FileOperation::kRead);
    EXPECT_TRUE(file.seek(0));
    EXPECT_THROW(readSome(file, 1), std::bad_alloc);
    EXPECT_EQ(file.faults(), 1u);
}

}  // namespace
