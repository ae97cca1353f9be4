// File names in every script, through both ways to open.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "fileio/win_file.h"
#include "tests/support/temp_folder.h"

namespace {

using namespace fileio;
using namespace orvantis::test;
namespace fs = std::filesystem;

constexpr int kSharedRead = kOpenRead | kOpenShareRead;

std::string contents(WinFile& file) {
    std::string bytes(static_cast<std::size_t>(file.size()), '?');
    bytes.resize(static_cast<std::size_t>(file.read(bytes.data(), bytes.size())));
    return bytes;
}

class WinFilePath : public testing::TestWithParam<const char8_t*> {};

TEST_P(WinFilePath, OpensThroughBothOverloads) {
    const TempFolder folder;
    const fs::path path = folder / std::u8string_view(GetParam());
    fs::create_directories(path.parent_path());
    writeFile(path, "found");
    WinFile file;
    ASSERT_TRUE(file.open(utf8Path(path).c_str(), kSharedRead));
    EXPECT_EQ(contents(file), "found");
    ASSERT_TRUE(file.open(utf16Path(path).c_str(), kSharedRead));
    EXPECT_EQ(contents(file), "found");
    EXPECT_FALSE(file.open((utf8Path(path) + "x").c_str(), kSharedRead));
    EXPECT_FALSE(file.open((utf16Path(path) + u"x").c_str(), kSharedRead));
}

TEST_P(WinFilePath, CreatesThroughBothOverloads) {
    const TempFolder folder;
    const fs::path path = folder / std::u8string_view(GetParam());
    fs::create_directories(path.parent_path());
    WinFile file;
    ASSERT_TRUE(file.open(utf8Path(path).c_str(), kOpenRead | kOpenWrite));
    file.close();
    EXPECT_TRUE(fs::exists(path));
    fs::remove(path);
    ASSERT_TRUE(file.open(utf16Path(path).c_str(), kOpenRead | kOpenWrite));
    file.close();
    EXPECT_TRUE(fs::exists(path));
}

constexpr const char8_t* kPaths[] = {
    u8"plain.avi",
    u8"with blanks and % signs %s.avi",
    u8"\u00C4rger \u00E9t\u00E9.avi",              // Latin
    u8"\u0424\u0438\u043B\u044C\u043C.avi",        // Cyrillic
    u8"\u65E5\u672C\u8A9E\u306E\u540D\u524D.avi",  // Japanese
    u8"\u0627\u0644\u0641\u064A\u0644\u0645.avi",  // Arabic
    u8"\U0001F3AC \U00020BB7.avi",                 // beyond 16 bits
    u8"\U0001F3AC/\u65E5\u672C/e\u0301.avi",       // folders, and a combining accent
};

INSTANTIATE_TEST_SUITE_P(Names, WinFilePath, testing::ValuesIn(kPaths),
                         [](const auto& parameter) { return "Path" + std::to_string(parameter.index); });

TEST(WinFilePaths, IllFormedUtf8MeansAnotherFile) {
    const TempFolder folder;
    // U+FFFD stands in for the byte that belongs nowhere, so this is the name that is looked for.
    writeFile(folder / u8"caf\uFFFD name.avi", "replaced");
    WinFile file;
    const std::string path = utf8Path(folder.path()) + "/caf\xE9 name.avi";
    ASSERT_TRUE(file.open(path.c_str(), kSharedRead));
    EXPECT_EQ(contents(file), "replaced");
}

TEST(WinFilePaths, BeyondTheOldLimitOf260Characters) {
    const TempFolder folder;
    fs::path deep = folder.path();
    while (utf16Path(deep).size() < 400) {
        deep /= "0123456789012345678901234567890123456789";
    }
#ifdef _WIN32
    // Windows itself takes such paths without a prefix only where the user and the host's manifest have
    // allowed it. With the prefix every path works, and the host may hand us one; the plug-in passes both on
    // as they are.
    const fs::path prefixed = L"\\\\?\\" + fs::path(deep).make_preferred().wstring();
#else
    const fs::path prefixed = deep;
#endif
    std::error_code error;
    fs::create_directories(prefixed, error);
    if (error) {
        fs::create_directories(deep, error);
    }
    ASSERT_FALSE(error) << error.message();
    const fs::path clip = prefixed / "clip.avi";
    WinFile file;
    ASSERT_TRUE(file.open(utf8Path(clip).c_str(), kOpenRead | kOpenWrite));
    ASSERT_EQ(file.write("deep", 4), 4u);
    ASSERT_TRUE(file.open(utf16Path(clip).c_str(), kSharedRead));
    EXPECT_EQ(contents(file), "deep");
    const bool withoutPrefix = file.open(utf16Path(deep / "clip.avi").c_str(), kSharedRead);
    RecordProperty("opens_without_prefix", withoutPrefix ? 1 : 0);
    EXPECT_EQ(file.isOpen(), withoutPrefix);
}

TEST(WinFilePaths, NamesLongerThanTheSystemAllowsAreRefused) {
    const TempFolder folder;
    WinFile file;
    const std::string path = utf8Path(folder.path()) + "/" + std::string(40000, 'x');
    EXPECT_FALSE(file.open(path.c_str(), kSharedRead));
    EXPECT_FALSE(file.open(path.c_str(), kOpenRead | kOpenWrite));
}

}  // namespace
