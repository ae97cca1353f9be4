// Records of the file selectors: opening a file and describing what it holds.
// Used by the importer's file handlers on the host's calling threads; a record is valid only during the call.
// Records are packed by one and belong to the host: read and write their fields by value, never bind a
// reference or pointer to one.

#pragma once

#include "host/basic_types.h"
#include "host/layout_checks.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace host {

#pragma pack(push, 1)

// First part of imFileOpenRec8, and param1 of imGetInfo8 (which the importer does not read). `filepath` is
// NUL-terminated UTF-16 owned by the host.
struct imFileAccessRec8 {
    void* importID;
    std::int32_t filetype;     // written
    const char16_t* filepath;  // read
    imFileRef fileref;         // written
    void* newfilename;
};
ORVANTIS_HOST_FIELD(imFileAccessRec8, importID, 0, 8);
ORVANTIS_HOST_FIELD(imFileAccessRec8, filetype, 8, 4);
ORVANTIS_HOST_FIELD(imFileAccessRec8, filepath, 12, 8);
ORVANTIS_HOST_FIELD(imFileAccessRec8, fileref, 20, 8);
ORVANTIS_HOST_FIELD(imFileAccessRec8, newfilename, 28, 8);
static_assert(sizeof(imFileAccessRec8) == 36);
static_assert(std::is_standard_layout_v<imFileAccessRec8> && std::is_trivially_copyable_v<imFileAccessRec8>);

// imOpenFile8, param2. `privatedata` is null when the host first opens the file; the importer stores itself
// there and gets the same value back with every later selector, and here again when a quieted file is opened
// once more.
struct imFileOpenRec8 {
    imFileAccessRec8 fileinfo;
    void* privatedata;  // read, written
    std::int32_t delegatetype;
    std::int32_t inReadWrite;  // read
    std::int32_t inImporterID;
    std::uint64_t outExtraMemoryUsage;
    std::int32_t inStreamIdx;  // read
};
ORVANTIS_HOST_FIELD(imFileOpenRec8, fileinfo, 0, 36);
ORVANTIS_HOST_FIELD(imFileOpenRec8, privatedata, 36, 8);
ORVANTIS_HOST_FIELD(imFileOpenRec8, delegatetype, 44, 4);
ORVANTIS_HOST_FIELD(imFileOpenRec8, inReadWrite, 48, 4);
ORVANTIS_HOST_FIELD(imFileOpenRec8, inImporterID, 52, 4);
ORVANTIS_HOST_FIELD(imFileOpenRec8, outExtraMemoryUsage, 56, 8);
ORVANTIS_HOST_FIELD(imFileOpenRec8, inStreamIdx, 64, 4);
static_assert(sizeof(imFileOpenRec8) == 68);
static_assert(std::is_standard_layout_v<imFileOpenRec8> && std::is_trivially_copyable_v<imFileOpenRec8>);

// The video half of imFileInfoRec8. `frameRate` and the other fields of later hosts stay as preset: a
// non-zero value there would override the time base.
struct imImageInfoRec {
    std::int32_t imageWidth;   // written
    std::int32_t imageHeight;  // written
    std::uint16_t pixelAspectV1;
    std::int16_t depth;     // written
    std::int32_t subType;   // written
    std::int8_t fieldType;  // written
    std::int8_t fieldsStacked;
    std::int8_t reserved_1;
    std::int8_t reserved_2;
    std::int8_t alphaType;  // written
    std::uint8_t matteColor[3];
    std::int8_t alphaInverted;
    std::int8_t isVectors;
    std::int8_t drawsExternal;
    std::int8_t canForceInternalDraw;
    std::int8_t dontObscure;
    std::int8_t isStill;
    std::int8_t noDuration;
    std::int8_t reserved_3;
    std::uint32_t pixelAspectNum;  // written
    std::uint32_t pixelAspectDen;  // written
    std::int8_t isRollCrawl;
    std::int8_t reservedc[3];
    std::int32_t importerID;              // read
    std::int32_t supportsAsyncIO;         // written
    std::int32_t supportsGetSourceVideo;  // written
    std::int32_t hasPulldown;             // written
    std::int32_t pulldownCadence;
    std::int32_t posterFrame;
    std::int32_t canTransform;
    std::int32_t interpretationUncertain;
    std::int32_t colorProfileSupport;
    std::uint8_t codecDescription[16];
    std::int32_t colorSpaceSupport;
    PrTime frameRate;
    std::int32_t hasEmbeddedLUT;
    std::int32_t bitDepth;
    std::int32_t reserved[11];
};
ORVANTIS_HOST_FIELD(imImageInfoRec, imageWidth, 0, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, imageHeight, 4, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, pixelAspectV1, 8, 2);
ORVANTIS_HOST_FIELD(imImageInfoRec, depth, 10, 2);
ORVANTIS_HOST_FIELD(imImageInfoRec, subType, 12, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, fieldType, 16, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, fieldsStacked, 17, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, reserved_1, 18, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, reserved_2, 19, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, alphaType, 20, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, matteColor, 21, 3);
ORVANTIS_HOST_FIELD(imImageInfoRec, alphaInverted, 24, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, isVectors, 25, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, drawsExternal, 26, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, canForceInternalDraw, 27, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, dontObscure, 28, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, isStill, 29, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, noDuration, 30, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, reserved_3, 31, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, pixelAspectNum, 32, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, pixelAspectDen, 36, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, isRollCrawl, 40, 1);
ORVANTIS_HOST_FIELD(imImageInfoRec, reservedc, 41, 3);
ORVANTIS_HOST_FIELD(imImageInfoRec, importerID, 44, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, supportsAsyncIO, 48, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, supportsGetSourceVideo, 52, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, hasPulldown, 56, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, pulldownCadence, 60, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, posterFrame, 64, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, canTransform, 68, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, interpretationUncertain, 72, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, colorProfileSupport, 76, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, codecDescription, 80, 16);
ORVANTIS_HOST_FIELD(imImageInfoRec, colorSpaceSupport, 96, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, frameRate, 100, 8);
ORVANTIS_HOST_FIELD(imImageInfoRec, hasEmbeddedLUT, 108, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, bitDepth, 112, 4);
ORVANTIS_HOST_FIELD(imImageInfoRec, reserved, 116, 44);
static_assert(sizeof(imImageInfoRec) == 160);
static_assert(std::is_standard_layout_v<imImageInfoRec> && std::is_trivially_copyable_v<imImageInfoRec>);

// The audio half of imFileInfoRec8. `sampleType` holds a kPrAudioSampleType_ code.
struct imAudioInfoRec7 {
    std::int32_t numChannels;  // written
    float sampleRate;          // written
    std::uint32_t sampleType;  // written
};
ORVANTIS_HOST_FIELD(imAudioInfoRec7, numChannels, 0, 4);
ORVANTIS_HOST_FIELD(imAudioInfoRec7, sampleRate, 4, 4);
ORVANTIS_HOST_FIELD(imAudioInfoRec7, sampleType, 8, 4);
static_assert(sizeof(imAudioInfoRec7) == 12);
static_assert(std::is_standard_layout_v<imAudioInfoRec7> && std::is_trivially_copyable_v<imAudioInfoRec7>);

// imGetInfo8, param2. Older hosts pass a record that ends at byte 5373; nothing behind `streamIdx` is
// touched. The video fields are written only for a file with usable video, the audio fields only for one with
// usable audio.
struct imFileInfoRec8 {
    std::int8_t hasVideo;  // written
    std::int8_t hasAudio;  // written
    imImageInfoRec vidInfo;
    std::int32_t vidScale;       // written
    std::int32_t vidSampleSize;  // written
    std::int32_t vidDuration;    // written
    imAudioInfoRec7 audInfo;
    PrAudioSample audDuration;  // written
    std::int32_t accessModes;   // written
    void* privatedata;          // read
    void* prefs;
    std::int8_t hasDataRate;  // written
    std::int32_t streamIdx;   // read
    std::int8_t streamsAsComp;
    char16_t streamName[256];
    std::int32_t sessionPluginID;
    std::int8_t alwaysUnquiet;
    std::int8_t hasDataStreams;
    char16_t filePath[2048];
    std::int8_t canProvidePeakData;
    std::int8_t mayBeGrowing;
    std::int8_t ignoreGrowing;
    char16_t sourceSettingsMatchName[256];
    std::int64_t vidDurationInFrames;
    std::int32_t ivProjectionType;
    std::int32_t ivFrameLayout;
    std::uint32_t ivHorizontalCapturedView;
    std::uint32_t ivVerticalCapturedView;
    std::int8_t mayHaveCaptions;
    std::int8_t reserved[2];
};
ORVANTIS_HOST_FIELD(imFileInfoRec8, hasVideo, 0, 1);
ORVANTIS_HOST_FIELD(imFileInfoRec8, hasAudio, 1, 1);
ORVANTIS_HOST_FIELD(imFileInfoRec8, vidInfo, 2, 160);
ORVANTIS_HOST_FIELD(imFileInfoRec8, vidScale, 162, 4);
ORVANTIS_HOST_FIELD(imFileInfoRec8, vidSampleSize, 166, 4);
ORVANTIS_HOST_FIELD(imFileInfoRec8, vidDuration, 170, 4);
ORVANTIS_HOST_FIELD(imFileInfoRec8, audInfo, 174, 12);
ORVANTIS_HOST_FIELD(imFileInfoRec8, audDuration, 186, 8);
ORVANTIS_HOST_FIELD(imFileInfoRec8, accessModes, 194, 4);
ORVANTIS_HOST_FIELD(imFileInfoRec8, privatedata, 198, 8);
ORVANTIS_HOST_FIELD(imFileInfoRec8, prefs, 206, 8);
ORVANTIS_HOST_FIELD(imFileInfoRec8, hasDataRate, 214, 1);
ORVANTIS_HOST_FIELD(imFileInfoRec8, streamIdx, 215, 4);
ORVANTIS_HOST_FIELD(imFileInfoRec8, streamsAsComp, 219, 1);
ORVANTIS_HOST_FIELD(imFileInfoRec8, streamName, 220, 512);
ORVANTIS_HOST_FIELD(imFileInfoRec8, sessionPluginID, 732, 4);
ORVANTIS_HOST_FIELD(imFileInfoRec8, alwaysUnquiet, 736, 1);
ORVANTIS_HOST_FIELD(imFileInfoRec8, hasDataStreams, 737, 1);
ORVANTIS_HOST_FIELD(imFileInfoRec8, filePath, 738, 4096);
ORVANTIS_HOST_FIELD(imFileInfoRec8, canProvidePeakData, 4834, 1);
ORVANTIS_HOST_FIELD(imFileInfoRec8, mayBeGrowing, 4835, 1);
ORVANTIS_HOST_FIELD(imFileInfoRec8, ignoreGrowing, 4836, 1);
ORVANTIS_HOST_FIELD(imFileInfoRec8, sourceSettingsMatchName, 4837, 512);
ORVANTIS_HOST_FIELD(imFileInfoRec8, vidDurationInFrames, 5349, 8);
ORVANTIS_HOST_FIELD(imFileInfoRec8, ivProjectionType, 5357, 4);
ORVANTIS_HOST_FIELD(imFileInfoRec8, ivFrameLayout, 5361, 4);
ORVANTIS_HOST_FIELD(imFileInfoRec8, ivHorizontalCapturedView, 5365, 4);
ORVANTIS_HOST_FIELD(imFileInfoRec8, ivVerticalCapturedView, 5369, 4);
ORVANTIS_HOST_FIELD(imFileInfoRec8, mayHaveCaptions, 5373, 1);
ORVANTIS_HOST_FIELD(imFileInfoRec8, reserved, 5374, 2);
static_assert(sizeof(imFileInfoRec8) == 5376);
static_assert(std::is_standard_layout_v<imFileInfoRec8> && std::is_trivially_copyable_v<imFileInfoRec8>);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, imageWidth) == 2);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, imageHeight) == 6);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, depth) == 12);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, subType) == 14);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, fieldType) == 18);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, alphaType) == 22);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, pixelAspectNum) == 34);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, pixelAspectDen) == 38);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, importerID) == 46);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, supportsAsyncIO) == 50);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, supportsGetSourceVideo) == 54);
static_assert(offsetof(imFileInfoRec8, vidInfo) + offsetof(imImageInfoRec, hasPulldown) == 58);
static_assert(offsetof(imFileInfoRec8, audInfo) + offsetof(imAudioInfoRec7, numChannels) == 174);
static_assert(offsetof(imFileInfoRec8, audInfo) + offsetof(imAudioInfoRec7, sampleRate) == 178);
static_assert(offsetof(imFileInfoRec8, audInfo) + offsetof(imAudioInfoRec7, sampleType) == 182);

#pragma pack(pop)

}  // namespace host
