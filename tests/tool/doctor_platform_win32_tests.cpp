// What the doctor reads from the registry and the search path. Both roots of the registry are private keys of
// this process.

// clang-format off
#include <windows.h>
// clang-format on
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/environment.h"
#include "tool/shared/run/doctor_platform.h"

namespace simhost::tool {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kPremiere = "SOFTWARE\\Adobe\\Premiere Pro\\";
constexpr const char* kValue = "CommonPluginInstallPath";

class DoctorPlatform : public ::testing::Test {
 protected:
    DoctorPlatform() {
        EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, m_name.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                                  KEY_ALL_ACCESS, nullptr, &m_root, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_root), ERROR_SUCCESS);
        EXPECT_EQ(RegOverridePredefKey(HKEY_CURRENT_USER, m_root), ERROR_SUCCESS);
    }
    ~DoctorPlatform() override {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegCloseKey(m_root);
        RegDeleteTreeA(HKEY_CURRENT_USER, m_name.c_str());
    }

    void set(const std::string& key, const char* value, DWORD type, const void* bytes,
             std::size_t size) const {
        HKEY opened = nullptr;
        ASSERT_EQ(RegCreateKeyExA(m_root, key.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                                  nullptr, &opened, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(
            RegSetValueExA(opened, value, 0, type, static_cast<const BYTE*>(bytes), static_cast<DWORD>(size)),
            ERROR_SUCCESS);
        RegCloseKey(opened);
    }
    void setText(const std::string& key, const std::string& text, DWORD type = REG_SZ) const {
        set(key, kValue, type, text.c_str(), text.size() + 1);
    }

 private:
    std::string m_name = "Software\\OrvantisToolTest" + std::to_string(GetCurrentProcessId());
    HKEY m_root = nullptr;
};

TEST_F(DoctorPlatform, WithoutHostsNoFolderIsRegistered) {
    EXPECT_THAT(registeredPluginFolders(), IsEmpty());
}

TEST_F(DoctorPlatform, EveryVersionOfEveryHostRegistersItsFolderOnce) {
    setText(std::string(kPremiere) + "13.0", "C:\\Common\\MediaCore\\");
    setText(std::string(kPremiere) + "14.0", "c:\\common\\mediacore");
    const orvantis::test::ScopedEnvironment place("ORVANTIS_TEST_PLACE", "D:\\Other");
    setText("SOFTWARE\\Adobe\\After Effects\\17.0", "%ORVANTIS_TEST_PLACE%\\MediaCore", REG_EXPAND_SZ);
    setText(std::string(kPremiere) + "15.0", "");
    set(std::string(kPremiere) + "16.0", kValue, REG_BINARY, "C:\\Binary", 10);
    EXPECT_THAT(registeredPluginFolders(), ElementsAre("C:\\Common\\MediaCore", "D:\\Other\\MediaCore"));
}

TEST_F(DoctorPlatform, TheLoaderSearchesTheSystemThenThePath) {
    const orvantis::test::ScopedEnvironment path("PATH", "C:\\one;\"C:\\two; quoted\\\";;c:\\ONE\\");
    const auto folders = libraryFolders();
    ASSERT_GE(folders.size(), 4U);
    std::string system(MAX_PATH, '\0');
    system.resize(GetSystemDirectoryA(system.data(), MAX_PATH));
    EXPECT_EQ(folders[0], system);
    EXPECT_EQ(folders[2], "C:\\one");
    EXPECT_THAT(folders, testing::Not(Contains("c:\\ONE")));
}

TEST_F(DoctorPlatform, TheSwitchIsOnAsThePluginTakesIt) {
    EXPECT_EQ(logSetting(), LogSetting::kOff);
    DWORD number = 0;
    set("Software\\Orvantis", "EnableAdobeLog", REG_DWORD, &number, sizeof number);
    EXPECT_EQ(logSetting(), LogSetting::kOff);
    number = 1;
    set("Software\\Orvantis", "EnableAdobeLog", REG_DWORD, &number, sizeof number);
    EXPECT_EQ(logSetting(), LogSetting::kOn);
    // The type does not matter: the first byte of a text is not 0 either.
    set("Software\\Orvantis", "EnableAdobeLog", REG_SZ, "0", 2);
    EXPECT_EQ(logSetting(), LogSetting::kOn);
    set("Software\\Orvantis", "EnableAdobeLog", REG_SZ, "1234", 5);
    EXPECT_EQ(logSetting(), LogSetting::kUnknown) << "the plug-in cannot read it";
}

}  // namespace
}  // namespace simhost::tool
