// What a window costs and what it gives where the disk fails, asked directly.
#include "avi/file_window.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/avi_builder/riff_builder.h"
#include "tests/support/failing_file.h"
#include "tests/support/memory_file.h"

namespace orvantis {
namespace {

using test::Bytes;
using test::FailingFile;
using test::MemoryFile;

constexpr std::uint64_t kFileBytes = 400 * 1024;

/// A file whose 32-bit words are their own positions.
Bytes numbered() {
    Bytes bytes(kFileBytes);
    for (std::uint32_t at = 0; at < kFileBytes; at += 4) {
        std::memcpy(&bytes[at], &at, 4);
    }
    return bytes;
}

class FileWindowTest : public testing::Test {
 protected:
    FileWindowTest() : m_memory(numbered()), file(m_memory) { window.attach(file, kFileBytes); }

    bool readsWordAt(std::uint64_t position) {
        std::uint32_t word = 0;
        return window.readSmall(position, &word, sizeof word) && word == position;
    }
    std::uint64_t reads() const { return m_memory.counts().reads; }

 private:
    MemoryFile m_memory;

 protected:
    FailingFile file;
    FileWindow window;
};

TEST_F(FileWindowTest, NoBytesAreThereWithoutARead) {
    EXPECT_TRUE(window.readSmall(8, nullptr, 0));
    EXPECT_TRUE(window.readBulk(8, nullptr, 0));
    EXPECT_TRUE(window.readBulk(kFileBytes, nullptr, 0)) << "the end of the file holds no bytes";
    EXPECT_FALSE(window.readBulk(kFileBytes + 1, nullptr, 0));
    EXPECT_EQ(reads(), 0U);
}

TEST_F(FileWindowTest, TroubleFarBehindAPlaceDoesNotKeepAWindowFromIt) {
    constexpr std::uint64_t kBad = 300 * 1024;
    file.makeUnreadable(kBad, 4);
    EXPECT_FALSE(readsWordAt(kBad));
    const std::uint64_t before = reads();
    EXPECT_TRUE(readsWordAt(8));
    EXPECT_TRUE(readsWordAt(FileWindow::kWindowBytes)) << "the window's last word";
    EXPECT_EQ(reads(), before + 1);
}

TEST_F(FileWindowTest, AWindowThatWouldReachIntoTroubleIsNotAskedForAgain) {
    constexpr std::uint64_t kBad = 300 * 1024;
    file.makeUnreadable(kBad, 4);
    EXPECT_FALSE(readsWordAt(kBad));
    const std::uint64_t faults = file.faults();
    // A window from here ends with the first bad byte; the word itself is sound.
    EXPECT_TRUE(readsWordAt(kBad + 4 - FileWindow::kWindowBytes));
    EXPECT_EQ(file.faults(), faults);
    const std::uint64_t before = reads();
    EXPECT_TRUE(readsWordAt(kBad + 8 - FileWindow::kWindowBytes)) << "read by itself, again without a window";
    EXPECT_EQ(reads(), before + 1);
    // One word earlier a window ends just ahead of it.
    EXPECT_TRUE(readsWordAt(kBad - FileWindow::kWindowBytes));
    EXPECT_TRUE(readsWordAt(kBad - 4));
    EXPECT_EQ(reads(), before + 2);
    EXPECT_EQ(file.faults(), faults);
}

TEST_F(FileWindowTest, MissesAreBoundedByTwoWaysThroughTheFileAndSomeMore) {
    constexpr std::uint64_t kMost = 2 * (kFileBytes / FileWindow::kWindowBytes) + 2048;
    ASSERT_TRUE(readsWordAt(0));
    std::uint64_t misses = 1;
    while (misses <= kMost && readsWordAt((misses % 2 + 1) * 128 * 1024)) {
        ++misses;
    }
    EXPECT_EQ(misses, kMost);
    EXPECT_EQ(reads(), kMost);
    std::uint32_t word = 0;
    EXPECT_FALSE(window.readSmall(200 * 1024, &word, sizeof word));
    EXPECT_TRUE(readsWordAt(0)) << "what a window has is no miss";
}

TEST_F(FileWindowTest, NothingOfAFileBeforeIsLeft) {
    file.makeUnreadable(300 * 1024, 4);
    constexpr std::uint64_t kSecond = 128 * 1024 + 4;
    EXPECT_FALSE(readsWordAt(300 * 1024));
    ASSERT_TRUE(readsWordAt(4));
    ASSERT_TRUE(readsWordAt(kSecond));
    MemoryFile zeros{Bytes(kFileBytes)};
    FailingFile other(zeros);
    other.makeUnreadable(8 * 1024, 4);
    window.attach(other, kFileBytes);
    for (const std::uint64_t position : {std::uint64_t{4}, kSecond}) {
        std::uint8_t first = 1;
        EXPECT_TRUE(window.readSmall(position, &first, sizeof first)) << position;
        EXPECT_EQ(first, 0U) << position;
    }
    EXPECT_FALSE(readsWordAt(8 * 1024));
    const std::uint64_t before = zeros.counts().reads;
    std::uint32_t word = 1;
    EXPECT_TRUE(window.readSmall(220 * 1024, &word, sizeof word));
    EXPECT_TRUE(window.readSmall(220 * 1024 + 8, &word, sizeof word));
    EXPECT_EQ(zeros.counts().reads - before, 1U) << "the trouble was the other file's";
}

}  // namespace
}  // namespace orvantis
