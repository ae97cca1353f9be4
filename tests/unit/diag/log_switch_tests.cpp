// The registry switch: which values turn the log on. The process-wide state can only go from off to on, so
// each value is tried in a process of its own; the reading alone is also tried in a row.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <ostream>
#include <string>

#ifdef _WIN32
#include <windows.h>
#endif

#include "diag/log.h"
#include "diag/log_platform.h"
#include "tests/support/log_capture.h"

namespace {

using namespace orvantis;
using orvantis::test::LogCapture;
using orvantis::test::LogRedirection;

constexpr std::uint32_t kDword = 4;  // REG_DWORD

struct Value {
    const char* name;
    std::uint32_t type;
    std::string bytes;
    std::optional<std::uint32_t> read;  ///< what readSwitchValue gives; nothing when the query fails
};

void PrintTo(const Value& value, std::ostream* out) {
    *out << value.name;
}

std::string dword(std::uint32_t value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

void store(LogRedirection& redirection, const Value& value) {
#ifdef _WIN32
    redirection.setSwitch(value.type, value.bytes.data(), static_cast<std::uint32_t>(value.bytes.size()));
#else
    std::uint32_t number = 0;
    std::memcpy(&number, value.bytes.data(), sizeof number);
    redirection.setSwitch(number);
#endif
}

const Value kValues[] = {
    {"One", kDword, dword(1), 1},
    {"Two", kDword, dword(2), 2},
    {"HighestByteOnly", kDword, dword(0x80000000), 0x80000000},
    {"SecondByteOnly", kDword, dword(0x100), 0x100},
    {"AllBits", kDword, dword(0xFFFFFFFF), 0xFFFFFFFF},
    {"Zero", kDword, dword(0), 0},
#ifdef _WIN32
    {"BigEndianOne", REG_DWORD_BIG_ENDIAN, dword(0x01000000), 0x01000000},
    {"TextOne", REG_SZ, std::string("1\0", 2), 0x31},
    {"TextZero", REG_SZ, std::string("0\0", 2), 0x30},  // the character's code counts
    {"TextOfThree", REG_SZ, std::string("yes\0", 4), 0x736579},
    {"TextOfFour", REG_SZ, std::string("true\0", 5), std::nullopt},  // does not fit
    {"EmptyText", REG_SZ, std::string("\0", 1), 0},
    {"ExpandTextOne", REG_EXPAND_SZ, std::string("1\0", 2), 0x31},
    {"FourBytes", REG_BINARY, std::string("\0\0\0\x01", 4), 0x01000000},
    {"FourZeroBytes", REG_BINARY, std::string(4, '\0'), 0},
    {"OneByte", REG_BINARY, std::string("\x07", 1), 7},
    {"NoBytes", REG_BINARY, std::string(), 0},
    {"FiveBytes", REG_BINARY, std::string(5, '\x01'), std::nullopt},
    {"Quadword", REG_QWORD, std::string(8, '\x01'), std::nullopt},
    {"NoType", REG_NONE, std::string("\x01\0\0\0", 4), 1},
#endif
};

TEST(LogSwitchValue, IsTheFirstFourBytesWhateverTheType) {
    LogCapture log(LogCapture::Switch::kMissing);
    EXPECT_EQ(log_platform::readSwitchValue(), std::nullopt);
    for (const Value& value : kValues) {
        store(log.redirection(), value);
        EXPECT_EQ(log_platform::readSwitchValue(), value.read) << value.name;
    }
    log.redirection().removeSwitch();
    EXPECT_EQ(log_platform::readSwitchValue(), std::nullopt);
}

class LogSwitch : public testing::TestWithParam<Value> {};

TEST_P(LogSwitch, TurnsTheLogOnExactlyWhenItsNumberIsNotZero) {
    const bool turnsOn = GetParam().read.value_or(0) != 0;
    if (logEnabled()) {
        GTEST_SKIP() << "another test of this process has switched the log on";
    }
    LogCapture log(LogCapture::Switch::kMissing);
    store(log.redirection(), GetParam());
    readLogSwitch();
    EXPECT_EQ(logEnabled(), turnsOn);
    logMessage("a line");
    EXPECT_EQ(log.files().size(), turnsOn ? 1u : 0u);
    closeLog();
}

INSTANTIATE_TEST_SUITE_P(Values, LogSwitch, testing::ValuesIn(kValues),
                         [](const testing::TestParamInfo<Value>& value) { return value.param.name; });

TEST(LogSwitchOnce, NeverTurnsTheLogOffAgain) {
    LogCapture log;
    readLogSwitch();
    ASSERT_TRUE(logEnabled());
    log.redirection().setSwitch(0);
    readLogSwitch();
    EXPECT_TRUE(logEnabled());
    log.redirection().removeSwitch();
    readLogSwitch();
    EXPECT_TRUE(logEnabled());
    logMessage("still there");
    EXPECT_EQ(log.lines().back(), "[T] [#] still there");
    closeLog();
}

#ifdef _WIN32
TEST(LogSwitchValue, KeyWithoutTheValueIsAMissingValue) {
    LogCapture log;
    ASSERT_EQ(log_platform::readSwitchValue(), 1u);
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Orvantis", 0, KEY_SET_VALUE, &key), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueA(key, "EnableAdobeLog"), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    EXPECT_EQ(log_platform::readSwitchValue(), std::nullopt);
}
#endif

}  // namespace
