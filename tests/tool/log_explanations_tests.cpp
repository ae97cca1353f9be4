// The meaning of lines and answers.
#include "tool/shared/logs/log_explanations.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "host/result_codes.h"

namespace simhost::tool {
namespace {

TEST(LinePatterns, StarsStandForAnyText) {
    EXPECT_TRUE(fitsPattern("", ""));
    EXPECT_TRUE(fitsPattern("", "*"));
    EXPECT_TRUE(fitsPattern("abc", "abc"));
    EXPECT_TRUE(fitsPattern("abc", "*c"));
    EXPECT_TRUE(fitsPattern("abc", "a*"));
    EXPECT_TRUE(fitsPattern("abcbcd", "a*bcd"));
    EXPECT_TRUE(fitsPattern("a*c", "a*c"));
    EXPECT_TRUE(fitsPattern("one\ntwo", "one*two"));
    EXPECT_FALSE(fitsPattern("abc", ""));
    EXPECT_FALSE(fitsPattern("", "a"));
    EXPECT_FALSE(fitsPattern("abc", "ab"));
    EXPECT_FALSE(fitsPattern("abc", "*b"));
    EXPECT_FALSE(fitsPattern("abc", "a*d"));
}

TEST(LineMeanings, EveryPatternIsReached) {
    // A pattern behind a wider one would never be used. Its own text, with a word for each star, must find
    // it.
    std::set<std::string_view> patterns;
    for (const LineExplanation& row : lineExplanations()) {
        std::string text;
        for (const char c : row.pattern) {
            text += c == '*' ? std::string("7 x") : std::string(1, c);
        }
        const LineExplanation* found = explainLine(text);
        ASSERT_NE(found, nullptr) << row.pattern;
        EXPECT_EQ(found->pattern, row.pattern) << text;
        EXPECT_TRUE(patterns.insert(row.pattern).second) << row.pattern;
        EXPECT_FALSE(std::string_view(row.text).empty()) << row.pattern;
    }
}

TEST(LineMeanings, UnknownLinesHaveNone) {
    EXPECT_EQ(explainLine("a line of the future"), nullptr);
    EXPECT_EQ(explainLine(""), nullptr);
}

struct Line {
    const char* text;
    Severity severity;
};

class LineSeverities : public testing::TestWithParam<Line> {};

TEST_P(LineSeverities, TellFailuresFromRoutine) {
    const LineExplanation* row = explainLine(GetParam().text);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->severity, GetParam().severity) << row->pattern;
}

constexpr Line kLines[] = {
    {"Acquiring suite: r: 0, v: 3, n: 'Premiere Error Suite', ptr: 00000000001BF2A0", Severity::kRoutine},
    {"Acquiring suite: r: 0, v: 3, n: 'Premiere Error Suite', ptr: 0000000000000000", Severity::kFailure},
    {"Acquiring suite: r: 1, v: 3, n: 'Premiere Error Suite', ptr: 0000000000000000", Severity::kFailure},
    {"Failed to parse avi: stream[1]: strf missing in strl\nhdrl missing", Severity::kFailure},
    {"Failed to parse avi: file doesn't look like AVI (first 12 bytes is not 'RIFF'....'AVI ')",
     Severity::kFailure},
    {"NumFrames: 250", Severity::kRoutine},
    {"NumFrames: 0", Severity::kFailure},
    {"Adjusted FPS: 0 / 1 (0.000)", Severity::kFailure},
    {"Adjusted FPS: 30000 / 1001 (29.970)", Severity::kRoutine},
    {"frameIndex:  4294967295 (total: 5)", Severity::kRoutine},
    {"frameIndex out of bounds", Severity::kFailure},
    {"Empty frame: 3, frame read: 2", Severity::kNote},
    {"Avi unsupported audio stream format: 00000055-0000-0010-8000-00aa00389b71", Severity::kFailure},
    {"Audio is INVALID! Dummy:", Severity::kNote},
    {"REQUEST: ERROR: Frame not found: 3, frameTime: 30481920000", Severity::kNote},
    {"FATAL: Unhandled exception during [imGetSourceVideo] (47): m_videoInfo is NULL", Severity::kFailure},
    {"FATAL: Unhandled exception during [imInit] (0): something new", Severity::kFailure},
    {"[bgra] : - A - -  PrPixelFormat_BGRA_4444_8u (err: 0 0 0) - 1634887522", Severity::kTable},
    {"[bgra] PrPixelFormat_BGRA_4444_8u          : ( 2) BGRA32     : (2) Rec.709  :   :  ", Severity::kTable},
    {"[O8RA] : (102) RGBA 8-bit      : 'Orvantis 8-bit RGBA'", Severity::kTable},
    {" NO  NO : P216", Severity::kTable},
    {"    PrPixelFormat_YUYV_422_8u_601 [yuy2]", Severity::kRoutine},
    {"    0: kPrAudioChannelLabel_FrontLeft", Severity::kRoutine},
    {"startPos                  : 200", Severity::kRoutine},
    {"importAudio: read error: 1600, read: 800", Severity::kFailure},
    {"fill    : 1600", Severity::kRoutine},
};

INSTANTIATE_TEST_SUITE_P(Lines, LineSeverities, testing::ValuesIn(kLines));

TEST(Answers, EndsOfListsAreNoFailures) {
    EXPECT_EQ(resultSeverity("imGetIndPixelFormat", host::imBadFormatIndex), Severity::kRoutine);
    EXPECT_EQ(resultSeverity("imGetInfo8", host::imIterateStreams), Severity::kRoutine);
    EXPECT_EQ(resultSeverity("imGetInfo8", host::imBadStreamIndex), Severity::kRoutine);
    EXPECT_EQ(resultSeverity("imGetSupports8", host::malSupports8), Severity::kRoutine);
    EXPECT_EQ(resultSeverity("imGetSourceVideo", host::imFrameNotFound), Severity::kFailure);
    EXPECT_EQ(resultSeverity("imGetInfo8", host::imBadFile), Severity::kFailure);
}

TEST(Answers, WhatThePluginDoesNotHaveIsNoFailure) {
    EXPECT_EQ(resultSeverity("imGetPrefs8", host::imUnsupported), Severity::kRoutine);
    EXPECT_EQ(resultSeverity("imGetInfo8", host::imUnsupported), Severity::kFailure);
}

TEST(Answers, AreExplainedBySelector) {
    EXPECT_STRNE(explainResult("imOpenFile8", host::imBadFile), explainResult("imGetInfo8", host::imBadFile));
    EXPECT_STREQ(explainResult("imInit", host::imNoErr), "");
    EXPECT_STRNE(explainResult("imCloseFile", 99), "");
}

}  // namespace
}  // namespace simhost::tool
