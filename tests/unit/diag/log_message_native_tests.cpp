// Messages whose length is not the measured one when they are formatted: an argument that another thread
// writes to at that moment. Here it is a conversion of the test's own that gives another text each time.

#include <gtest/gtest.h>
#include <printf.h>

#include <cstdio>
#include <string>
#include <vector>

#include "diag/diagnostic_log.h"
#include "tests/unit/diag/fake_log_platform.h"

namespace {

using orvantis::DiagnosticLog;
using orvantis::test::FakeLogPlatform;
using orvantis::test::fakeLogPlatform;

/// What the conversion "%Y" gives, one after the other; "!" fails.
std::vector<std::string> g_texts;
std::size_t g_used = 0;

int convert(std::FILE* stream, const printf_info* /*info*/, const void* const* /*arguments*/) {
    const std::string& text = g_texts.at(g_used++);
    if (text == "!") {
        return -1;
    }
    return std::fprintf(stream, "%s", text.c_str());
}

int describe(const printf_info* /*info*/, std::size_t /*count*/, int* /*types*/, int* /*sizes*/) {
    return 0;
}

class LogMessage : public testing::Test {
 protected:
    /// What "<%Y>" writes with these texts, without the header.
    std::string written(std::vector<std::string> texts) {
        EXPECT_EQ(register_printf_specifier('Y', convert, describe), 0);
        g_texts = std::move(texts);
        g_used = 0;
        fakeLogPlatform() = FakeLogPlatform();
        DiagnosticLog log("name", false);
        fakeLogPlatform().file.clear();
        // Compilers that know a format function look at its format, and only know the standard's conversions.
        void (DiagnosticLog::*const writeLine)(const char*, ...) = &DiagnosticLog::writeLine;
        (log.*writeLine)("<%Y>");
        EXPECT_EQ(register_printf_specifier('Y', nullptr, nullptr), 0);
        EXPECT_EQ(g_used, g_texts.size());
        const std::string& file = fakeLogPlatform().file;
        const std::string header = "[1900-01-00 00:00:00] [0]";
        EXPECT_EQ(file.substr(0, header.size()), header);
        return file.substr(header.size());
    }
};

TEST_F(LogMessage, OfTheMeasuredLengthIsWhole) {
    EXPECT_EQ(written({"abc", "xyz"}), " <xyz>\n");
}

TEST_F(LogMessage, ThatBecameShorterStillEndsItsLine) {
    EXPECT_EQ(written({"a long text", "x"}), " <x>\n");
}

TEST_F(LogMessage, ThatBecameLongerIsCutToItsRoom) {
    EXPECT_EQ(written({"abc", "wxyz"}), " <wxyz\n");
    EXPECT_EQ(written({"abc", std::string(1000, 'x')}), " <xxxx\n");
}

TEST_F(LogMessage, ThatCannotBeFormattedAnyMoreIsAHeader) {
    EXPECT_EQ(written({"abc", "!"}), "\n");
    EXPECT_EQ(written({"!"}), "\n") << "one that cannot be measured is not tried";
}

}  // namespace
