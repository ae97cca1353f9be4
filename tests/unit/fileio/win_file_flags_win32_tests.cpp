// What Windows is asked for when a file is opened. Wine and a local disk forgive flags that a real system
// does not: a file opened past the cache can only be read in whole sectors, and no clip would open.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fileio/win_file.h"
#include "tests/support/temp_folder.h"
#include "tool/shared/base/import_patch_win32.h"

namespace {

struct AskedOpening {
    DWORD access = 0;
    DWORD share = 0;
    DWORD creation = 0;
    DWORD attributes = 0;
    bool plain = false;  // neither security nor a file to be like
};

std::vector<AskedOpening> g_asked;

// The system's own: this program's import leads to the function below meanwhile.
decltype(&CreateFileW) systemCreateFile() {
    return reinterpret_cast<decltype(&CreateFileW)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "CreateFileW")));
}

HANDLE WINAPI noteAndOpen(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                          DWORD creation, DWORD attributes, HANDLE like) {
    g_asked.push_back({access, share, creation, attributes, security == nullptr && like == nullptr});
    return systemCreateFile()(path, access, share, security, creation, attributes, like);
}

class WinFileFlags : public testing::Test {
 protected:
    AskedOpening askedFor(int mode) {
        const orvantis::test::TempFolder folder;
        orvantis::test::writeFile(folder / "file", "some bytes");
        const std::string path = orvantis::test::utf8Path(folder / "file");
        fileio::WinFile file;
        g_asked.clear();
        {
            const simhost::tool::ImportPatch patch(reinterpret_cast<const void*>(&noteAndOpen), "CreateFileW",
                                                   reinterpret_cast<const void*>(&noteAndOpen));
            (void)file.open(path.c_str(), mode);
        }
        EXPECT_EQ(g_asked.size(), 1u);
        return g_asked.empty() ? AskedOpening() : g_asked.front();
    }
    static void expect(const AskedOpening& asked, DWORD access, DWORD share, DWORD creation,
                       DWORD attributes) {
        EXPECT_EQ(asked.access, access);
        EXPECT_EQ(asked.share, share);
        EXPECT_EQ(asked.creation, creation);
        EXPECT_EQ(asked.attributes, attributes);
        EXPECT_TRUE(asked.plain);
    }
};

TEST_F(WinFileFlags, AClipIsReadThroughTheCacheAndOthersMayReadIt) {
    expect(askedFor(fileio::kOpenRead | fileio::kOpenShareRead), GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING,
           FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WinFileFlags, PastTheCacheOnlyWhenThatIsAskedFor) {
    expect(askedFor(fileio::kOpenRead | fileio::kOpenShareRead | fileio::kOpenUnbuffered), GENERIC_READ,
           FILE_SHARE_READ, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_NO_BUFFERING);
}

TEST_F(WinFileFlags, WithoutSharingNobodyElseMayOpenIt) {
    expect(askedFor(fileio::kOpenRead), GENERIC_READ, 0, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WinFileFlags, WritingMakesTheFileAnew) {
    expect(askedFor(fileio::kOpenWrite), GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL);
    expect(askedFor(fileio::kOpenRead | fileio::kOpenWrite | fileio::kOpenShareRead),
           GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL);
}

}  // namespace
