// The system's crash dumps: the documented keys as they are read and written. The machine's root of the
// registry is a private key of this process.

// clang-format off
#include <windows.h>
// clang-format on
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"
#include "tool/shared/run/crash_dumps.h"

namespace simhost::tool {
namespace {

constexpr const char* kKey = R"(SOFTWARE\Microsoft\Windows\Windows Error Reporting\LocalDumps)";
constexpr const char* kHost = R"(SOFTWARE\Microsoft\Windows\Windows Error Reporting\LocalDumps\host.exe)";

class CrashDumps : public ::testing::Test {
 protected:
    CrashDumps() {
        EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, m_name.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  KEY_ALL_ACCESS, nullptr, &m_root, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_root), ERROR_SUCCESS);
    }
    ~CrashDumps() override {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegCloseKey(m_root);
        RegDeleteTreeA(HKEY_CURRENT_USER, m_name.c_str());
    }

    void setText(const char* key, const char* name, const std::string& text) const {
        EXPECT_EQ(RegSetKeyValueA(m_root, key, name, REG_EXPAND_SZ, text.c_str(),
                                  static_cast<DWORD>(text.size() + 1)),
                  ERROR_SUCCESS);
    }
    DWORD number(const char* key, const char* name) const {
        DWORD value = 4711;
        DWORD size = sizeof value;
        EXPECT_EQ(RegGetValueA(m_root, key, name, RRF_RT_REG_DWORD, nullptr, &value, &size), ERROR_SUCCESS)
            << name;
        return value;
    }
    bool exists(const char* key) const {
        HKEY opened = nullptr;
        const bool found = RegOpenKeyExA(m_root, key, 0, KEY_READ, &opened) == ERROR_SUCCESS;
        if (found) {
            RegCloseKey(opened);
        }
        return found;
    }

 private:
    std::string m_name = "Software\\OrvantisDumpTest" + std::to_string(GetCurrentProcessId());
    HKEY m_root = nullptr;
};

TEST_F(CrashDumps, AreOffAndWouldLieInTheAccountsUsualFolder) {
    const orvantis::test::ScopedEnvironment place("LOCALAPPDATA", "C:\\local");
    const DumpSetting setting = dumpSetting("host.exe");
    EXPECT_FALSE(setting.on);
    EXPECT_FALSE(setting.ours);
    EXPECT_EQ(setting.folder, "C:\\local\\CrashDumps");
}

TEST_F(CrashDumps, SwitchedOnAreFiveSmallOnesOfThatProgramOnly) {
    EXPECT_EQ(setDumps("host.exe", true), DumpSwitch::kDone);
    EXPECT_EQ(number(kHost, "DumpType"), 1U);
    EXPECT_EQ(number(kHost, "DumpCount"), 5U);
    EXPECT_TRUE(dumpSetting("host.exe").on);
    EXPECT_TRUE(dumpSetting("host.exe").ours);
    EXPECT_FALSE(dumpSetting("other.exe").on);
    EXPECT_EQ(setDumps("host.exe", true), DumpSwitch::kDone) << "again";
}

TEST_F(CrashDumps, SwitchedOffLeaveNothing) {
    ASSERT_EQ(setDumps("host.exe", true), DumpSwitch::kDone);
    EXPECT_EQ(setDumps("host.exe", false), DumpSwitch::kDone);
    EXPECT_FALSE(exists(kHost));
    EXPECT_FALSE(dumpSetting("host.exe").on);
    EXPECT_EQ(setDumps("host.exe", false), DumpSwitch::kDone) << "again";
}

TEST_F(CrashDumps, WhatSomebodyElseHasSetStays) {
    setText(kHost, "DumpFolder", "D:\\dumps");
    EXPECT_EQ(setDumps("host.exe", true), DumpSwitch::kNotOurs);
    EXPECT_EQ(setDumps("host.exe", false), DumpSwitch::kNotOurs);
    EXPECT_TRUE(exists(kHost));
    EXPECT_TRUE(dumpSetting("host.exe").on);
    EXPECT_EQ(dumpSetting("host.exe").folder, "D:\\dumps");
}

TEST_F(CrashDumps, OfAllProgramsAreAlsoThoseOfTheHost) {
    const orvantis::test::ScopedEnvironment place("ORVANTIS_TEST_PLACE", "E:\\all");
    setText(kKey, "DumpFolder", "%ORVANTIS_TEST_PLACE%\\dumps");
    EXPECT_TRUE(dumpSetting("host.exe").on);
    EXPECT_EQ(dumpSetting("host.exe").folder, "E:\\all\\dumps");
}

TEST_F(CrashDumps, AreListedTheNewestFirst) {
    const orvantis::test::TempFolder folder;
    const std::string path = orvantis::test::utf8Path(std::filesystem::path(folder / "x").parent_path());
    using namespace std::chrono_literals;
    const auto now = std::filesystem::file_time_type::clock::now();
    for (const auto& [name, age] : {std::pair("host.exe.10.dmp", 3h), std::pair("host.exe.9.dmp", 1h),
                                    std::pair("other.exe.8.dmp", 0h), std::pair("host.exe.7.txt", 0h)}) {
        orvantis::test::writeFile(folder / name, std::string("x"));
        std::filesystem::last_write_time(folder / name, now - age);
    }
    EXPECT_THAT(dumpsOf("host.exe", path),
                testing::ElementsAre(path + "\\host.exe.9.dmp", path + "\\host.exe.10.dmp"));
    EXPECT_THAT(dumpsOf("host.exe", path + "\\none"), testing::IsEmpty());
}

}  // namespace
}  // namespace simhost::tool
