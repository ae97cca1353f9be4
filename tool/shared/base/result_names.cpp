#include <string>

#include "host/result_codes.h"
#include "tool/shared/base/hosted_run.h"

namespace simhost::tool {
namespace {

const char* resultName(std::int32_t result) {
    switch (result) {
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
        case host::kUnhandledException:
            return "internal error of the plug-in";
        default:
            return "unknown result";
    }
}

}  // namespace

std::string resultText(std::int32_t result) {
    return std::string(resultName(result)) + " (" + std::to_string(result) + ")";
}

}  // namespace simhost::tool
