// The four name tables of the log. The names are the host's own, spelling mistakes included
// ("inFileNotAvailable", "malSupports8"), because log readers search for them in the host's documentation.

#include "diag/names.h"

#include "host/result_codes.h"
#include "host/selectors.h"

namespace orvantis {

namespace {

constexpr const char* kUnknown = "????";

}  // namespace

const char* selectorName(std::uint32_t code) noexcept {
    switch (code) {
        case host::imInit:
            return "imInit";
        case host::imShutdown:
            return "imShutdown";
        case host::imImportImage:
            return "imImportImage";
        case host::imQuietFile:
            return "imQuietFile";
        case host::imCloseFile:
            return "imCloseFile";
        case host::imAnalysis:
            return "imAnalysis";
        case host::imDataRateAnalysis:
            return "imDataRateAnalysis";
        case host::imGetIndFormat:
            return "imGetIndFormat";
        case host::imGetMetaData:
            return "imGetMetaData";
        case host::imSetMetaData:
            return "imSetMetaData";
        case host::imImportAudio7:
            return "imImportAudio7";
        case host::imGetIndPixelFormat:
            return "imGetIndPixelFormat";
        case host::imGetSupports7:
            return "imGetSupports7";
        case host::imResetSequentialAudio:
            return "imResetSequentialAudio";
        case host::imGetSequentialAudio:
            return "imGetSequentialAudio";
        case host::imGetRollCrawlInfo:
            return "imGetRollCrawlInfo";
        case host::imRollCrawlRenderPage:
            return "imRollCrawlRenderPage";
        case host::imGetSupports8:
            return "imGetSupports8";
        case host::imGetInfo8:
            return "imGetInfo8";
        case host::imGetPrefs8:
            return "imGetPrefs8";
        case host::imOpenFile8:
            return "imOpenFile8";
        case host::imSaveFile8:
            return "imSaveFile8";
        case host::imDeleteFile8:
            return "imDeleteFile8";
        case host::imCalcSize8:
            return "imCalcSize8";
        case host::imCheckTrim8:
            return "imCheckTrim8";
        case host::imTrimFile8:
            return "imTrimFile8";
        case host::imGetPreferredFrameSize:
            return "imGetPreferredFrameSize";
        case host::imCreateAsyncImporter:
            return "imCreateAsyncImporter";
        case host::imGetSourceVideo:
            return "imGetSourceVideo";
        case host::imDeferredProcessing:
            return "imDeferredProcessing";
        case host::imGetPeakAudio:
            return "imGetPeakAudio";
        case host::imRetargetAccelerator:
            return "imRetargetAccelerator";
        case host::imCopyFile:
            return "imCopyFile";
        case host::imGetTimeInfo8:
            return "imGetTimeInfo8";
        case host::imSetTimeInfo8:
            return "imSetTimeInfo8";
        case host::imGetSubTypeNames:
            return "imGetSubTypeNames";
        case host::imGetFileAttributes:
            return "imGetFileAttributes";
        case host::imQueryDestinationPath:
            return "imQueryDestinationPath";
        case host::imQueryContentState:
            return "imQueryContentState";
        case host::imGetIndColorProfile:
            return "imGetIndColorProfile";
        case host::imQueryInputFileList:
            return "imQueryInputFileList";
        case host::imQueryStreamLabel:
            return "imQueryStreamLabel";
        case host::imInitiateAsyncClosedCaptionScan:
            return "imInitiateAsyncClosedCaptionScan";
        case host::imGetNextClosedCaption:
            return "imGetNextClosedCaption";
        case host::imCompleteAsyncClosedCaptionScan:
            return "imCompleteAsyncClosedCaptionScan";
        case host::imGetAudioChannelLayout:
            return "imGetAudioChannelLayout";
        case host::imSelectClipFrameDescriptor:
            return "imSelectClipFrameDescriptor";
        case host::imPerformSourceSettingsCommand:
            return "imPerformSourceSettingsCommand";
        default:
            return kUnknown;
    }
}

const char* errorName(std::uint32_t code) noexcept {
    switch (code) {
        case host::imNoErr:
            return "imNoErr";
        case host::imTooWide:
            return "imTooWide";
        case host::imBadFile:
            return "imBadFile";
        case host::imUnsupported:
            return "imUnsupported";
        case host::imMemErr:
            return "imMemErr";
        case host::imOtherErr:
            return "imOtherErr";
        case host::imNoContent:
            return "imNoContent";
        case host::imBadRate:
            return "imBadRate";
        case host::imBadCompression:
            return "imBadCompression";
        case host::imBadCodec:
            return "imBadCodec";
        case host::imNotFlat:
            return "imNotFlat";
        case host::imBadSndComp:
            return "imBadSndComp";
        case host::imNoTimecode:
            return "imNoTimecode";
        case host::imMissingComponent:
            return "imMissingComponent";
        case host::imSaveErr:
            return "imSaveErr";
        case host::imDeleteErr:
            return "imDeleteErr";
        case host::imNotFoundErr:
            return "imNotFoundErr";
        case host::imSetFile:
            return "imSetFile";
        case host::imIterateStreams:
            return "imIterateStreams";
        case host::imBadStreamIndex:
            return "imBadStreamIndex";
        case host::imCantTrim:
            return "imCantTrim";
        case host::imDiskFull:
            return "imDiskFull";
        case host::imDiskErr:
            return "imDiskErr";
        case host::imFileShareViolation:
            return "imFileShareViolation";
        case host::imIterateFrameSizes:
            return "imIterateFrameSizes";
        case host::imMediaPending:
            return "imMediaPending";
        case host::imDRMControlled:
            return "imDRMControlled";
        case host::imActivationFailed:
            return "imActivationFailed";
        case host::imFrameNotFound:
            return "imFrameNotFound";
        case host::imBadHeader:
            return "imBadHeader";
        case host::imUnsupportedCompression:
            return "imUnsupportedCompression";
        case host::imFileOpenFailed:
            return "imFileOpenFailed";
        case host::imFileHasNoImportableStreams:
            return "imFileHasNoImportableStreams";
        case host::imFileReadFailed:
            return "imFileReadFailed";
        case host::imUnsupportedAudioFormat:
            return "imUnsupportedAudioFormat";
        case host::imUnsupportedVideoBitDepth:
            return "imUnsupportedVideoBitDepth";
        case host::imDecompressionError:
            return "imDecompressionError";
        case host::imInvalidPreferences:
            return "imInvalidPreferences";
        case host::inFileNotAvailable:
            return "inFileNotAvailable";
        case host::imRequiresProtectedContent:
            return "imRequiresProtectedContent";
        case host::imNoCaptions:
            return "imNoCaptions";
        case host::malSupports8:
            return "malSupports8";
        case host::imDelegate:
            return "imDelegate";
        case host::imCancel:
            return "imCancel";
        case host::imBadFormatIndex:
            return "imBadFormatIndex";
        case host::imIsCacheable:
            return "imIsCacheable";
        default:
            return kUnknown;
    }
}

const char* asyncSelectorName(std::uint32_t code) noexcept {
    switch (code) {
        case host::aiInitiateAsyncRead:
            return "aiInitiateAsyncRead";
        case host::aiCancelAsyncRead:
            return "aiCancelAsyncRead";
        case host::aiFlush:
            return "aiFlush";
        case host::aiGetFrame:
            return "aiGetFrame";
        case host::aiClose:
            return "aiClose";
        case host::aiContinueToWaitForAsyncIO:
            return "aiContinueToWaitForAsyncIO";
        case host::aiSelectEfficientRenderTime:
            return "aiSelectEfficientRenderTime";
        default:
            return kUnknown;
    }
}

const char* asyncErrorName(std::uint32_t code) noexcept {
    switch (code) {
        case host::aiNoError:
            return "aiNoError";
        case host::aiUnsupported:
            return "aiUnsupported";
        case host::aiUnknownError:
            return "aiUnknownError";
        case host::aiFrameNotFound:
            return "aiFrameNotFound";
        default:
            return kUnknown;
    }
}

}  // namespace orvantis
