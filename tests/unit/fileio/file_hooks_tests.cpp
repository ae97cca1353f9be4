// The fault injection of the native WinFile, on which the tests of the whole plug-in rely.

#include "tests/support/file_hooks.h"

#include <gtest/gtest.h>

#include <string>

#include "fileio/win_file.h"
#include "tests/support/temp_folder.h"

namespace {

using namespace orvantis::test;
using fileio::WinFile;

constexpr int kReadMode = 9;

class FileHooksTest : public testing::Test {
 protected:
    FileHooksTest() { writeFile(m_folder / "a.avi", "0123456789"); }
    std::string path() const { return utf8Path(m_folder / "a.avi"); }
    TempFolder m_folder;
};

TEST_F(FileHooksTest, CountEverything) {
    InstalledFileHooks hooks;
    {
        WinFile file;
        ASSERT_TRUE(file.open(path().c_str(), kReadMode));
        char bytes[16];
        EXPECT_EQ(file.read(bytes, 16), 10u);
        EXPECT_TRUE(file.seek(0));
        EXPECT_EQ(file.read(bytes, 3), 3u);
        EXPECT_EQ(file.size(), 10);
        EXPECT_EQ(file.tell(), 3);
        EXPECT_EQ(file.write("x", 1), 0u);
        EXPECT_FALSE(file.open((path() + "x").c_str(), kReadMode));
    }
    EXPECT_EQ(hooks->opens.count, 2u);
    EXPECT_EQ(hooks->opened, 1u);
    EXPECT_EQ(hooks->closes, 1u);
    EXPECT_EQ(hooks->reads.count, 2u);
    EXPECT_EQ(hooks->bytesRead, 13u);
    EXPECT_EQ(hooks->seeks.count, 1u);
    EXPECT_EQ(hooks->sizes.count, 1u);
    EXPECT_EQ(hooks->tells.count, 1u);
    EXPECT_EQ(hooks->writes.count, 1u);
    EXPECT_EQ(hooks->bytesWritten, 0u);
}

TEST_F(FileHooksTest, FailOneOperation) {
    InstalledFileHooks hooks;
    hooks->opens.failAt = 1;
    hooks->reads.failAt = 2;
    hooks->seeks.failAt = 1;
    hooks->sizes.failAt = 1;
    WinFile file;
    EXPECT_FALSE(file.open(path().c_str(), kReadMode));
    EXPECT_FALSE(file.isOpen());
    ASSERT_TRUE(file.open(path().c_str(), kReadMode));
    char bytes[4];
    EXPECT_EQ(file.read(bytes, 2), 2u);
    EXPECT_EQ(file.read(bytes, 2), 0u);
    EXPECT_EQ(file.tell(), 2);
    EXPECT_EQ(file.read(bytes, 2), 2u);
    EXPECT_FALSE(file.seek(0));
    EXPECT_EQ(file.tell(), 4);
    EXPECT_TRUE(file.seek(0));
    EXPECT_EQ(file.size(), 0);
    EXPECT_EQ(file.size(), 10);
}

TEST_F(FileHooksTest, FailFromAnOperationOn) {
    InstalledFileHooks hooks;
    hooks->reads.failAt = 2;
    hooks->reads.failFromThere = true;
    WinFile file;
    ASSERT_TRUE(file.open(path().c_str(), kReadMode));
    char bytes[4];
    EXPECT_EQ(file.read(bytes, 2), 2u);
    EXPECT_EQ(file.read(bytes, 2), 0u);
    EXPECT_EQ(file.read(bytes, 2), 0u);
}

TEST_F(FileHooksTest, ConcernOnlyTheTimeInWhichTheyAreInstalled) {
    {
        InstalledFileHooks hooks;
        hooks->opens.failAt = 1;
        hooks->opens.failFromThere = true;
        WinFile file;
        EXPECT_FALSE(file.open(path().c_str(), kReadMode));
    }
    WinFile file;
    EXPECT_TRUE(file.open(path().c_str(), kReadMode));
}

}  // namespace
