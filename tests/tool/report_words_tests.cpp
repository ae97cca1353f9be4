// What codes and answers are called on the page of a report, and what it does not say.
#include "tool/report/report_words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "host/result_codes.h"
#include "tests/tool/log_text.h"
#include "tool/report/report_page.h"

namespace simhost::tool {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(ReportWords, CodedTypesHaveNamesColourSpacesAndBits) {
    const CodedWords words = codedWords("O0Y2");
    EXPECT_EQ(words.name, "Orvantis 10-bit YUV 4:2:2");
    EXPECT_EQ(words.colourSpace, "YUV, colour at half the width (4:2:2)");
    EXPECT_EQ(words.bitsPerChannel, "10");
    EXPECT_EQ(codedWords("O8G0").colourSpace, "grey, no colour (4:0:0)");
    EXPECT_EQ(codedWords("O4RA").name, "Orvantis 14-bit RGBA");
    for (const char* foreign : {"", "XVID", "O8XX", "O9RG", "O8Y2x"}) {
        EXPECT_EQ(codedWords(foreign).name, "") << foreign;
    }
}

TEST(ReportWords, MatrixAndRangeComeFromTheLog) {
    EXPECT_EQ(matrixWords("Compressed format info: 320 x 240, YUV422 8-bit (104), Rec.601 (1), range: 1"),
              "Rec.601, limited range");
    EXPECT_EQ(matrixWords("Compressed format info: 320 x 240, YUV422 8-bit (104), Rec.709 (2), range: 2"),
              "Rec.709, full range");
    EXPECT_EQ(matrixWords("Compressed format info: 320 x 240, RGB 8-bit (1), ? (0), range: 0"), "");
    EXPECT_EQ(matrixWords("Compressed format info: "), "");
    EXPECT_EQ(matrixWords("NumFrames: 2"), "");
}

TEST(ReportWords, LostFramesHaveReasonsAndNoCodes) {
    for (const std::int32_t result :
         {host::imBadCompression, host::imFileReadFailed, host::imFrameNotFound, host::imOtherErr, 12345}) {
        const std::string words = lostFrameWords(result);
        EXPECT_EQ(words.find_first_of("0123456789()_"), std::string::npos) << words;
        // After the first letter nothing is in capitals, as the names of codes are.
        EXPECT_TRUE(std::none_of(words.begin() + 1, words.end(), [](char c) { return c >= 'A' && c <= 'Z'; }))
            << words;
        EXPECT_THAT(lostFrameWords(result), testing::EndsWith("."));
    }
}

TEST(ReportSentences, FramesOfOneSizeAreNeitherLargestNorSmallest) {
    Report report;
    report.hasAvi = true;
    report.avi.frameSizes = {128, 128, 128};
    std::string page = reportPage(report);
    EXPECT_THAT(page, HasSubstr("<dt>Every frame</dt><dd>128 bytes</dd>"));
    EXPECT_THAT(page, Not(HasSubstr("Largest frame")));
    report.avi.frameSizes = {128, 129};
    page = reportPage(report);
    EXPECT_THAT(page, HasSubstr("<dt>Largest frame</dt><dd>129 bytes, frame 1</dd>"));
    EXPECT_THAT(page, Not(HasSubstr("Every frame")));
}

TEST(ReportSentences, WhatIsBadStandsFirstAndInRed) {
    Report report;
    report.alarms = {"nothing can be shown"};
    report.warnings = {"something is odd"};
    EXPECT_THAT(reportPage(report),
                HasSubstr("<ul class=\"notes\"><li class=\"bad\">nothing can be shown</li>"
                          "<li>something is odd</li></ul>"));
    EXPECT_THAT(reportPage(report), Not(HasSubstr("Nothing unusual")));
}

TEST(ReportSentences, WithoutAnyIndexNothingIsSaidOfStretchesWithoutOne) {
    Report report;
    report.hasAvi = true;
    report.avi.usable = true;
    report.avi.streams.emplace_back();
    EXPECT_THAT(reportPage(report), Not(HasSubstr("is without an index")));
    report.avi.streams[0].index = IndexKind::kLegacy;
    EXPECT_THAT(reportPage(report), HasSubstr("No stretch of 64 KiB or more"));
}

// The addresses of buffers differ from call to call.
TEST(ReportSentences, OneFailureOfManyFramesIsToldOnce) {
    Report report;
    for (const char* address : {"0x10", "0x20", "0x3f"}) {
        const auto items =
            itemsOf(logText("22:10:09 5 ----------------------\n22:10:09 5 [imGetSourceVideo] (47)\n"
                            "22:10:09 5 Decompress failed: decompress({" +
                            std::string(address) + ",9})\n22:10:09 5     [imBadCompression] (8)"));
        report.log.insert(report.log.end(), items.begin(), items.end());
    }
    const std::string page = reportPage(report);
    EXPECT_THAT(page, HasSubstr("Decompress failed: decompress({0x10,9}) (3 times)"));
    EXPECT_THAT(page, Not(HasSubstr("<li class=\"bad\">Decompress failed: decompress({0x20")));
}

TEST(ReportTables, HaveCaptionsHeadsAndAPlaceForTheKeyboard) {
    Report report;
    report.hasAvi = true;
    report.avi.streams.emplace_back().index = IndexKind::kLegacy;
    report.avi.gaps = {{8, 70'000}};
    report.avi.gapCount = 1;
    const std::string page = reportPage(report);
    for (const char* part :
         {"<caption>Streams</caption>", "<th scope=\"col\" class=\"\">Kind</th>", "<th scope=\"row\"",
          "<caption>Stretches that no index mentions</caption>",
          "<div class=\"scroll\" tabindex=\"0\" role=\"region\" aria-label=\"Streams\">"}) {
        EXPECT_THAT(page, HasSubstr(part));
    }
}

}  // namespace
}  // namespace simhost::tool
