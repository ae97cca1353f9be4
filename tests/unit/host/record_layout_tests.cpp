// Every field of the host's records is stored through its name and then looked for in the bytes of the
// record: it must lie exactly where this file says and nothing else may change. The numbers here are written
// down independently of those in the headers, so that a slip in one of the two lists shows.

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>
#include <utility>

#include "host/records.h"
#include "host/std_parms.h"

namespace {

using namespace host;

constexpr unsigned char kPoison = 0xA5;

// The name says that the size of a pointer is wanted too, not that of its target.
template <typename T>
constexpr std::size_t kFieldBytes = sizeof(T);  // NOLINT(bugprone-sizeof-expression)

// A value of any field type, made of the bytes seed, seed + 1, ... None of them is the poison.
template <typename T>
T patternValue(unsigned char seed) {
    std::array<unsigned char, kFieldBytes<T>> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>((seed + i) % 0x80 + 1);
    }
    return std::bit_cast<T>(bytes);
}

// Stores a pattern through `store` into a record full of poison and compares all bytes of the record: the
// pattern must lie at `offset`, and everything else must still be poison.
template <typename Record, typename Field, typename Store>
::testing::AssertionResult fieldLiesAt(std::size_t offset, std::size_t size, Store store) {
    std::array<unsigned char, sizeof(Record)> before{};
    before.fill(kPoison);
    Record record;
    std::memcpy(&record, before.data(), sizeof record);

    // Arrays are stored element by element: there is no assignment of a whole array, and a packed one has no
    // address that could be handed out.
    using Element = std::remove_extent_t<Field>;
    std::array<unsigned char, sizeof(Record)> expected = before;
    if (offset + size > expected.size()) {
        return ::testing::AssertionFailure() << "ends behind the record";
    }
    const std::size_t count = std::is_array_v<Field> ? std::extent_v<Field> : 1;
    if (count * kFieldBytes<Element> != size) {
        return ::testing::AssertionFailure()
               << "has " << count * kFieldBytes<Element> << " bytes, not " << size;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const Element value = patternValue<Element>(static_cast<unsigned char>(i * 7));
        store(record, i, value);
        std::memcpy(expected.data() + offset + i * kFieldBytes<Element>, &value, kFieldBytes<Element>);
    }

    std::array<unsigned char, sizeof(Record)> after{};
    std::memcpy(after.data(), &record, sizeof record);
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (after[i] != expected[i]) {
            return ::testing::AssertionFailure()
                   << "byte " << i << " is " << int{after[i]} << ", expected " << int{expected[i]};
        }
    }
    return ::testing::AssertionSuccess();
}

// NOLINTBEGIN(bugprone-macro-parentheses): types and member names cannot stand in parentheses.
#define SCALAR_AT(Record, field, offset, size)                                                 \
    EXPECT_TRUE((fieldLiesAt<Record, decltype(std::declval<Record&>().field)>(                 \
        offset, size, [](Record& record, std::size_t, auto value) { record.field = value; }))) \
        << #Record "." #field
#define ARRAY_AT(Record, field, offset, size)                                                       \
    EXPECT_TRUE((fieldLiesAt<Record, decltype(std::declval<Record&>().field)>(                      \
        offset, size, [](Record& record, std::size_t i, auto value) { record.field[i] = value; }))) \
        << #Record "." #field

// NOLINTEND(bugprone-macro-parentheses)

TEST(RecordLayout, TotalSizes) {
    EXPECT_EQ(sizeof(prRect), 16u);
    EXPECT_EQ(sizeof(imStdParms), 20u);
    EXPECT_EQ(sizeof(piSuites), 44u);
    EXPECT_EQ(sizeof(imImportInfoRec), 193u);
    EXPECT_EQ(sizeof(imIndFormatRec), 764u);
    EXPECT_EQ(sizeof(imSubTypeDescriptionRec), 516u);
    EXPECT_EQ(sizeof(imFileAccessRec8), 36u);
    EXPECT_EQ(sizeof(imFileOpenRec8), 68u);
    EXPECT_EQ(sizeof(imFileInfoRec8), 5376u);
    EXPECT_EQ(sizeof(imAnalysisRec), 32u);
    EXPECT_EQ(sizeof(imDataRateAnalysisRec), 32u);
    EXPECT_EQ(sizeof(imDataSample), 8u);
    EXPECT_EQ(sizeof(imIndPixelFormatRec), 20u);
    EXPECT_EQ(sizeof(imImportAudioRec7), 36u);
    EXPECT_EQ(sizeof(imGetAudioChannelLayoutRec), 136u);
    EXPECT_EQ(sizeof(imFrameFormat), 12u);
    EXPECT_EQ(sizeof(imSourceVideoRec), 112u);
    EXPECT_EQ(sizeof(imAsyncImporterCreationRec), 32u);
    EXPECT_EQ(sizeof(aiAsyncRequest), 124u);
}

TEST(RecordLayout, RecordsMayLieAtAnyAddress) {
    // The host embeds records in larger ones at odd offsets; without an alignment of 1 the compiler would
    // assume more.
    EXPECT_EQ(alignof(imStdParms), 1u);
    EXPECT_EQ(alignof(piSuites), 1u);
    EXPECT_EQ(alignof(imFileInfoRec8), 1u);
    EXPECT_EQ(alignof(imFileOpenRec8), 1u);
    EXPECT_EQ(alignof(imSourceVideoRec), 1u);
    EXPECT_EQ(alignof(imFrameFormat), 1u);
    EXPECT_EQ(alignof(imDataSample), 1u);
    EXPECT_EQ(alignof(imSubTypeDescriptionRec), 1u);
    EXPECT_EQ(alignof(aiAsyncRequest), 1u);
}

TEST(RecordLayout, Rectangle) {
    SCALAR_AT(prRect, left, 0, 4);
    SCALAR_AT(prRect, top, 4, 4);
    SCALAR_AT(prRect, right, 8, 4);
    SCALAR_AT(prRect, bottom, 12, 4);
}

TEST(RecordLayout, StandardParameters) {
    SCALAR_AT(imStdParms, imInterfaceVer, 0, 4);
    SCALAR_AT(imStdParms, funcs, 4, 8);
    SCALAR_AT(imStdParms, piSuites, 12, 8);
    SCALAR_AT(piSuites, piInterfaceVer, 0, 4);
    SCALAR_AT(piSuites, memFuncs, 4, 8);
    SCALAR_AT(piSuites, utilFuncs, 28, 8);
}

TEST(RecordLayout, ImportInfo) {
    SCALAR_AT(imImportInfoRec, importerType, 0, 4);
    SCALAR_AT(imImportInfoRec, canSave, 8, 4);
    SCALAR_AT(imImportInfoRec, noFile, 28, 4);
    SCALAR_AT(imImportInfoRec, keepLoaded, 48, 4);
    SCALAR_AT(imImportInfoRec, priority, 52, 4);
    SCALAR_AT(imImportInfoRec, canAsync, 56, 4);
    SCALAR_AT(imImportInfoRec, avoidAudioConform, 72, 4);
    SCALAR_AT(imImportInfoRec, acceleratorFileExt, 76, 8);
    SCALAR_AT(imImportInfoRec, canCopy, 84, 4);
    SCALAR_AT(imImportInfoRec, canProvideClosedCaptions, 104, 4);
    ARRAY_AT(imImportInfoRec, fileInfoVersion, 108, 37);
    SCALAR_AT(imImportInfoRec, hasSourceSettingsEffect, 145, 4);
    SCALAR_AT(imImportInfoRec, hasPersistentData, 149, 4);
    ARRAY_AT(imImportInfoRec, reserved, 153, 40);
}

TEST(RecordLayout, IndFormat) {
    SCALAR_AT(imIndFormatRec, filetype, 0, 4);
    SCALAR_AT(imIndFormatRec, flags, 4, 4);
    SCALAR_AT(imIndFormatRec, canWriteTimecode, 8, 4);
    ARRAY_AT(imIndFormatRec, FormatName, 12, 256);
    ARRAY_AT(imIndFormatRec, FormatShortName, 268, 32);
    ARRAY_AT(imIndFormatRec, PlatformExtension, 300, 256);
    SCALAR_AT(imIndFormatRec, hasAlternateTypes, 556, 4);
    ARRAY_AT(imIndFormatRec, alternateTypes, 560, 200);
    SCALAR_AT(imIndFormatRec, canWriteMetaData, 760, 4);
}

TEST(RecordLayout, SubTypeDescription) {
    SCALAR_AT(imSubTypeDescriptionRec, subType, 0, 4);
    ARRAY_AT(imSubTypeDescriptionRec, subTypeName, 4, 512);
}

TEST(RecordLayout, FileOpen) {
    SCALAR_AT(imFileOpenRec8, fileinfo.importID, 0, 8);
    SCALAR_AT(imFileOpenRec8, fileinfo.filetype, 8, 4);
    SCALAR_AT(imFileOpenRec8, fileinfo.filepath, 12, 8);
    SCALAR_AT(imFileOpenRec8, fileinfo.fileref, 20, 8);
    SCALAR_AT(imFileOpenRec8, fileinfo.newfilename, 28, 8);
    SCALAR_AT(imFileOpenRec8, privatedata, 36, 8);
    SCALAR_AT(imFileOpenRec8, delegatetype, 44, 4);
    SCALAR_AT(imFileOpenRec8, inReadWrite, 48, 4);
    SCALAR_AT(imFileOpenRec8, inImporterID, 52, 4);
    SCALAR_AT(imFileOpenRec8, outExtraMemoryUsage, 56, 8);
    SCALAR_AT(imFileOpenRec8, inStreamIdx, 64, 4);
}

TEST(RecordLayout, FileInfoVideo) {
    SCALAR_AT(imFileInfoRec8, hasVideo, 0, 1);
    SCALAR_AT(imFileInfoRec8, vidInfo.imageWidth, 2, 4);
    SCALAR_AT(imFileInfoRec8, vidInfo.imageHeight, 6, 4);
    SCALAR_AT(imFileInfoRec8, vidInfo.pixelAspectV1, 10, 2);
    SCALAR_AT(imFileInfoRec8, vidInfo.depth, 12, 2);
    SCALAR_AT(imFileInfoRec8, vidInfo.subType, 14, 4);
    SCALAR_AT(imFileInfoRec8, vidInfo.fieldType, 18, 1);
    SCALAR_AT(imFileInfoRec8, vidInfo.fieldsStacked, 19, 1);
    SCALAR_AT(imFileInfoRec8, vidInfo.alphaType, 22, 1);
    ARRAY_AT(imFileInfoRec8, vidInfo.matteColor, 23, 3);
    SCALAR_AT(imFileInfoRec8, vidInfo.isStill, 31, 1);
    SCALAR_AT(imFileInfoRec8, vidInfo.noDuration, 32, 1);
    SCALAR_AT(imFileInfoRec8, vidInfo.pixelAspectNum, 34, 4);
    SCALAR_AT(imFileInfoRec8, vidInfo.pixelAspectDen, 38, 4);
    SCALAR_AT(imFileInfoRec8, vidInfo.isRollCrawl, 42, 1);
    SCALAR_AT(imFileInfoRec8, vidInfo.importerID, 46, 4);
    SCALAR_AT(imFileInfoRec8, vidInfo.supportsAsyncIO, 50, 4);
    SCALAR_AT(imFileInfoRec8, vidInfo.supportsGetSourceVideo, 54, 4);
    SCALAR_AT(imFileInfoRec8, vidInfo.hasPulldown, 58, 4);
    SCALAR_AT(imFileInfoRec8, vidInfo.pulldownCadence, 62, 4);
    SCALAR_AT(imFileInfoRec8, vidInfo.colorProfileSupport, 78, 4);
    ARRAY_AT(imFileInfoRec8, vidInfo.codecDescription, 82, 16);
    SCALAR_AT(imFileInfoRec8, vidInfo.colorSpaceSupport, 98, 4);
    SCALAR_AT(imFileInfoRec8, vidInfo.frameRate, 102, 8);
    SCALAR_AT(imFileInfoRec8, vidInfo.bitDepth, 114, 4);
    ARRAY_AT(imFileInfoRec8, vidInfo.reserved, 118, 44);
    SCALAR_AT(imFileInfoRec8, vidScale, 162, 4);
    SCALAR_AT(imFileInfoRec8, vidSampleSize, 166, 4);
    SCALAR_AT(imFileInfoRec8, vidDuration, 170, 4);
}

TEST(RecordLayout, FileInfoAudioAndTheRest) {
    SCALAR_AT(imFileInfoRec8, hasAudio, 1, 1);
    SCALAR_AT(imFileInfoRec8, audInfo.numChannels, 174, 4);
    SCALAR_AT(imFileInfoRec8, audInfo.sampleRate, 178, 4);
    SCALAR_AT(imFileInfoRec8, audInfo.sampleType, 182, 4);
    SCALAR_AT(imFileInfoRec8, audDuration, 186, 8);
    SCALAR_AT(imFileInfoRec8, accessModes, 194, 4);
    SCALAR_AT(imFileInfoRec8, privatedata, 198, 8);
    SCALAR_AT(imFileInfoRec8, prefs, 206, 8);
    SCALAR_AT(imFileInfoRec8, hasDataRate, 214, 1);
    SCALAR_AT(imFileInfoRec8, streamIdx, 215, 4);
    SCALAR_AT(imFileInfoRec8, streamsAsComp, 219, 1);
    ARRAY_AT(imFileInfoRec8, streamName, 220, 512);
    SCALAR_AT(imFileInfoRec8, sessionPluginID, 732, 4);
    ARRAY_AT(imFileInfoRec8, filePath, 738, 4096);
    ARRAY_AT(imFileInfoRec8, sourceSettingsMatchName, 4837, 512);
    SCALAR_AT(imFileInfoRec8, vidDurationInFrames, 5349, 8);
    SCALAR_AT(imFileInfoRec8, ivVerticalCapturedView, 5369, 4);
    SCALAR_AT(imFileInfoRec8, mayHaveCaptions, 5373, 1);
    ARRAY_AT(imFileInfoRec8, reserved, 5374, 2);
}

TEST(RecordLayout, Analysis) {
    SCALAR_AT(imAnalysisRec, privatedata, 0, 8);
    SCALAR_AT(imAnalysisRec, prefs, 8, 8);
    SCALAR_AT(imAnalysisRec, buffersize, 16, 4);
    SCALAR_AT(imAnalysisRec, buffer, 20, 8);
    SCALAR_AT(imAnalysisRec, timecodeFormat, 28, 4);
}

TEST(RecordLayout, DataRateAnalysis) {
    SCALAR_AT(imDataRateAnalysisRec, privatedata, 0, 8);
    SCALAR_AT(imDataRateAnalysisRec, prefs, 8, 8);
    SCALAR_AT(imDataRateAnalysisRec, buffersize, 16, 4);
    SCALAR_AT(imDataRateAnalysisRec, buffer, 20, 8);
    SCALAR_AT(imDataRateAnalysisRec, baserate, 28, 4);
    SCALAR_AT(imDataSample, sampledur, 0, 4);
    SCALAR_AT(imDataSample, samplesize, 4, 4);
}

TEST(RecordLayout, IndPixelFormat) {
    SCALAR_AT(imIndPixelFormatRec, privatedata, 0, 8);
    SCALAR_AT(imIndPixelFormatRec, outPixelFormat, 8, 4);
    SCALAR_AT(imIndPixelFormatRec, prefs, 12, 8);
}

TEST(RecordLayout, Audio) {
    SCALAR_AT(imImportAudioRec7, position, 0, 8);
    SCALAR_AT(imImportAudioRec7, size, 8, 4);
    SCALAR_AT(imImportAudioRec7, buffer, 12, 8);
    SCALAR_AT(imImportAudioRec7, privateData, 20, 8);
    SCALAR_AT(imImportAudioRec7, prefs, 28, 8);
    SCALAR_AT(imGetAudioChannelLayoutRec, inPrivateData, 0, 8);
    ARRAY_AT(imGetAudioChannelLayoutRec, outChannelLabels, 8, 128);
}

TEST(RecordLayout, FrameRequest) {
    SCALAR_AT(imFrameFormat, inFrameWidth, 0, 4);
    SCALAR_AT(imFrameFormat, inFrameHeight, 4, 4);
    SCALAR_AT(imFrameFormat, inPixelFormat, 8, 4);
    SCALAR_AT(imSourceVideoRec, inPrivateData, 0, 8);
    SCALAR_AT(imSourceVideoRec, currentStreamIdx, 8, 4);
    SCALAR_AT(imSourceVideoRec, inFrameTime, 12, 8);
    SCALAR_AT(imSourceVideoRec, inFrameFormats, 20, 8);
    SCALAR_AT(imSourceVideoRec, inNumFrameFormats, 28, 4);
    SCALAR_AT(imSourceVideoRec, removePulldown, 32, 1);
    ARRAY_AT(imSourceVideoRec, unused2, 33, 3);
    SCALAR_AT(imSourceVideoRec, outFrame, 36, 8);
    SCALAR_AT(imSourceVideoRec, prefs, 44, 8);
    SCALAR_AT(imSourceVideoRec, prefsSize, 52, 4);
    ARRAY_AT(imSourceVideoRec, selectedColorProfileName, 56, 16);
    SCALAR_AT(imSourceVideoRec, inQuality, 72, 4);
    ARRAY_AT(imSourceVideoRec, inRenderContext, 76, 20);
    ARRAY_AT(imSourceVideoRec, opaqueColorSpaceIdentifier, 96, 16);
}

TEST(RecordLayout, AsyncImporterCreation) {
    SCALAR_AT(imAsyncImporterCreationRec, inPrivateData, 0, 8);
    SCALAR_AT(imAsyncImporterCreationRec, inPrefs, 8, 8);
    SCALAR_AT(imAsyncImporterCreationRec, outAsyncEntry, 16, 8);
    SCALAR_AT(imAsyncImporterCreationRec, outAsyncPrivateData, 24, 8);
}

TEST(RecordLayout, AsyncRequestHasItsFrameRequestTwelveBytesIn) {
    SCALAR_AT(aiAsyncRequest, inPrivateData, 0, 8);
    SCALAR_AT(aiAsyncRequest, unused1, 8, 4);
    SCALAR_AT(aiAsyncRequest, inSourceRec.inPrivateData, 12, 8);
    SCALAR_AT(aiAsyncRequest, inSourceRec.inFrameTime, 24, 8);
    SCALAR_AT(aiAsyncRequest, inSourceRec.inFrameFormats, 32, 8);
    SCALAR_AT(aiAsyncRequest, inSourceRec.inNumFrameFormats, 40, 4);
    SCALAR_AT(aiAsyncRequest, inSourceRec.outFrame, 48, 8);
}

TEST(RecordLayout, FileNameAndPathAreSixteenBitText) {
    // u"é€" in memory: E9 00, AC 20.
    constexpr char16_t text[] = u"\u00E9\u20AC";
    imSubTypeDescriptionRec record;
    std::memset(&record, kPoison, sizeof record);
    for (std::size_t i = 0; i < std::size(text); ++i) {
        record.subTypeName[i] = text[i];
    }

    std::array<unsigned char, 12> bytes{};
    std::memcpy(bytes.data(), &record, bytes.size());
    const std::array<unsigned char, 12> expected{0xA5, 0xA5, 0xA5, 0xA5, 0xE9, 0x00,
                                                 0xAC, 0x20, 0x00, 0x00, 0xA5, 0xA5};
    EXPECT_EQ(bytes, expected);
}

TEST(RecordLayout, InvalidFileReferenceIsAllOnes) {
    EXPECT_EQ(kInvalidFileRef, 0xFFFFFFFFFFFFFFFFull);
    EXPECT_EQ(static_cast<std::int64_t>(kInvalidFileRef), -1);
}

}  // namespace
