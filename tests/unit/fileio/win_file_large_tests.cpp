// Positions beyond 32 bits, in a file that takes no room on the disk.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#ifdef _WIN32
#include <windows.h>
#include <winioctl.h>
#endif

#include "fileio/win_file.h"
#include "tests/support/temp_folder.h"

namespace {

using namespace fileio;
using namespace orvantis::test;

// Without this a gap would be filled with zeros on the disk. File systems elsewhere do it by themselves.
void allowHoles([[maybe_unused]] const WinFile& file) {
#ifdef _WIN32
    DWORD bytes = 0;
    (void)DeviceIoControl(file.osHandle(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &bytes, nullptr);
#endif
}

TEST(WinFileLarge, PositionsAndSizesGoBeyond4GiB) {
    const TempFolder folder;
    WinFile file;
    ASSERT_TRUE(file.open(utf8Path(folder / "large.avi").c_str(), kOpenRead | kOpenWrite));
    allowHoles(file);
    constexpr std::int64_t kPlace = 0x140000123;  // more than 5 GiB
    ASSERT_EQ(file.write("start", 5), 5u);
    ASSERT_TRUE(file.seek(kPlace));
    EXPECT_EQ(file.tell(), kPlace);
    ASSERT_EQ(file.write("far", 3), 3u);
    EXPECT_EQ(file.tell(), kPlace + 3);
    EXPECT_EQ(file.size(), kPlace + 3);

    ASSERT_TRUE(file.open(utf8Path(folder / "large.avi").c_str(), kOpenWrite));
    EXPECT_EQ(file.size(), 0);
}

TEST(WinFileLarge, DataBeyond4GiBIsReadAtItsPlace) {
    const TempFolder folder;
    const std::string path = utf8Path(folder / "large.avi");
    constexpr std::int64_t k4GiB = std::int64_t{1} << 32;
    {
        WinFile file;
        ASSERT_TRUE(file.open(path.c_str(), kOpenWrite));
        allowHoles(file);
        ASSERT_EQ(file.write("zero", 4), 4u);
        ASSERT_EQ(file.writeAt("border", 6, k4GiB - 3), 6u);  // across the border
        ASSERT_EQ(file.writeAt("end", 3, k4GiB + 1000), 3u);
        EXPECT_EQ(file.tell(), 4);
    }
    WinFile file;
    ASSERT_TRUE(file.open(path.c_str(), kOpenRead | kOpenShareRead));
    EXPECT_EQ(file.size(), k4GiB + 1003);
    std::string bytes(6, '?');
    file.seekTo(k4GiB - 3);
    file.readExact(bytes.data(), 6);
    EXPECT_EQ(bytes, "border");
    file.seekTo(0);
    file.readExact(bytes.data(), 4);
    EXPECT_EQ(bytes, "zeroer");
    file.seekTo(k4GiB);  // a position cut to 32 bits would read "zero" here
    file.readExact(bytes.data(), 3);
    EXPECT_EQ(bytes, "deroer");
    file.seekTo(k4GiB + 1000);
    EXPECT_EQ(file.read(bytes.data(), 6), 3u);
    EXPECT_EQ(bytes, "endoer");
}

}  // namespace
