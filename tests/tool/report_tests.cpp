// The report's page, its drawings, and what is said about a file.
#include "tool/report/report_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "tests/tool/log_text.h"
#include "tool/report/report_plot.h"
#include "tool/shared/base/html_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/pictures/thumbnail.h"

namespace simhost::tool {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kHostile = "<script>alert(\"1\")</script>&'";

TEST(HtmlTexts, MarkupBecomesText) {
    EXPECT_EQ(htmlEscaped(kHostile), "&lt;script&gt;alert(&quot;1&quot;)&lt;/script&gt;&amp;&#39;");
    EXPECT_EQ(htmlEscaped("a\n\tb"), "a\n\tb");
    EXPECT_EQ(htmlEscaped("\x1b\x7f"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(htmlEscaped("Gr\xC3\xB6\xC3\x9F"
                          "e"),
              "Gr\xC3\xB6\xC3\x9F"
              "e");
    EXPECT_THAT(htmlEscaped("a\xFFz"), HasSubstr("\xEF\xBF\xBD"));
}

std::string encoded(std::string_view text) {
    return base64({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

TEST(HtmlTexts, Base64IsThatOfEverybody) {
    EXPECT_EQ(encoded(""), "");
    EXPECT_EQ(encoded("f"), "Zg==");
    EXPECT_EQ(encoded("fo"), "Zm8=");
    EXPECT_EQ(encoded("foo"), "Zm9v");
    EXPECT_EQ(encoded("foobar"), "Zm9vYmFy");
    EXPECT_EQ(encoded("\xFB\xFF\xFE"), "+//+");
}

TEST(NumberTexts, AreForPeople) {
    EXPECT_EQ(bytesText(0), "0 bytes");
    EXPECT_EQ(bytesText(1023), "1023 bytes");
    EXPECT_EQ(bytesText(1536), "1.5 KiB");
    EXPECT_EQ(bytesText(5.0 * 1024 * 1024 * 1024), "5.0 GiB");
    EXPECT_EQ(timeText(0), "00:00:00.000");
    EXPECT_EQ(timeText(3661.25), "01:01:01.250");
    EXPECT_EQ(decimalText(23.976023976, 3), "23.976");
    EXPECT_EQ(timeText(-1), "unknown");
    EXPECT_EQ(timeText(std::numeric_limits<double>::infinity()), "unknown");
}

// Every text of the page comes from a file, its name, or the plug-in's log.
TEST(ReportPages, HoldNoMarkupOfTheFile) {
    Report report;
    report.fileName = report.path = report.failure = kHostile;
    report.alarms = {kHostile};
    report.warnings = {kHostile};
    report.file = report.video = report.made = {{kHostile, kHostile}};
    report.pixelFormats = {kHostile};
    report.frames.push_back({0, kHostile, false, {}, kHostile});
    ReportSound hostile;
    hostile.title = hostile.problem = hostile.drawn = kHostile;
    hostile.facts = {{kHostile, kHostile}};
    hostile.channels = {{kHostile, kHostile, kHostile, waveSvg(SampleRanges(1, 1), kHostile)}};
    report.sounds.push_back(hostile);
    report.hasAvi = true;
    report.avi.streams.emplace_back().format = kHostile;
    report.avi.frameSizes = {1, 2};
    report.log = itemsOf(logText(std::string("22:10:09 5 ----------------------\n22:10:09 5 [") + kHostile +
                                 "] (37)\n22:10:09 5 Decompress failed: " + kHostile + "\n22:10:09 5     [" +
                                 kHostile + "] (2)\n22:10:09 5 " + kHostile));
    ASSERT_EQ(report.log.size(), 2U);
    const std::string page = reportPage(report);
    EXPECT_THAT(page, Not(HasSubstr("<script")));
    EXPECT_THAT(page, HasSubstr("&lt;script&gt;"));
}

TEST(ReportPages, NeedNothingElse) {
    Report report;
    report.frames.push_back({7, "00:00:00.280", true, {1, 2, 3}, ""});
    const std::string page = reportPage(report);
    EXPECT_THAT(page, HasSubstr("<img alt=\"frame 7 at 00:00:00.280\" src=\"data:image/png;base64,AQID\">"));
    EXPECT_THAT(page, HasSubstr("frame 7 · 00:00:00.280 · <em>empty</em>"));
    EXPECT_THAT(page, HasSubstr("prefers-color-scheme:dark"));
    for (const char* outside : {"http://", "https://", "<link", "@import", "url("}) {
        EXPECT_THAT(page, Not(HasSubstr(outside)));
    }
}

TEST(ReportPages, TellTheFailuresOfTheLogAheadOfIt) {
    Report report;
    report.log = itemsOf(logText("22:10:09 5 Log opened"));
    EXPECT_THAT(reportPage(report), HasSubstr("log of this run, no failures</h2><details><summary>"));
    report.log =
        itemsOf(logText("22:10:09 5 ----------------------\n22:10:09 5 [imGetInfo8] (37)\n22:10:09 5 Avi has "
                        "no video stream\n"
                        "22:10:09 5     [imBadFile] (2)"));
    const std::string page = reportPage(report);
    EXPECT_THAT(
        page, HasSubstr("log of this run, 1 call with failures</h2><ul class=\"notes\"><li class=\"bad\">"));
    EXPECT_THAT(page, HasSubstr("<li class=\"bad\">Avi has no video stream<br>"));
    EXPECT_THAT(page, HasSubstr("<li class=\"bad\">imGetInfo8: imBadFile (2)<br>"));
    EXPECT_THAT(page, HasSubstr("<span class=\"bad\">Avi has no video stream</span>"));
}

TEST(ReportPages, LongLogsAreCut) {
    Report report;
    std::string lines;
    for (int i = 0; i < 4000; ++i) {
        lines += "22:10:09 5 Log opened\n";
    }
    report.log = itemsOf(logText(lines));
    EXPECT_THAT(reportPage(report), HasSubstr("1000 further lines are left out"));
}

TEST(SampleRangesTest, ColumnsSpanTheirSamplesAndJoin) {
    SampleRanges ranges(4, 2);
    const float samples[] = {0.5F, -1.0F, 0.0F, std::numeric_limits<float>::quiet_NaN(), 9.0F};
    ranges.add(samples);
    ASSERT_EQ(ranges.columns().size(), 2U);
    EXPECT_EQ(ranges.columns()[0].low, -1.0F);
    EXPECT_EQ(ranges.columns()[0].high, 0.5F);
    EXPECT_EQ(ranges.columns()[1].low, -1.0F) << "the last sample of the column before";
    EXPECT_EQ(ranges.columns()[1].high, 0.0F) << "what is no number is 0";
    EXPECT_EQ(ranges.peak(), 1.0F) << "what is behind the end does not count";
    EXPECT_EQ(ranges.beyond(), 0U);
}

TEST(SampleRangesTest, SamplesBeyondFullScaleAreCounted) {
    SampleRanges ranges(3, 800);
    const float samples[] = {1.5F, -2.0F, 1.0F};
    ranges.add(samples);
    EXPECT_EQ(ranges.beyond(), 2U);
    EXPECT_EQ(ranges.peak(), 2.0F);
}

TEST(ReportDrawings, AChannelIsAnOutlineOfItsRanges) {
    SampleRanges ranges(4, 2);
    const float samples[] = {0.5F, -1.0F, -1.0F, 2.0F};
    ranges.add(samples);
    // 80 high, centre 40: 0.5 is at 20, -1 at 80, what is beyond 1 at 0; the outline is 0.3 thicker each way.
    EXPECT_THAT(waveSvg(ranges, "name"), HasSubstr("d=\"M0 19.7H1L1 -0.3H2L2 80.3H1L1 80.3H0Z\""));
}

TEST(ReportDrawings, NothingIsDrawnOfNothing) {
    EXPECT_THAT(waveSvg(SampleRanges(0, 0), "name"), HasSubstr("d=\"M0 39.7H1L1 40.3H0Z\""))
        << "a line in the middle";
    EXPECT_THAT(frameSizeSvg({}, "name"), HasSubstr("viewBox=\"0 0 1 160.0\""));
    const std::uint32_t zero[] = {0};
    EXPECT_THAT(frameSizeSvg(zero, "name"), HasSubstr("class=\"empty\""));
}

TEST(ReportDrawings, FramesThatShareAColumnAreMeanAndLargest) {
    const std::uint32_t sizes[] = {100, 50, 0, 50};
    const std::string svg = frameSizeSvg(sizes, "name", 2);
    EXPECT_THAT(svg, HasSubstr("class=\"most\" d=\"M0 160.0v-160.0h1v160.0zM1 160.0v-80.0h1v80.0z\""));
    EXPECT_THAT(svg, HasSubstr("class=\"mean\" d=\"M0 160.0v-120.0h1v120.0zM1 160.0v-40.0h1v40.0z\""));
    EXPECT_THAT(svg, HasSubstr("class=\"empty\" d=\"M1 160.0"));
}

TEST(Thumbnails, AreMeansWeightedByAlpha) {
    Picture picture;
    picture.width = 4;
    picture.height = 2;
    picture.channels = 4;
    picture.bits = 16;
    picture.samples = {65535, 0, 0, 65535, 0, 65535, 0, 0, 0, 0, 65535, 65535, 0, 0, 65535, 65535,
                       65535, 0, 0, 65535, 0, 65535, 0, 0, 0, 0, 65535, 65535, 0, 0, 65535, 65535};
    const Picture small = thumbnail(picture, 2);
    EXPECT_EQ(small.width, 2);
    EXPECT_EQ(small.height, 1);
    EXPECT_EQ(small.bits, 8);
    EXPECT_EQ(small.samples, (std::vector<std::uint16_t>{255, 0, 0, 128, 0, 0, 255, 255}));
}

TEST(Thumbnails, SmallPicturesKeepTheirSize) {
    Picture picture;
    picture.width = picture.height = 1;
    picture.samples = {1, 2, 3};
    EXPECT_EQ(thumbnail(picture, 320).samples, picture.samples);
    picture.height = 1;
    picture.width = 500;
    picture.samples.assign(1500, 9);
    const Picture wide = thumbnail(picture, 100);
    EXPECT_EQ(wide.height, 1);
    EXPECT_EQ(wide.samples, std::vector<std::uint16_t>(300, 9));
}

// From 8 × 8 pixels on for one of the thumbnail nobody sees whether all of them were taken.
TEST(Thumbnails, TakeAPartOfAFrameThatIsVeryLarge) {
    EXPECT_EQ(thumbnailStep(1920, 1080, 240, 480), 1);
    EXPECT_EQ(thumbnailStep(3839, 2160, 240, 480), 1);
    EXPECT_EQ(thumbnailStep(3840, 2160, 240, 480), 2);
    EXPECT_EQ(thumbnailStep(16384, 16384, 240, 480), 8);
    EXPECT_EQ(thumbnailStep(1, 20000, 240, 480), 1) << "there is one column to take";
    EXPECT_EQ(thumbnailStep(20000, 1, 240, 480), 1);
    EXPECT_EQ(thumbnailStep(0, 0, 240, 480), 1);
}

}  // namespace
}  // namespace simhost::tool
