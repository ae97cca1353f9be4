// What fileio::File adds to the seven operations of a real file, and the texts of its exceptions.

#include "fileio/file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "fileio/error.h"
#include "tests/support/memory_file.h"

namespace {

using namespace fileio;
using orvantis::test::MemoryFile;
using testing::ElementsAre;

template <typename Exception, typename Function>
Exception caught(Function function) {
    try {
        function();
    } catch (const Exception& error) {
        return error;
    }
    throw std::logic_error("no exception");
}

TEST(FileErrors, ReadErrorNamesBothCounts) {
    const ReadError error(65536, 1200);
    EXPECT_STREQ(error.what(), "Read error: size: 65536, read: 1200");
    EXPECT_EQ(error.size, 65536u);
    EXPECT_EQ(error.read, 1200u);
}

TEST(FileErrors, CountsAreUnsigned64Bit) {
    EXPECT_STREQ(ReadError(18446744073709551615u, 0).what(),
                 "Read error: size: 18446744073709551615, read: 0");
    EXPECT_STREQ(ReadError(5000000000u, 4294967296u).what(),
                 "Read error: size: 5000000000, read: 4294967296");
}

TEST(FileErrors, SeekErrorNamesTheSignedOffset) {
    EXPECT_STREQ(SeekError(-1).what(), "Seek error: offset: -1");
    EXPECT_EQ(SeekError(-1).offset, -1);
    EXPECT_STREQ(SeekError(5000000000).what(), "Seek error: offset: 5000000000");
    EXPECT_STREQ(SeekError(INT64_MIN).what(), "Seek error: offset: -9223372036854775808");
}

TEST(FileErrors, AreCaughtAsEachOfTheirBases) {
    EXPECT_THROW(throw ReadError(1, 0), Error);
    EXPECT_THROW(throw ReadError(1, 0), std::runtime_error);
    EXPECT_THROW(throw SeekError(1), Error);
    EXPECT_THROW(throw SeekError(1), std::exception);
    EXPECT_STREQ(Error("plain message").what(), "plain message");
}

TEST(File, ReadExactTakesAllBytes) {
    MemoryFile file(std::string_view("abcdef"));
    char bytes[6] = {'?', '?', '?', '?', '?', '?'};
    file.readExact(bytes, 4);
    EXPECT_THAT(bytes, ElementsAre('a', 'b', 'c', 'd', '?', '?'));
    EXPECT_EQ(file.counts().reads, 1u);
}

TEST(File, ReadExactAtTheEndThrowsWithBothCounts) {
    MemoryFile file(std::string_view("abcdef"));
    file.seekTo(4);
    char bytes[10];
    const auto error = caught<ReadError>([&] { file.readExact(bytes, 10); });
    EXPECT_STREQ(error.what(), "Read error: size: 10, read: 2");
    EXPECT_EQ(error.size, 10u);
    EXPECT_EQ(error.read, 2u);
    // One read, no second try.
    EXPECT_EQ(file.counts().reads, 1u);
}

TEST(File, ReadExactOfNothingReadsNothing) {
    MemoryFile file;
    EXPECT_NO_THROW(file.readExact(nullptr, 0));
}

TEST(File, ReadExactOfMoreThan32BitsThrows) {
    // The count is truncated on the way, so it can never be reached.
    MemoryFile file(std::string_view("abcdef"));
    char bytes[8];
    EXPECT_STREQ(caught<ReadError>([&] { file.readExact(bytes, 0x100000002u); }).what(),
                 "Read error: size: 4294967298, read: 2");
}

TEST(File, SeekToThrowsOnARefusedOffset) {
    MemoryFile file(std::string_view("abcdef"));
    file.seekTo(3);
    EXPECT_EQ(file.tell(), 3);
    EXPECT_STREQ(caught<SeekError>([&] { file.seekTo(-1); }).what(), "Seek error: offset: -1");
    EXPECT_EQ(file.tell(), 3);
}

TEST(File, AlignmentAndBlockSizeAre4096) {
    MemoryFile file;
    EXPECT_EQ(file.alignment(), 4096u);
    EXPECT_EQ(file.blockSize(), 4096u);
}

// A file that lists its calls.
class ListingFile final : public File {
 public:
    bool open(const char*, int) override { return false; }
    void close() override {}
    std::int64_t size() override { return 0; }
    std::int64_t tell() override {
        calls.emplace_back("tell");
        return 77;
    }
    bool seek(std::int64_t offset) override {
        calls.push_back("seek " + std::to_string(offset));
        return !refused.contains(offset);
    }
    std::uint64_t read(void*, std::uint64_t) override { return 0; }
    std::uint64_t write(const void*, std::uint64_t count) override {
        calls.push_back("write " + std::to_string(count));
        return written;
    }
    std::vector<std::string> calls;
    std::set<std::int64_t> refused;
    std::uint64_t written = 5;
};

TEST(FileWriteAt, WritesThereAndGoesBack) {
    ListingFile file;
    EXPECT_EQ(file.writeAt("12345", 5, 1000), 5u);
    EXPECT_THAT(file.calls, ElementsAre("tell", "seek 1000", "write 5", "seek 77"));
}

TEST(FileWriteAt, WritesNothingWhenTheSeekIsRefused) {
    ListingFile file;
    file.refused = {-3};
    EXPECT_EQ(file.writeAt("12345", 5, -3), 0u);
    EXPECT_THAT(file.calls, ElementsAre("tell", "seek -3"));
}

TEST(FileWriteAt, GoesBackAfterAShortWriteAndReportsIt) {
    ListingFile file;
    file.written = 2;
    EXPECT_EQ(file.writeAt("12345", 5, 0), 2u);
    EXPECT_THAT(file.calls, ElementsAre("tell", "seek 0", "write 5", "seek 77"));
}

TEST(FileWriteAt, ARefusedWayBackChangesNothing) {
    ListingFile file;
    file.refused = {77};
    EXPECT_EQ(file.writeAt("12345", 5, 8), 5u);
}

}  // namespace
