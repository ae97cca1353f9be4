// The file on the disk: opening modes, positions, reading and writing. The same on Windows and with the
// native twin.

#include "fileio/win_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "fileio/error.h"
#include "tests/support/temp_folder.h"

namespace {

using namespace fileio;
using orvantis::test::readFile;
using orvantis::test::TempFolder;
using orvantis::test::utf8Path;
using orvantis::test::writeFile;
namespace fs = std::filesystem;

// The modes that the importer uses.
constexpr int kOrdinary = kOpenRead | kOpenShareRead;               // 9
constexpr int kWritable = kOpenRead | kOpenWrite | kOpenShareRead;  // 11

void* closedHandle() {
    return reinterpret_cast<void*>(~std::uintptr_t{0});
}

class WinFileTest : public testing::Test {
 protected:
    std::string path(const char* name) const { return utf8Path(m_folder / name); }

    std::string make(const char* name, std::string_view bytes) const {
        writeFile(m_folder / name, bytes);
        return path(name);
    }

    std::string readSome(std::uint64_t count) {
        std::string bytes(static_cast<std::size_t>(count), '?');
        bytes.resize(static_cast<std::size_t>(m_file.read(bytes.data(), count)));
        return bytes;
    }

    TempFolder m_folder;
    WinFile m_file;
};

TEST_F(WinFileTest, ModesHaveTheirNumbers) {
    EXPECT_EQ(kOrdinary, 9);
    EXPECT_EQ(kWritable, 11);
    EXPECT_EQ(kOpenUnbuffered, 4);
}

TEST_F(WinFileTest, IsClosedAtFirst) {
    EXPECT_FALSE(m_file.isOpen());
    EXPECT_EQ(m_file.osHandle(), closedHandle());
    EXPECT_EQ(m_file.size(), 0);
    EXPECT_EQ(m_file.tell(), 0);
    EXPECT_FALSE(m_file.seek(0));
    char byte = '?';
    EXPECT_EQ(m_file.read(&byte, 1), 0u);
    EXPECT_EQ(m_file.write(&byte, 1), 0u);
    EXPECT_EQ(byte, '?');
}

TEST_F(WinFileTest, ClosingAClosedFileIsHarmless) {
    m_file.close();
    m_file.close();
    EXPECT_FALSE(m_file.isOpen());
    EXPECT_EQ(m_file.osHandle(), closedHandle());
}

TEST_F(WinFileTest, OrdinaryModeReadsAnExistingFile) {
    ASSERT_TRUE(m_file.open(make("a.avi", "0123456789").c_str(), kOrdinary));
    EXPECT_TRUE(m_file.isOpen());
    EXPECT_NE(m_file.osHandle(), closedHandle());
    EXPECT_EQ(m_file.size(), 10);
    EXPECT_EQ(m_file.tell(), 0);
    EXPECT_EQ(readSome(4), "0123");
    EXPECT_EQ(m_file.tell(), 4);
    EXPECT_EQ(readSome(100), "456789");
    EXPECT_EQ(readSome(100), "");
    EXPECT_EQ(m_file.tell(), 10);
    m_file.close();
    EXPECT_FALSE(m_file.isOpen());
    EXPECT_EQ(m_file.osHandle(), closedHandle());
}

TEST_F(WinFileTest, OrdinaryModeRefusesToWrite) {
    const std::string name = make("a.avi", "0123");
    ASSERT_TRUE(m_file.open(name.c_str(), kOrdinary));
    EXPECT_EQ(m_file.write("x", 1), 0u);
    m_file.close();
    EXPECT_EQ(readFile(m_folder / "a.avi"), "0123");
}

TEST_F(WinFileTest, OrdinaryModeDoesNotCreateAMissingFile) {
    EXPECT_FALSE(m_file.open(path("missing.avi").c_str(), kOrdinary));
    EXPECT_FALSE(m_file.isOpen());
    EXPECT_EQ(m_file.osHandle(), closedHandle());
    EXPECT_FALSE(fs::exists(m_folder / "missing.avi"));
}

TEST_F(WinFileTest, WritableModeCreatesAMissingFile) {
    ASSERT_TRUE(m_file.open(path("new.avi").c_str(), kWritable));
    EXPECT_TRUE(fs::exists(m_folder / "new.avi"));
    EXPECT_EQ(m_file.size(), 0);
    EXPECT_EQ(m_file.write("abc", 3), 3u);
    EXPECT_TRUE(m_file.seek(1));
    EXPECT_EQ(readSome(9), "bc");
}

TEST_F(WinFileTest, WritableModeEmptiesAnExistingFile) {
    ASSERT_TRUE(m_file.open(make("a.avi", "0123456789").c_str(), kWritable));
    EXPECT_EQ(m_file.size(), 0);
    m_file.close();
    EXPECT_EQ(readFile(m_folder / "a.avi"), "");
}

TEST_F(WinFileTest, WriteAloneCreatesButCannotRead) {
    ASSERT_TRUE(m_file.open(path("new.avi").c_str(), kOpenWrite));
    EXPECT_EQ(m_file.write("abc", 3), 3u);
    EXPECT_TRUE(m_file.seek(0));
    EXPECT_EQ(readSome(3), "");
    m_file.close();
    EXPECT_EQ(readFile(m_folder / "new.avi"), "abc");
}

TEST_F(WinFileTest, NeitherReadNorWriteFails) {
    const std::string name = make("a.avi", "0123");
    for (const int mode :
         {0, int{kOpenShareRead}, int{kOpenUnbuffered}, kOpenShareRead | kOpenUnbuffered, 16, 256}) {
        EXPECT_FALSE(m_file.open(name.c_str(), mode)) << mode;
        EXPECT_FALSE(m_file.isOpen()) << mode;
        EXPECT_FALSE(m_file.open(path("missing.avi").c_str(), mode)) << mode;
    }
    EXPECT_FALSE(fs::exists(m_folder / "missing.avi"));
    EXPECT_EQ(readFile(m_folder / "a.avi"), "0123");
}

TEST_F(WinFileTest, UnknownModeBitsAreIgnored) {
    ASSERT_TRUE(m_file.open(make("a.avi", "0123").c_str(), kOrdinary | 0x7FFFFFF0));
    EXPECT_EQ(readSome(4), "0123");
}

TEST_F(WinFileTest, UnbufferedModeReadsWholeBlocks) {
    ASSERT_TRUE(
        m_file.open(make("a.avi", std::string(8192, 'x') + "end").c_str(), kOrdinary | kOpenUnbuffered));
    // Position, count and buffer are multiples of the block size, as this mode demands.
    std::string bytes(3 * 4096, '?');
    void* block = bytes.data();
    std::size_t space = bytes.size();
    ASSERT_NE(std::align(4096, 4096, block, space), nullptr);
    ASSERT_TRUE(m_file.seek(4096));
    EXPECT_EQ(m_file.read(block, 4096), 4096u);
    EXPECT_EQ(std::string(static_cast<char*>(block), 4096), std::string(4096, 'x'));
    EXPECT_EQ(m_file.read(block, 4096), 3u);
    EXPECT_EQ(std::string(static_cast<char*>(block), 3), "end");
}

TEST_F(WinFileTest, FoldersAreNoFiles) {
    EXPECT_FALSE(m_file.open(utf8Path(m_folder.path()).c_str(), kOrdinary));
    EXPECT_FALSE(m_file.open(utf8Path(m_folder.path()).c_str(), kWritable));
    EXPECT_FALSE(m_file.open("", kOrdinary));
    EXPECT_FALSE(m_file.open(u"", kOrdinary));
    EXPECT_FALSE(m_file.isOpen());
}

TEST_F(WinFileTest, OpeningClosesTheOpenFileFirst) {
    const std::string first = make("first.avi", "first");
    const std::string second = make("second.avi", "second");
    ASSERT_TRUE(m_file.open(first.c_str(), kOpenRead));  // nobody else may open it
    ASSERT_TRUE(m_file.open(second.c_str(), kOrdinary));
    EXPECT_EQ(readSome(6), "second");
    WinFile other;
    EXPECT_TRUE(other.open(first.c_str(), kOpenRead));
}

TEST_F(WinFileTest, OpeningTheSameFileAgainIsNotHinderedByItself) {
    const std::string name = make("a.avi", "0123");
    ASSERT_TRUE(m_file.open(name.c_str(), kOpenRead));
    ASSERT_TRUE(m_file.seek(2));
    ASSERT_TRUE(m_file.open(name.c_str(), kOpenRead));
    EXPECT_EQ(m_file.tell(), 0);
}

TEST_F(WinFileTest, AFailedOpenLeavesNothingOpen) {
    const std::string name = make("a.avi", "0123");
    ASSERT_TRUE(m_file.open(name.c_str(), kOpenRead));
    EXPECT_FALSE(m_file.open(path("missing.avi").c_str(), kOrdinary));
    EXPECT_FALSE(m_file.isOpen());
    EXPECT_EQ(m_file.osHandle(), closedHandle());
    WinFile other;
    EXPECT_TRUE(other.open(name.c_str(), kOpenRead));
}

TEST_F(WinFileTest, DestructionClosesTheFile) {
    const std::string name = make("a.avi", "0123");
    {
        WinFile other;
        ASSERT_TRUE(other.open(name.c_str(), kOpenRead));
        EXPECT_FALSE(m_file.open(name.c_str(), kOrdinary));
    }
    EXPECT_TRUE(m_file.open(name.c_str(), kOrdinary));
    m_file.close();
    EXPECT_TRUE(fs::remove(m_folder / "a.avi"));
}

TEST_F(WinFileTest, CanBeUsedThroughItsBase) {
    File& file = m_file;
    ASSERT_TRUE(file.open(make("a.avi", "0123").c_str(), kOrdinary));
    EXPECT_EQ(file.size(), 4);
    EXPECT_EQ(file.alignment(), 4096u);
    EXPECT_EQ(file.blockSize(), 4096u);
    file.close();
    EXPECT_FALSE(m_file.isOpen());
}

TEST_F(WinFileTest, SeekingBeforeTheStartIsRefused) {
    ASSERT_TRUE(m_file.open(make("a.avi", "0123456789").c_str(), kOrdinary));
    ASSERT_TRUE(m_file.seek(3));
    EXPECT_FALSE(m_file.seek(-1));
    EXPECT_FALSE(m_file.seek(INT64_MIN));
    EXPECT_EQ(m_file.tell(), 3);
    EXPECT_EQ(readSome(2), "34");
    try {
        m_file.seekTo(-1);
        FAIL() << "no exception";
    } catch (const SeekError& error) {
        EXPECT_STREQ(error.what(), "Seek error: offset: -1");
        EXPECT_EQ(error.offset, -1);
    }
}

TEST_F(WinFileTest, SeekingPastTheEndSucceedsAndReadsNothing) {
    ASSERT_TRUE(m_file.open(make("a.avi", "0123456789").c_str(), kOrdinary));
    for (const std::int64_t offset : {std::int64_t{10}, std::int64_t{11}, std::int64_t{1} << 33}) {
        EXPECT_TRUE(m_file.seek(offset));
        EXPECT_EQ(m_file.tell(), offset);
        EXPECT_EQ(readSome(10), "");
        EXPECT_EQ(m_file.tell(), offset);
    }
    EXPECT_EQ(m_file.size(), 10);
    EXPECT_TRUE(m_file.seek(9));
    EXPECT_EQ(readSome(10), "9");
}

TEST_F(WinFileTest, ReadExactAtTheEndThrowsWithBothCounts) {
    ASSERT_TRUE(m_file.open(make("a.avi", "0123456789").c_str(), kOrdinary));
    m_file.seekTo(7);
    char bytes[8];
    try {
        m_file.readExact(bytes, 8);
        FAIL() << "no exception";
    } catch (const ReadError& error) {
        EXPECT_STREQ(error.what(), "Read error: size: 8, read: 3");
    }
    m_file.seekTo(2);
    m_file.readExact(bytes, 8);
    EXPECT_EQ(std::string(bytes, 8), "23456789");
}

TEST_F(WinFileTest, CountsAreTakenIn32Bits) {
    ASSERT_TRUE(m_file.open(path("a.avi").c_str(), kWritable));
    EXPECT_EQ(m_file.write("0123456789", 0x100000003u), 3u);
    EXPECT_EQ(m_file.write("0123456789", 0x100000000u), 0u);
    EXPECT_EQ(m_file.size(), 3);
    ASSERT_TRUE(m_file.seek(0));
    char bytes[4] = {'?', '?', '?', '?'};
    EXPECT_EQ(m_file.read(bytes, 0x500000002u), 2u);
    EXPECT_THAT(bytes, testing::ElementsAre('0', '1', '?', '?'));
    EXPECT_EQ(m_file.read(bytes, 0xF00000000u), 0u);
    EXPECT_EQ(m_file.tell(), 2);
}

TEST_F(WinFileTest, ReadingNothingIsNoFailure) {
    ASSERT_TRUE(m_file.open(make("a.avi", "0123").c_str(), kOrdinary));
    EXPECT_EQ(m_file.read(nullptr, 0), 0u);
    EXPECT_EQ(m_file.tell(), 0);
}

TEST_F(WinFileTest, WriteAtLeavesThePosition) {
    ASSERT_TRUE(m_file.open(path("a.avi").c_str(), kWritable));
    ASSERT_EQ(m_file.write("0123456789", 10), 10u);
    ASSERT_TRUE(m_file.seek(4));
    EXPECT_EQ(m_file.writeAt("AB", 2, 7), 2u);
    EXPECT_EQ(m_file.tell(), 4);
    EXPECT_EQ(readSome(6), "456AB9");
    EXPECT_EQ(m_file.writeAt("Z", 1, -1), 0u);
    EXPECT_EQ(m_file.tell(), 10);
    EXPECT_EQ(m_file.writeAt("end", 3, 12), 3u);
    EXPECT_EQ(m_file.tell(), 10);
    m_file.close();
    EXPECT_EQ(readFile(m_folder / "a.avi"), std::string("0123456AB9\0\0end", 15));
}

TEST_F(WinFileTest, BytesAreNotTranslated) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    all += "\r\n\n\r\x1A after";
    ASSERT_TRUE(m_file.open(make("a.avi", all).c_str(), kOrdinary));
    EXPECT_EQ(m_file.size(), static_cast<std::int64_t>(all.size()));
    EXPECT_EQ(readSome(1000), all);
}

TEST_F(WinFileTest, EmptyFilesAreFiles) {
    ASSERT_TRUE(m_file.open(make("a.avi", "").c_str(), kOrdinary));
    EXPECT_EQ(m_file.size(), 0);
    EXPECT_EQ(readSome(1), "");
}

TEST_F(WinFileTest, SizeFollowsTheFileNotThePosition) {
    ASSERT_TRUE(m_file.open(path("a.avi").c_str(), kWritable));
    ASSERT_TRUE(m_file.seek(100));
    EXPECT_EQ(m_file.size(), 0);
    ASSERT_EQ(m_file.write("x", 1), 1u);
    EXPECT_EQ(m_file.size(), 101);
}

}  // namespace
