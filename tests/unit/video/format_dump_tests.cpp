// The diagnostic listing, line by line, and what it asks of host and library.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "diag/format.h"
#include "diag/log.h"
#include "tests/support/captured_log.h"
#include "tests/support/fake_codec/fake_codec.h"
#include "tests/support/fake_host/fake_host.h"
#include "tests/support/format_lists.h"
#include "video/format_dump.h"
#include "video/format_tables.h"

namespace orvantis {
namespace {

using fakecodec::Call;
using fakecodec::FakeCodec;
using fakecodec::Function;
using test::CapturedLog;
using test::FakeHost;

using Lines = std::vector<std::string>;

const std::size_t kHostFormats = formatlists::hostFormats().size();
const std::size_t kDumpRows = formatlists::deliveredFormats().size();

// The answers that the fixture's host gives: DV is compressed, an "a" in the code means alpha.
bool isCompressed(const std::string& code) {
    return code.starts_with("dv");
}

bool hasAlpha(const std::string& code) {
    return code.find_first_of("aA") != std::string::npos;
}

std::string padded(std::string text, std::size_t width) {
    return text.append(text.size() < width ? width - text.size() : 0, ' ');
}

Lines pixelFormatLines() {
    Lines lines;
    for (const formatlists::HostFormat& format : formatlists::hostFormats()) {
        const std::string code = format.code;
        const std::string name = format.name;
        const bool isTopLeft = name.find("_4444_") == std::string::npos;
        lines.push_back("[" + code + "] : " + (isCompressed(code) ? "C " : "- ") +
                        (hasAlpha(code) ? "A " : "- ") + (isTopLeft ? "T" : "-") + " -  " + name +
                        " (err: 0 0 0) - " + std::to_string(formatlists::formatValue(format.code)));
    }
    return lines;
}

Lines subTypeLines() {
    Lines lines;
    for (const formatlists::CodedType& type : formatlists::codedTypes()) {
        const std::string code = std::to_string(type.code);
        lines.push_back("[" + std::string(type.tag) + "] : (" + code + ") " + padded("type" + code, 15) +
                        " : '" + type.name + "'");
    }
    return lines;
}

std::string hostName(const std::string& code) {
    for (const formatlists::HostFormat& format : formatlists::hostFormats()) {
        if (format.code == code) {
            return format.name;
        }
    }
    return "no such format";
}

Lines formatLines() {
    Lines lines;
    for (const formatlists::DeliveredFormat& format : formatlists::deliveredFormats()) {
        const std::string type = std::to_string(format.orvType);
        const std::string space = std::to_string(format.colorSpace);
        lines.push_back("[" + std::string(format.code) + "] " + padded(hostName(format.code), 35) + " : (" +
                        (type.size() < 2 ? " " : "") + type + ") " + padded("type" + type, 10) + " : (" +
                        space + ") " + padded("space" + space, 8) + " : " + (format.adobe16u ? "1" : " ") +
                        " : " + (format.topLeftInTheField ? "1" : " "));
    }
    return lines;
}

const std::string kAcquired = "Acquiring suite: r: 0, v: 2, n: 'Premiere Image Processing Suite', ptr: ";
const std::string kReleased = "Releasing suite: r: 0, v: 2, n: 'Premiere Image Processing Suite'";

class FormatDump : public testing::Test {
 protected:
    FormatDump() {
        buildFormatTables(host.basicSuite());
        host.asked.clear();
        host.suiteCalls.clear();
        const auto usual = host.answer;
        host.answer = [usual](FakeHost::Question question, std::uint32_t format) {
            const std::string code = fourccToString(format);
            if (question == FakeHost::kCompressed) {
                return isCompressed(code);
            }
            if (question == FakeHost::kAlpha) {
                return hasAlpha(code);
            }
            return usual(question, format);
        };
        library.param = [](std::uint32_t parameter, std::uint32_t type) -> std::uint32_t {
            return parameter == 7 ? type % 2 : (type % 3 == 0 ? 0x80000000U : 0);
        };
    }

    // The lines of the section with this heading, up to the next "----" or the end.
    static Lines section(const Lines& lines, const std::string& heading) {
        Lines result;
        bool inside = false;
        for (const std::string& line : lines) {
            if (line == "----") {
                inside = false;
            }
            if (inside) {
                result.push_back(line);
            }
            if (line == heading) {
                inside = true;
            }
        }
        return result;
    }

    static void append(Lines& lines, const Lines& more) {
        lines.insert(lines.end(), more.begin(), more.end());
    }

    CapturedLog log;
    FakeHost host;
    FakeCodec library;
};

TEST_F(FormatDump, IsWrittenLineByLine) {
    log.clear();
    dumpFormatTables(host.basicSuite());
    const Lines lines = log.lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_TRUE(lines.front().starts_with(kAcquired)) << lines.front();

    Lines expected{lines.front(), "----", "Pixel formats ([fcc] : isCompressed hasAlpha isTopLeft - name):"};
    append(expected, pixelFormatLines());
    expected.insert(expected.end(),
                    {kReleased, "----", "Orvantis types (can_flip supports_0_32768_range : format):"});
    for (int type = 1; type <= 61; ++type) {
        expected.push_back(std::string(type % 2 != 0 ? "YES" : " NO") + (type % 3 == 0 ? " YES" : "  NO") +
                           " : type" + std::to_string(type));
    }
    expected.insert(expected.end(), {"----", "SubTypeInfos: (subType : orvTypeComp : subTypeName)"});
    append(expected, subTypeLines());
    expected.insert(expected.end(),
                    {"----", "FormatInfos: (pixelFormat : orvType : colorSpace : isAdobe16u : isTopLeft)"});
    append(expected, formatLines());
    EXPECT_EQ(lines, expected);
}

// Some lines letter by letter, one of each kind.
TEST_F(FormatDump, HasTheseLines) {
    log.clear();
    dumpFormatTables(host.basicSuite());
    const Lines lines = log.lines();
    for (const char* line : {
             "[VUyp] : - - - -  PrPixelFormat_VUYP_4444_32f (err: 0 0 0) - 1886999894",
             "[dvn2] : C - T -  PrPixelFormat_NTSCDV25 (err: 0 0 0) - 846100068",
             "[v210] : - - T -  PrPixelFormat_V210_422_10u_601 (err: 0 0 0) - 808530550",
             "[bgra] : - A - -  PrPixelFormat_BGRA_4444_8u (err: 0 0 0) - 1634887522",
             "[raww] : - A T -  PrPixelFormat_Raw (err: 0 0 0) - 2004312434",
             "[O8RA] : (102) type102         : 'Orvantis 8-bit RGBA'",
             "[yuy2] PrPixelFormat_YUYV_422_8u_601       : ( 4) type4      : (1) space1   :   : 1",
             "[VUYA] PrPixelFormat_VUYA_4444_8u_709      : (50) type50     : (2) space2   :   :  ",
             "[Bgra] PrPixelFormat_BGRA_4444_16u         : (31) type31     : (2) space2   : 1 :  ",
         }) {
        EXPECT_EQ(std::ranges::count(lines, line), 1) << line;
    }
}

TEST_F(FormatDump, ShowsTheHostsResultCodesInHexadecimal) {
    host.questionResults[FakeHost::kCompressed] = static_cast<std::int32_t>(0x80000001U);
    host.questionResults[FakeHost::kAlpha] = 10;
    host.questionResults[FakeHost::kTopLeft] = -1;
    log.clear();
    dumpFormatTables(host.basicSuite());
    const Lines lines =
        section(log.lines(), "Pixel formats ([fcc] : isCompressed hasAlpha isTopLeft - name):");
    ASSERT_EQ(lines.size(), kHostFormats + 1) << "the formats and the suite's release";
    EXPECT_EQ(std::ranges::count(
                  lines, "[dvn2] : - - - -  PrPixelFormat_NTSCDV25 (err: 80000001 a ffffffff) - 846100068"),
              1);
}

TEST_F(FormatDump, AsksTheThreeQuestionsOfEachFormatWithAClearedAnswer) {
    dumpFormatTables(host.basicSuite());
    ASSERT_EQ(host.asked.size(), kHostFormats * 3U);
    for (std::size_t i = 0; i < host.asked.size(); ++i) {
        EXPECT_EQ(host.asked[i].question, static_cast<FakeHost::Question>(i % 3));
        EXPECT_EQ(host.asked[i].answerOnEntry, 0);
        EXPECT_EQ(host.asked[i].pixelFormat, host.asked[i - i % 3].pixelFormat);
    }
    EXPECT_EQ(host.suiteCalls,
              (Lines{"+ Premiere Image Processing Suite 2", "- Premiere Image Processing Suite 2"}));
}

TEST_F(FormatDump, AsksTwoParametersOfEachTypeInASessionOfItsOwn) {
    dumpFormatTables(host.basicSuite());
    const std::vector<Call> calls = library.calls();
    ASSERT_EQ(calls.size(), 2U + 61U * 2U + 2U);
    EXPECT_EQ(calls[0].function, Function::kLibraryInit);
    EXPECT_EQ(calls[1].function, Function::kOpen);
    for (std::size_t i = 0; i < 122; ++i) {
        const Call& call = calls[2 + i];
        EXPECT_EQ(call.function, Function::kGetParam);
        EXPECT_EQ(call.handle, calls[1].handle);
        EXPECT_EQ(call.number, i % 2 == 0 ? 7U : 9U);
        EXPECT_EQ(call.code, 1 + i / 2);
        EXPECT_EQ(call.bytes, 4U);
    }
    EXPECT_EQ(calls[124].function, Function::kClose);
    EXPECT_EQ(calls[125].function, Function::kLibraryClose);
}

TEST_F(FormatDump, NullNamesAreEmpty) {
    library.setNullString(kOrvantisStringTypeName, 102);
    library.setNullString(kOrvantisStringTypeName, 1);
    library.setNullString(kOrvantisStringColorSpaceName, 1);
    log.clear();
    dumpFormatTables(host.basicSuite());
    const Lines lines = log.lines();
    EXPECT_EQ(section(lines, "Orvantis types (can_flip supports_0_32768_range : format):").at(0),
              "YES  NO : ");
    EXPECT_EQ(section(lines, "SubTypeInfos: (subType : orvTypeComp : subTypeName)").at(0),
              "[O8RA] : (102)                 : 'Orvantis 8-bit RGBA'");
    EXPECT_EQ(
        section(lines, "FormatInfos: (pixelFormat : orvType : colorSpace : isAdobe16u : isTopLeft)").at(0),
        "[yuy2] PrPixelFormat_YUYV_422_8u_601       : ( 4) type4      : (1)          :   : 1");
}

TEST_F(FormatDump, FailingParameterQueryEndsTheListing) {
    // Both parameters of the first types, one in the middle, and the last.
    for (const int call : {1, 2, 3, 61, 62, 121, 122}) {
        library.stopFailing();
        library.forgetCalls();
        library.failCall(Function::kGetParam, call, 21);
        log.clear();
        dumpFormatTables(host.basicSuite());
        const Lines lines = log.lines();
        const int type = (call + 1) / 2;
        EXPECT_EQ(lines.back(), "Format dump stopped: Orvantis error (21): error21: getParam(" +
                                    std::string(call % 2 != 0 ? "7" : "9") + "," + std::to_string(type) +
                                    ")");
        EXPECT_EQ(section(lines, "Orvantis types (can_flip supports_0_32768_range : format):").size(),
                  static_cast<std::size_t>(type));
        EXPECT_EQ(library.count(Function::kGetParam), call);
        EXPECT_EQ(library.openSessions(), 0);
    }
}

TEST_F(FormatDump, LibraryThatDoesNotOpenEndsTheListing) {
    library.failAll(Function::kLibraryInit, 22);
    log.clear();
    dumpFormatTables(host.basicSuite());
    EXPECT_EQ(log.lines().back(),
              "Format dump stopped: Orvantis error (22): error22: OrvantisCodec(): orvantis_library_init()");
}

TEST_F(FormatDump, RefusedSuiteIsAskedForTwiceAndEndsTheListing) {
    host.refusedSuites = {"Premiere Image Processing Suite"};
    host.suiteCalls.clear();
    log.clear();
    dumpFormatTables(host.basicSuite());
    EXPECT_EQ(host.suiteCalls, Lines(2, "! Premiere Image Processing Suite 2"));
    EXPECT_EQ(
        log.linesWithoutSuites(),
        Lines{"Format dump stopped: Could not acquire suite: 'Premiere Image Processing Suite', ver: 2"});
    EXPECT_TRUE(library.calls().empty());
}

TEST_F(FormatDump, ChangesNoTable) {
    const FormatInfo* const before = FormatInfos().data();
    host.answer = [](FakeHost::Question, std::uint32_t) { return true; };
    dumpFormatTables(host.basicSuite());
    EXPECT_EQ(FormatInfos().data(), before);
}

// The switch cannot be turned off again, so this one needs a process in which no test captured the log.
TEST(FormatDumpWithTheLogOff, AsksTheSameOfHostAndLibrary) {
    if (logEnabled()) {
        GTEST_SKIP() << "the log is on already";
    }
    FakeHost host;
    FakeCodec library;
    dumpFormatTables(host.basicSuite());
    EXPECT_EQ(host.asked.size(), kHostFormats * 3U);
    EXPECT_EQ(library.count(Function::kGetParam), 122);
    EXPECT_EQ(library.count(Function::kGetString),
              static_cast<int>(61 + formatlists::codedTypes().size() + 2 * kDumpRows));
}

}  // namespace
}  // namespace orvantis
