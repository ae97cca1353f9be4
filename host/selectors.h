// The host's selector numbers: what it asks of the importer (first argument of xImportEntry) and of an
// asynchronous importer (first argument of its entry). Pure constants, used by the dispatchers and the name
// tables. Numbers between them belong to selectors that the host has dropped.

#pragma once

#include <cstdint>

namespace host {

// Importer selectors. The dispatcher compares them as unsigned numbers.
enum : std::int32_t {
    imInit = 0,
    imShutdown = 1,
    imImportImage = 5,
    imQuietFile = 8,
    imCloseFile = 9,
    imAnalysis = 12,
    imDataRateAnalysis = 13,
    imGetIndFormat = 14,
    imGetMetaData = 23,
    imSetMetaData = 24,
    imImportAudio7 = 25,
    imGetIndPixelFormat = 27,
    imGetSupports7 = 28,
    imResetSequentialAudio = 29,
    imGetSequentialAudio = 30,
    imGetRollCrawlInfo = 32,
    imRollCrawlRenderPage = 33,
    imGetSupports8 = 36,
    imGetInfo8 = 37,
    imGetPrefs8 = 38,
    imOpenFile8 = 39,
    imSaveFile8 = 40,
    imDeleteFile8 = 41,
    imCalcSize8 = 42,
    imCheckTrim8 = 43,
    imTrimFile8 = 44,
    imGetPreferredFrameSize = 45,
    imCreateAsyncImporter = 46,
    imGetSourceVideo = 47,
    imDeferredProcessing = 48,
    imGetPeakAudio = 49,
    imRetargetAccelerator = 50,
    imCopyFile = 51,
    imGetTimeInfo8 = 52,
    imSetTimeInfo8 = 53,
    imGetSubTypeNames = 54,
    imGetFileAttributes = 55,
    imQueryDestinationPath = 56,
    imQueryContentState = 57,
    imGetIndColorProfile = 58,
    imQueryInputFileList = 59,
    imQueryStreamLabel = 60,
    imInitiateAsyncClosedCaptionScan = 61,
    imGetNextClosedCaption = 62,
    imCompleteAsyncClosedCaptionScan = 63,
    imGetAudioChannelLayout = 64,
    imSelectClipFrameDescriptor = 65,
    imPerformSourceSettingsCommand = 66,
};

// Selectors of an asynchronous importer.
enum : std::int32_t {
    aiInitiateAsyncRead = 0,
    aiCancelAsyncRead = 1,
    aiFlush = 2,
    aiGetFrame = 3,
    aiClose = 4,
    aiContinueToWaitForAsyncIO = 5,
    aiSelectEfficientRenderTime = 6,
};

}  // namespace host
