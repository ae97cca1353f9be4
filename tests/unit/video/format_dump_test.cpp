// The diagnostic listing, line by line, and what it asks of host and library.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "diag/log.h"
#include "tests/support/captured_log.h"
#include "tests/support/fake_codec/fake_codec.h"
#include "tests/unit/video/fake_host.h"
#include "video/format_tables.h"

namespace orvantis {
namespace {

using fakecodec::Call;
using fakecodec::FakeCodec;
using fakecodec::Function;
using test::CapturedLog;
using test::FakeHost;

using Lines = std::vector<std::string>;

// clang-format off
const Lines kPixelFormatLines{
    "[VUyp] : - - - -  PrPixelFormat_VUYP_4444_32f (err: 0 0 0) - 1886999894",
    "[VUp7] : - - - -  PrPixelFormat_VUYP_4444_32f_709 (err: 0 0 0) - 930108758",
    "[PRgb] : - - - -  PrPixelFormat_PRGB_4444_32f (err: 0 0 0) - 1650938448",
    "[RGB1] : - - T -  PrPixelFormat_RGB_444_10u (err: 0 0 0) - 826427218",
    "[yv1F] : - - T -  PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709_FullRange (err: 0 0 0) - 1177646713",
    "[yviF] : - - T -  PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709_FullRange (err: 0 0 0) - 1181316729",
    "[Yv12] : - - T -  PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601 (err: 0 0 0) - 842102361",
    "[Yvi2] : - - T -  PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601 (err: 0 0 0) - 845772377",
    "[PRgL] : - - - -  PrPixelFormat_PRGB_4444_32f_Linear (err: 0 0 0) - 1281839696",
    "[XRgL] : - - - -  PrPixelFormat_XRGB_4444_32f_Linear (err: 0 0 0) - 1281839704",
    "[yv12] : - - T -  PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601 (err: 0 0 0) - 842102393",
    "[yvi2] : - - T -  PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601 (err: 0 0 0) - 845772409",
    "[Yv1F] : - - T -  PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709_FullRange (err: 0 0 0) - 1177646681",
    "[YviF] : - - T -  PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709_FullRange (err: 0 0 0) - 1181316697",
    "[dvn2] : C - T -  PrPixelFormat_NTSCDV25 (err: 0 0 0) - 846100068",
    "[dvp2] : C - T -  PrPixelFormat_PALDV25 (err: 0 0 0) - 846231140",
    "[Yv1f] : - - T -  PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601_FullRange (err: 0 0 0) - 1714517593",
    "[Yvif] : - - T -  PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601_FullRange (err: 0 0 0) - 1718187609",
    "[Yv17] : - - T -  PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709 (err: 0 0 0) - 925988441",
    "[Yvi7] : - - T -  PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709 (err: 0 0 0) - 929658457",
    "[yv1f] : - - T -  PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601_FullRange (err: 0 0 0) - 1714517625",
    "[yvif] : - - T -  PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601_FullRange (err: 0 0 0) - 1718187641",
    "[yv17] : - - T -  PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709 (err: 0 0 0) - 925988473",
    "[yvi7] : - - T -  PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709 (err: 0 0 0) - 929658489",
    "[dvn5] : C - T -  PrPixelFormat_NTSCDV50 (err: 0 0 0) - 896431716",
    "[dvp5] : C - T -  PrPixelFormat_PALDV50 (err: 0 0 0) - 896562788",
    "[dvn7] : C - T -  PrPixelFormat_NTSCDV100_720p (err: 0 0 0) - 929986148",
    "[dvp7] : C - T -  PrPixelFormat_PALDV100_720p (err: 0 0 0) - 930117220",
    "[v210] : - - T -  PrPixelFormat_V210_422_10u_601 (err: 0 0 0) - 808530550",
    "[v211] : - - T -  PrPixelFormat_V210_422_10u_709 (err: 0 0 0) - 825307766",
    "[UYvy] : - - T -  PrPixelFormat_UYVY_422_32f_601 (err: 0 0 0) - 2037799253",
    "[UYv7] : - - T -  PrPixelFormat_UYVY_422_32f_709 (err: 0 0 0) - 930502997",
    "[yuy2] : - - T -  PrPixelFormat_YUYV_422_8u_601 (err: 0 0 0) - 846820729",
    "[yuy3] : - - T -  PrPixelFormat_YUYV_422_8u_709 (err: 0 0 0) - 863597945",
    "[uyvy] : - - T -  PrPixelFormat_UYVY_422_8u_601 (err: 0 0 0) - 2037807477",
    "[uyv7] : - - T -  PrPixelFormat_UYVY_422_8u_709 (err: 0 0 0) - 930511221",
    "[BGaL] : - A - -  PrPixelFormat_BGRA_4444_32f_Linear (err: 0 0 0) - 1281443650",
    "[BGpL] : - - - -  PrPixelFormat_BGRP_4444_32f_Linear (err: 0 0 0) - 1282426690",
    "[BGxL] : - - - -  PrPixelFormat_BGRX_4444_32f_Linear (err: 0 0 0) - 1282950978",
    "[ARgL] : - A - -  PrPixelFormat_ARGB_4444_32f_Linear (err: 0 0 0) - 1281839681",
    "[Xrgb] : - - - -  PrPixelFormat_XRGB_4444_16u (err: 0 0 0) - 1650946648",
    "[Bgrp] : - - - -  PrPixelFormat_BGRP_4444_16u (err: 0 0 0) - 1886545730",
    "[Prgb] : - - - -  PrPixelFormat_PRGB_4444_16u (err: 0 0 0) - 1650946640",
    "[BGra] : - A - -  PrPixelFormat_BGRA_4444_32f (err: 0 0 0) - 1634879298",
    "[bgra] : - A - -  PrPixelFormat_BGRA_4444_8u (err: 0 0 0) - 1634887522",
    "[vuya] : - A - -  PrPixelFormat_VUYA_4444_8u (err: 0 0 0) - 1635349878",
    "[VUYA] : - A - -  PrPixelFormat_VUYA_4444_8u_709 (err: 0 0 0) - 1096373590",
    "[argb] : - A - -  PrPixelFormat_ARGB_4444_8u (err: 0 0 0) - 1650946657",
    "[bgrp] : - - - -  PrPixelFormat_BGRP_4444_8u (err: 0 0 0) - 1886545762",
    "[vuyp] : - - - -  PrPixelFormat_VUYP_4444_8u (err: 0 0 0) - 1887008118",
    "[vup7] : - - - -  PrPixelFormat_VUYP_4444_8u_709 (err: 0 0 0) - 930116982",
    "[prgb] : - - - -  PrPixelFormat_PRGB_4444_8u (err: 0 0 0) - 1650946672",
    "[bgrx] : - - - -  PrPixelFormat_BGRX_4444_8u (err: 0 0 0) - 2020763490",
    "[vuyx] : - - - -  PrPixelFormat_VUYX_4444_8u (err: 0 0 0) - 2021225846",
    "[vux7] : - - - -  PrPixelFormat_VUYX_4444_8u_709 (err: 0 0 0) - 930641270",
    "[xrgb] : - - - -  PrPixelFormat_XRGB_4444_8u (err: 0 0 0) - 1650946680",
    "[dvn1] : C - T -  PrPixelFormat_NTSCDV100_1080i (err: 0 0 0) - 829322852",
    "[dvp1] : C - T -  PrPixelFormat_PALDV100_1080i (err: 0 0 0) - 829453924",
    "[raww] : - A T -  PrPixelFormat_Raw (err: 0 0 0) - 2004312434",
    "[badf] : - A T -  PrPixelFormat_Invalid (err: 0 0 0) - 1717854562",
    "[VUyx] : - - - -  PrPixelFormat_VUYX_4444_32f (err: 0 0 0) - 2021217622",
    "[VUx7] : - - - -  PrPixelFormat_VUYX_4444_32f_709 (err: 0 0 0) - 930633046",
    "[XRgb] : - - - -  PrPixelFormat_XRGB_4444_32f (err: 0 0 0) - 1650938456",
    "[BGrp] : - - - -  PrPixelFormat_BGRP_4444_32f (err: 0 0 0) - 1886537538",
    "[VUya] : - A - -  PrPixelFormat_VUYA_4444_32f (err: 0 0 0) - 1635341654",
    "[vUYa] : - A - -  PrPixelFormat_VUYA_4444_32f_709 (err: 0 0 0) - 1633244534",
    "[ARgb] : - A - -  PrPixelFormat_ARGB_4444_32f (err: 0 0 0) - 1650938433",
    "[BGrx] : - - - -  PrPixelFormat_BGRX_4444_32f (err: 0 0 0) - 2020755266",
    "[Bgra] : - A - -  PrPixelFormat_BGRA_4444_16u (err: 0 0 0) - 1634887490",
    "[Vuya] : - A - -  PrPixelFormat_VUYA_4444_16u (err: 0 0 0) - 1635349846",
    "[Argb] : - A - -  PrPixelFormat_ARGB_4444_16u (err: 0 0 0) - 1650946625",
    "[Bgrx] : - - - -  PrPixelFormat_BGRX_4444_16u (err: 0 0 0) - 2020763458",
};

const Lines kSubTypeLines{
    "[O8RA] : (102) type102         : 'Orvantis 8-bit RGBA'",
    "[O8RG] : (101) type101         : 'Orvantis 8-bit RGB'",
    "[O8YA] : (106) type106         : 'Orvantis 8-bit YUVA 4:4:4:4'",
    "[O8Y4] : (103) type103         : 'Orvantis 8-bit YUV 4:4:4'",
    "[O8Y2] : (104) type104         : 'Orvantis 8-bit YUV 4:2:2'",
    "[O8Y0] : (105) type105         : 'Orvantis 8-bit YUV 4:2:0'",
    "[O8G0] : (107) type107         : 'Orvantis 8-bit YUV 4:0:0 greyscale'",
    "[O0RA] : (110) type110         : 'Orvantis 10-bit RGBA'",
    "[O0RG] : (109) type109         : 'Orvantis 10-bit RGB'",
    "[O0Y4] : (118) type118         : 'Orvantis 10-bit YUV 4:4:4'",
    "[O0Y2] : (108) type108         : 'Orvantis 10-bit YUV 4:2:2'",
    "[O0Y0] : (123) type123         : 'Orvantis 10-bit YUV 4:2:0'",
    "[O0G0] : (115) type115         : 'Orvantis 10-bit YUV 4:0:0 greyscale'",
    "[O2RA] : (112) type112         : 'Orvantis 12-bit RGBA'",
    "[O2RG] : (111) type111         : 'Orvantis 12-bit RGB'",
    "[O4RA] : (114) type114         : 'Orvantis 14-bit RGBA'",
    "[O4RG] : (113) type113         : 'Orvantis 14-bit RGB'",
};

const Lines kFormatLines{
    "[yuy2] PrPixelFormat_YUYV_422_8u_601       : ( 4) type4      : (1) space1   :   : 1",
    "[yuy3] PrPixelFormat_YUYV_422_8u_709       : ( 4) type4      : (2) space2   :   : 1",
    "[uyvy] PrPixelFormat_UYVY_422_8u_601       : ( 5) type5      : (1) space1   :   : 1",
    "[uyv7] PrPixelFormat_UYVY_422_8u_709       : ( 5) type5      : (2) space2   :   : 1",
    "[vuya] PrPixelFormat_VUYA_4444_8u          : (50) type50     : (1) space1   :   :  ",
    "[VUYA] PrPixelFormat_VUYA_4444_8u_709      : (50) type50     : (2) space2   :   :  ",
    "[vuyx] PrPixelFormat_VUYX_4444_8u          : (49) type49     : (1) space1   :   :  ",
    "[vux7] PrPixelFormat_VUYX_4444_8u_709      : (49) type49     : (2) space2   :   :  ",
    "[bgra] PrPixelFormat_BGRA_4444_8u          : ( 2) type2      : (2) space2   :   :  ",
    "[argb] PrPixelFormat_ARGB_4444_8u          : (19) type19     : (2) space2   :   :  ",
    "[bgrx] PrPixelFormat_BGRX_4444_8u          : ( 1) type1      : (2) space2   :   :  ",
    "[xrgb] PrPixelFormat_XRGB_4444_8u          : (16) type16     : (2) space2   :   :  ",
    "[v210] PrPixelFormat_V210_422_10u_601      : (11) type11     : (1) space1   :   : 1",
    "[v211] PrPixelFormat_V210_422_10u_709      : (11) type11     : (2) space2   :   : 1",
    "[RGB1] PrPixelFormat_RGB_444_10u           : (15) type15     : (2) space2   :   : 1",
    "[Bgra] PrPixelFormat_BGRA_4444_16u         : (31) type31     : (2) space2   : 1 :  ",
    "[Bgrx] PrPixelFormat_BGRX_4444_16u         : (32) type32     : (2) space2   : 1 :  ",
};
// clang-format on

const std::string kAcquired = "Acquiring suite: r: 0, v: 2, n: 'Premiere Image Processing Suite', ptr: ";
const std::string kReleased = "Releasing suite: r: 0, v: 2, n: 'Premiere Image Processing Suite'";

class FormatDump : public testing::Test {
 protected:
    FormatDump() {
        buildFormatTables(host.basicSuite());
        host.asked.clear();
        host.suiteCalls.clear();
        const auto usual = host.answer;
        // Recognisable answers: DV is compressed, an "a" in the code means alpha.
        host.answer = [usual](FakeHost::Question question, std::uint32_t format) {
            const std::string code = fourccToString(format);
            if (question == FakeHost::kCompressed) return code.starts_with("dv");
            if (question == FakeHost::kAlpha) return code.find_first_of("aA") != std::string::npos;
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
            if (line == "----") inside = false;
            if (inside) result.push_back(line);
            if (line == heading) inside = true;
        }
        return result;
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
    expected.insert(expected.end(), kPixelFormatLines.begin(), kPixelFormatLines.end());
    expected.insert(expected.end(),
                    {kReleased, "----", "Orvantis types (can_flip supports_0_32768_range : format):"});
    for (int type = 1; type <= 61; ++type) {
        expected.push_back(std::string(type % 2 != 0 ? "YES" : " NO") + (type % 3 == 0 ? " YES" : "  NO") +
                           " : type" + std::to_string(type));
    }
    expected.insert(expected.end(), {"----", "SubTypeInfos: (subType : orvTypeComp : subTypeName)"});
    expected.insert(expected.end(), kSubTypeLines.begin(), kSubTypeLines.end());
    expected.insert(expected.end(),
                    {"----", "FormatInfos: (pixelFormat : orvType : colorSpace : isAdobe16u : isTopLeft)"});
    expected.insert(expected.end(), kFormatLines.begin(), kFormatLines.end());
    EXPECT_EQ(lines, expected);
}

TEST_F(FormatDump, ListsEachOfThe72FormatsOnce) {
    const std::set<std::string> unique(kPixelFormatLines.begin(), kPixelFormatLines.end());
    EXPECT_EQ(unique.size(), 72U);
}

TEST_F(FormatDump, ShowsTheHostsResultCodesInHexadecimal) {
    host.questionResults[FakeHost::kCompressed] = static_cast<std::int32_t>(0x80000001U);
    host.questionResults[FakeHost::kAlpha] = 10;
    host.questionResults[FakeHost::kTopLeft] = -1;
    log.clear();
    dumpFormatTables(host.basicSuite());
    const Lines lines =
        section(log.lines(), "Pixel formats ([fcc] : isCompressed hasAlpha isTopLeft - name):");
    ASSERT_EQ(lines.size(), 73U) << "72 formats and the suite's release";
    EXPECT_EQ(lines[14], "[dvn2] : - - - -  PrPixelFormat_NTSCDV25 (err: 80000001 a ffffffff) - 846100068");
}

TEST_F(FormatDump, AsksTheThreeQuestionsOfEachFormatWithAClearedAnswer) {
    dumpFormatTables(host.basicSuite());
    ASSERT_EQ(host.asked.size(), 72U * 3U);
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
    EXPECT_EQ(calls[0].function, Function::LibraryInit);
    EXPECT_EQ(calls[1].function, Function::Open);
    for (std::size_t i = 0; i < 122; ++i) {
        const Call& call = calls[2 + i];
        EXPECT_EQ(call.function, Function::GetParam);
        EXPECT_EQ(call.handle, calls[1].handle);
        EXPECT_EQ(call.number, i % 2 == 0 ? 7U : 9U);
        EXPECT_EQ(call.code, 1 + i / 2);
        EXPECT_EQ(call.bytes, 4U);
    }
    EXPECT_EQ(calls[124].function, Function::Close);
    EXPECT_EQ(calls[125].function, Function::LibraryClose);
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
        library.failCall(Function::GetParam, call, 21);
        log.clear();
        dumpFormatTables(host.basicSuite());
        const Lines lines = log.lines();
        const int type = (call + 1) / 2;
        EXPECT_EQ(lines.back(), "Format dump stopped: Orvantis error (21): error21: getParam(" +
                                    std::string(call % 2 != 0 ? "7" : "9") + "," + std::to_string(type) +
                                    ")");
        EXPECT_EQ(section(lines, "Orvantis types (can_flip supports_0_32768_range : format):").size(),
                  static_cast<std::size_t>(type));
        EXPECT_EQ(library.count(Function::GetParam), call);
        EXPECT_EQ(library.openSessions(), 0);
    }
}

TEST_F(FormatDump, LibraryThatDoesNotOpenEndsTheListing) {
    library.failAll(Function::LibraryInit, 22);
    log.clear();
    dumpFormatTables(host.basicSuite());
    EXPECT_EQ(log.lines().back(),
              "Format dump stopped: Orvantis error (22): error22: OrvantisCodec(): orvantis_library_init()");
}

TEST_F(FormatDump, RefusedSuiteThrowsBeforeAnyLine) {
    host.refusedSuites = {"Premiere Image Processing Suite"};
    log.clear();
    try {
        dumpFormatTables(host.basicSuite());
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Could not acquire suite: 'Premiere Image Processing Suite', ver: 2");
    }
    EXPECT_EQ(log.linesWithoutSuites(), Lines{});
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
    if (logEnabled()) GTEST_SKIP() << "the log is on already";
    FakeHost host;
    FakeCodec library;
    dumpFormatTables(host.basicSuite());
    EXPECT_EQ(host.asked.size(), 72U * 3U);
    EXPECT_EQ(library.count(Function::GetParam), 122);
    EXPECT_EQ(library.count(Function::GetString), 61 + 17 + 2 * 17);
}

}  // namespace
}  // namespace orvantis
