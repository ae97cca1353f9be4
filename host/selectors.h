// The host's selectors: what it asks of the importer (first argument of xImportEntry) and of an asynchronous
// importer (first argument of its entry). Number and name of each are said once; the dispatchers, the log and
// the tool take them from here. Numbers between them belong to selectors that the host has dropped.

#pragma once

#include <cstdint>

#include "host/named_codes.h"

namespace host {

struct Selector {
    std::int32_t code;
    const char* name;
    bool answered = false;  ///< false: the importer answers every such call with imUnsupported
};

/// Importer selectors. The dispatcher compares them as unsigned numbers.
inline constexpr Selector kSelectors[] = {
    {0, "imInit", true},
    {1, "imShutdown", true},
    {5, "imImportImage"},
    {8, "imQuietFile", true},
    {9, "imCloseFile", true},
    {12, "imAnalysis", true},
    {13, "imDataRateAnalysis", true},
    {14, "imGetIndFormat", true},
    {23, "imGetMetaData"},
    {24, "imSetMetaData"},
    {25, "imImportAudio7", true},
    {27, "imGetIndPixelFormat", true},
    {28, "imGetSupports7"},
    {29, "imResetSequentialAudio"},
    {30, "imGetSequentialAudio"},
    {32, "imGetRollCrawlInfo"},
    {33, "imRollCrawlRenderPage"},
    {36, "imGetSupports8", true},
    {37, "imGetInfo8", true},
    {38, "imGetPrefs8"},
    {39, "imOpenFile8", true},
    {40, "imSaveFile8"},
    {41, "imDeleteFile8"},
    {42, "imCalcSize8"},
    {43, "imCheckTrim8"},
    {44, "imTrimFile8"},
    {45, "imGetPreferredFrameSize"},
    {46, "imCreateAsyncImporter", true},
    {47, "imGetSourceVideo", true},
    {48, "imDeferredProcessing"},
    {49, "imGetPeakAudio"},
    {50, "imRetargetAccelerator"},
    {51, "imCopyFile"},
    {52, "imGetTimeInfo8"},
    {53, "imSetTimeInfo8"},
    {54, "imGetSubTypeNames", true},
    {55, "imGetFileAttributes"},
    {56, "imQueryDestinationPath"},
    {57, "imQueryContentState"},
    {58, "imGetIndColorProfile"},
    {59, "imQueryInputFileList"},
    {60, "imQueryStreamLabel"},
    {61, "imInitiateAsyncClosedCaptionScan"},
    {62, "imGetNextClosedCaption"},
    {63, "imCompleteAsyncClosedCaptionScan"},
    {64, "imGetAudioChannelLayout", true},
    {65, "imSelectClipFrameDescriptor"},
    {66, "imPerformSourceSettingsCommand"},
};

/// Selectors of an asynchronous importer.
inline constexpr NamedCode kAsyncSelectors[] = {
    {0, "aiInitiateAsyncRead"},
    {1, "aiCancelAsyncRead"},
    {2, "aiFlush"},
    {3, "aiGetFrame"},
    {4, "aiClose"},
    {5, "aiContinueToWaitForAsyncIO"},
    {6, "aiSelectEfficientRenderTime"},
};

/// The name of a selector for a log line; "????" for any other number. Static string.
constexpr const char* selectorName(std::uint32_t code) noexcept {
    return nameOrUnknown(kSelectors, code);
}

constexpr const char* asyncSelectorName(std::uint32_t code) noexcept {
    return nameOrUnknown(kAsyncSelectors, code);
}

// A constant for each selector that code names: its number, looked up by its own name when compiling.
#define ORVANTIS_HOST_SELECTOR(name) inline constexpr std::int32_t name = codeNamed(kSelectors, #name)
#define ORVANTIS_HOST_ASYNC_SELECTOR(name) \
    inline constexpr std::int32_t name = codeNamed(kAsyncSelectors, #name)

ORVANTIS_HOST_SELECTOR(imInit);
ORVANTIS_HOST_SELECTOR(imShutdown);
ORVANTIS_HOST_SELECTOR(imQuietFile);
ORVANTIS_HOST_SELECTOR(imCloseFile);
ORVANTIS_HOST_SELECTOR(imAnalysis);
ORVANTIS_HOST_SELECTOR(imDataRateAnalysis);
ORVANTIS_HOST_SELECTOR(imGetIndFormat);
ORVANTIS_HOST_SELECTOR(imImportAudio7);
ORVANTIS_HOST_SELECTOR(imGetIndPixelFormat);
ORVANTIS_HOST_SELECTOR(imGetSupports7);
ORVANTIS_HOST_SELECTOR(imGetSupports8);
ORVANTIS_HOST_SELECTOR(imGetInfo8);
ORVANTIS_HOST_SELECTOR(imOpenFile8);
ORVANTIS_HOST_SELECTOR(imCreateAsyncImporter);
ORVANTIS_HOST_SELECTOR(imGetSourceVideo);
ORVANTIS_HOST_SELECTOR(imGetSubTypeNames);
ORVANTIS_HOST_SELECTOR(imGetAudioChannelLayout);
ORVANTIS_HOST_SELECTOR(imSelectClipFrameDescriptor);

ORVANTIS_HOST_ASYNC_SELECTOR(aiInitiateAsyncRead);
ORVANTIS_HOST_ASYNC_SELECTOR(aiCancelAsyncRead);
ORVANTIS_HOST_ASYNC_SELECTOR(aiFlush);
ORVANTIS_HOST_ASYNC_SELECTOR(aiGetFrame);
ORVANTIS_HOST_ASYNC_SELECTOR(aiClose);
ORVANTIS_HOST_ASYNC_SELECTOR(aiContinueToWaitForAsyncIO);
ORVANTIS_HOST_ASYNC_SELECTOR(aiSelectEfficientRenderTime);

#undef ORVANTIS_HOST_SELECTOR
#undef ORVANTIS_HOST_ASYNC_SELECTOR

}  // namespace host
