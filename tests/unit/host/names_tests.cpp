// The name tables against lists written the other way round: by position, with the gaps spelt out.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/result_codes.h"
#include "host/selectors.h"

namespace {

using namespace host;
using Names = std::map<std::uint32_t, std::string>;

// Blank-separated names for the codes from `first` on; "-" leaves a code out.
void addRun(Names& names, std::uint32_t first, const std::string& run) {
    std::size_t start = 0;
    while (start < run.size()) {
        const std::size_t end = std::min(run.find(' ', start), run.size());
        if (const std::string name = run.substr(start, end - start); name != "-") {
            names[first] = name;
        }
        ++first;
        start = end + 1;
    }
}

Names selectors() {
    Names names;
    addRun(names, 0,
           "imInit imShutdown - - - imImportImage - - imQuietFile imCloseFile "  // 0 to 9
           "- - imAnalysis imDataRateAnalysis imGetIndFormat - - - - - "         // 10 to 19
           "- - - imGetMetaData imSetMetaData imImportAudio7 - imGetIndPixelFormat imGetSupports7 "
           "imResetSequentialAudio");  // 20 to 29
    addRun(names, 30,
           "imGetSequentialAudio - imGetRollCrawlInfo imRollCrawlRenderPage - - imGetSupports8 imGetInfo8 "
           "imGetPrefs8 imOpenFile8");
    addRun(names, 40,
           "imSaveFile8 imDeleteFile8 imCalcSize8 imCheckTrim8 imTrimFile8 imGetPreferredFrameSize "
           "imCreateAsyncImporter imGetSourceVideo imDeferredProcessing imGetPeakAudio");
    addRun(names, 50,
           "imRetargetAccelerator imCopyFile imGetTimeInfo8 imSetTimeInfo8 imGetSubTypeNames "
           "imGetFileAttributes imQueryDestinationPath imQueryContentState imGetIndColorProfile "
           "imQueryInputFileList");
    addRun(names, 60,
           "imQueryStreamLabel imInitiateAsyncClosedCaptionScan imGetNextClosedCaption "
           "imCompleteAsyncClosedCaptionScan imGetAudioChannelLayout imSelectClipFrameDescriptor "
           "imPerformSourceSettingsCommand");
    return names;
}

Names errors() {
    Names names;
    addRun(names, 0,
           "imNoErr imTooWide imBadFile imUnsupported imMemErr imOtherErr imNoContent imBadRate "
           "imBadCompression imBadCodec");
    addRun(names, 10,
           "imNotFlat imBadSndComp imNoTimecode imMissingComponent imSaveErr imDeleteErr imNotFoundErr "
           "imSetFile "
           "imIterateStreams imBadStreamIndex");
    addRun(names, 20,
           "imCantTrim imDiskFull imDiskErr imFileShareViolation imIterateFrameSizes imMediaPending "
           "imDRMControlled imActivationFailed imFrameNotFound imBadHeader");
    addRun(names, 30,
           "imUnsupportedCompression imFileOpenFailed imFileHasNoImportableStreams imFileReadFailed "
           "imUnsupportedAudioFormat imUnsupportedVideoBitDepth imDecompressionError imInvalidPreferences "
           "inFileNotAvailable imRequiresProtectedContent");
    addRun(names, 40, "imNoCaptions");
    addRun(names, 101, "malSupports8");
    addRun(names, 255, "imDelegate");
    addRun(names, 300, "imCancel imBadFormatIndex");
    addRun(names, 400, "imIsCacheable");
    return names;
}

Names asyncSelectors() {
    Names names;
    addRun(names, 0,
           "aiInitiateAsyncRead aiCancelAsyncRead aiFlush aiGetFrame aiClose aiContinueToWaitForAsyncIO "
           "aiSelectEfficientRenderTime");
    return names;
}

Names asyncErrors() {
    Names names;
    addRun(names, 0, "aiNoError aiUnsupported aiUnknownError aiFrameNotFound");
    return names;
}

void expectTable(const char* (*function)(std::uint32_t) noexcept, const Names& names, std::size_t count) {
    ASSERT_EQ(names.size(), count)
        << "the table has more rows than the list: CONTRIBUTING.md, \"How do I add ...\"";
    std::vector<std::uint32_t> codes;
    for (std::uint32_t code = 0; code <= 500; ++code) {
        codes.push_back(code);
    }
    for (int bit = 9; bit < 32; ++bit) {
        // A comparison in fewer bits would find small codes here again.
        codes.push_back(std::uint32_t{1} << bit);
        codes.push_back((std::uint32_t{1} << bit) + 1);
        codes.push_back((std::uint32_t{1} << bit) + 3);
    }
    codes.insert(codes.end(), {static_cast<std::uint32_t>(-1), static_cast<std::uint32_t>(-2), 0x7FFFFFFFu});
    for (const std::uint32_t code : codes) {
        const auto found = names.find(code);
        EXPECT_STREQ(function(code), found == names.end() ? "????" : found->second.c_str()) << code;
    }
}

TEST(Names, SelectorsHaveTheHostsNamesAndEverythingElseIsUnknown) {
    expectTable(selectorName, selectors(), std::size(kSelectors));
}

TEST(Names, ResultCodesHaveTheHostsNamesAndEverythingElseIsUnknown) {
    expectTable(errorName, errors(), std::size(kResults));
}

TEST(Names, AsyncSelectorsHaveTheHostsNamesAndEverythingElseIsUnknown) {
    expectTable(asyncSelectorName, asyncSelectors(), std::size(kAsyncSelectors));
}

TEST(Names, AsyncResultCodesHaveTheHostsNamesAndEverythingElseIsUnknown) {
    expectTable(asyncErrorName, asyncErrors(), std::size(kAsyncResults));
}

TEST(Names, EndsAndGapsOfTheTables) {
    EXPECT_STREQ(selectorName(2), "????");
    EXPECT_STREQ(selectorName(66), "imPerformSourceSettingsCommand");
    EXPECT_STREQ(selectorName(67), "????");
    EXPECT_STREQ(errorName(38), "inFileNotAvailable");
    EXPECT_STREQ(errorName(41), "????");
    EXPECT_STREQ(errorName(99), "????");
    EXPECT_STREQ(errorName(101), "malSupports8");
    EXPECT_STREQ(errorName(400), "imIsCacheable");
}

TEST(Names, AreStaticStrings) {
    EXPECT_EQ(selectorName(39), selectorName(39));
    EXPECT_EQ(errorName(2), errorName(2));
    EXPECT_EQ(asyncSelectorName(3), asyncSelectorName(3));
    EXPECT_EQ(asyncErrorName(3), asyncErrorName(3));
}

}  // namespace
