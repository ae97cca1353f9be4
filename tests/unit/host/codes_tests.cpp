// Selectors, results, labels and four-character codes: numbers that the host fixes. The runs below are
// written as ranges, not copied line by line, so that a wrong or doubled number stands out.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "host/audio_codes.h"
#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/record_values.h"
#include "host/result_codes.h"
#include "host/selectors.h"

namespace {

using namespace host;

// `first` up to and including `last`.
std::vector<std::int64_t> range(std::int64_t first, std::int64_t last) {
    std::vector<std::int64_t> values;
    for (std::int64_t value = first; value <= last; ++value) {
        values.push_back(value);
    }
    return values;
}

std::vector<std::int64_t> joined(std::initializer_list<std::vector<std::int64_t>> parts) {
    std::vector<std::int64_t> all;
    for (const auto& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

// The codes of a table's rows.
template <class Row, std::size_t kCount>
std::vector<std::int64_t> codesOf(const Row (&rows)[kCount]) {
    std::vector<std::int64_t> codes;
    for (const Row& row : rows) {
        codes.push_back(row.code);
    }
    return codes;
}

TEST(Selectors, FormTheHostsSequenceWithItsGaps) {
    // Dropped by the host: 2 to 4, 6, 7, 10, 11, 15 to 22, 26, 31, 34, 35.
    EXPECT_EQ(
        codesOf(kSelectors),
        joined({{0, 1, 5, 8, 9}, range(12, 14), range(23, 25), range(27, 30), {32, 33}, range(36, 66)}));
}

TEST(Selectors, ThoseThatTheImporterServes) {
    const std::vector<std::int64_t> served{imInit,
                                           imShutdown,
                                           imQuietFile,
                                           imCloseFile,
                                           imAnalysis,
                                           imDataRateAnalysis,
                                           imGetIndFormat,
                                           imImportAudio7,
                                           imGetIndPixelFormat,
                                           imGetSupports8,
                                           imGetInfo8,
                                           imOpenFile8,
                                           imCreateAsyncImporter,
                                           imGetSourceVideo,
                                           imGetSubTypeNames,
                                           imGetAudioChannelLayout};
    EXPECT_EQ(served,
              (std::vector<std::int64_t>{0, 1, 8, 9, 12, 13, 14, 25, 27, 36, 37, 39, 46, 47, 54, 64}));
    std::vector<std::int64_t> answered;
    for (const Selector& row : kSelectors) {
        if (row.answered) {
            answered.push_back(row.code);
        }
    }
    EXPECT_EQ(answered, served)
        << "CONTRIBUTING.md, \"How do I add ...\", a selector that the importer answers";
}

TEST(Selectors, AsyncOnesCountFromZero) {
    const std::vector<std::int64_t> named{
        aiInitiateAsyncRead,        aiCancelAsyncRead,          aiFlush, aiGetFrame, aiClose,
        aiContinueToWaitForAsyncIO, aiSelectEfficientRenderTime};
    EXPECT_EQ(named, range(0, 6));
}

TEST(Results, FormTheHostsSequence) {
    EXPECT_EQ(codesOf(kResults), joined({range(0, 40), {101, 255, 300, 301, 400}}));
    EXPECT_EQ(kUnhandledException, 99);
    EXPECT_EQ(findName(kResults, 99), nullptr);
}

TEST(Results, ThoseThatTheImporterGives) {
    const std::vector<std::int64_t> named{
        imNoErr,          imBadFile,        imUnsupported,   imOtherErr,       imBadCompression,
        imIterateStreams, imBadStreamIndex, imFrameNotFound, imFileReadFailed, imDecompressionError,
        malSupports8,     imBadFormatIndex};
    EXPECT_EQ(named, (std::vector<std::int64_t>{0, 2, 3, 5, 8, 18, 19, 28, 33, 36, 101, 301}));
}

TEST(Results, AsyncOnesCountFromZero) {
    const std::vector<std::int64_t> named{aiNoError, aiUnsupported, aiUnknownError, aiFrameNotFound};
    EXPECT_EQ(named, range(0, 3));
}

TEST(Results, SuiteFailuresAreNegativeAndCountUp) {
    EXPECT_EQ(kSuiteNoError, 0);
    const std::vector<std::int64_t> named{kSuiteFailed,      kSuiteBadParameters,  kSuiteOutOfMemory,
                                          kSuiteNotValidNow, kSuiteNotImplemented, kSuiteIdNotValid};
    EXPECT_EQ(named, range(-2147483648LL, -2147483643LL));
}

TEST(AudioCodes, SampleTypes) {
    const std::vector<std::int64_t> named{kPrAudioSampleType_8BitInt,    kPrAudioSampleType_16BitInt,
                                          kPrAudioSampleType_24BitInt,   kPrAudioSampleType_32BitInt,
                                          kPrAudioSampleType_32BitFloat, kPrAudioSampleType_Other};
    EXPECT_EQ(named, (std::vector<std::int64_t>{1, 3, 4, 5, 6, 14}));
}

TEST(AudioCodes, ChannelLabelsFormTwoRunsBesideDiscrete) {
    const std::vector<std::int64_t> named{
        kPrAudioChannelLabel_Discrete,          kPrAudioChannelLabel_FrontLeft,
        kPrAudioChannelLabel_FrontRight,        kPrAudioChannelLabel_FrontCenter,
        kPrAudioChannelLabel_LowFrequency,      kPrAudioChannelLabel_BackLeft,
        kPrAudioChannelLabel_BackRight,         kPrAudioChannelLabel_BackCenter,
        kPrAudioChannelLabel_FrontLeftOfCenter, kPrAudioChannelLabel_FrontRightOfCenter,
        kPrAudioChannelLabel_SideLeft,          kPrAudioChannelLabel_SideRight,
        kPrAudioChannelLabel_TopCenter,         kPrAudioChannelLabel_TopFrontLeft,
        kPrAudioChannelLabel_TopFrontRight,     kPrAudioChannelLabel_TopFrontCenter,
        kPrAudioChannelLabel_TopBackLeft,       kPrAudioChannelLabel_TopBackRight,
        kPrAudioChannelLabel_TopBackCenter,     kPrAudioChannelLabel_FrontLeftWide,
        kPrAudioChannelLabel_FrontRightWide,    kPrAudioChannelLabel_LeftHeight,
        kPrAudioChannelLabel_RightHeight,       kPrAudioChannelLabel_RearSurroundLeft,
        kPrAudioChannelLabel_RearSurroundRight, kPrAudioChannelLabel_LFE2,
        kPrAudioChannelLabel_LeftTotal,         kPrAudioChannelLabel_RightTotal,
        kPrAudioChannelLabel_Ambisonic_W,       kPrAudioChannelLabel_Ambisonic_X,
        kPrAudioChannelLabel_Ambisonic_Y,       kPrAudioChannelLabel_Ambisonic_Z};
    EXPECT_EQ(named, joined({{0}, range(100, 119), range(127, 137)}));
}

TEST(RecordValues, AreTheHosts) {
    EXPECT_EQ(kOpenForReading, 0);
    EXPECT_EQ(kOpenForReadingAndWriting, 1);
    EXPECT_EQ(kFieldTypeProgressive, 0);
    EXPECT_EQ(kFieldTypeUpperFirst, 1);
    EXPECT_EQ(kFieldTypeLowerFirst, 2);
    EXPECT_EQ(kFieldTypeUnknown, 3);
    EXPECT_EQ(kAlphaTypeStraight, 1);
    EXPECT_EQ(kAlphaTypeNone, 5);
    EXPECT_EQ(kAccessModeSeparateSequentialAudio, 4);
    EXPECT_EQ(kDataSampleKeyFrame, std::uint32_t{1} << 31);
    EXPECT_EQ(kPrFalse, 0);
    EXPECT_EQ(kPrTrue, 1);
}

std::string bytesOf(std::uint32_t code) {
    std::string text(4, '\0');
    std::memcpy(text.data(), &code, 4);
    return text;
}

TEST(FourCharCodes, FileTypeHasItsFirstCharacterInTheHighestByte) {
    EXPECT_EQ(kFileTypeAviv, 0x41564956u);
    EXPECT_EQ(bytesOf(kFileTypeAviv), "VIVA");
    EXPECT_EQ(fourccHighFirst('O', '8', 'R', 'A'), 0x4F385241u);
}

TEST(FourCharCodes, TheTwoOrdersAreOpposite) {
    EXPECT_EQ(bytesOf(pixelFormatCode('A', 'B', 'C', 'D')), "ABCD");
    EXPECT_EQ(bytesOf(fourccHighFirst('A', 'B', 'C', 'D')), "DCBA");
}

TEST(FourCharCodes, CharactersAboveAsciiDoNotSpillIntoTheOthers) {
    // A plain char is signed on these compilers; 0x80 and 0xFF must not extend over the neighbouring bytes.
    EXPECT_EQ(pixelFormatCode('\x80', '\0', '\xFF', '\0'), 0x00FF0080u);
    EXPECT_EQ(fourccHighFirst('\0', '\x80', '\0', '\xFF'), 0x008000FFu);
}

}  // namespace
