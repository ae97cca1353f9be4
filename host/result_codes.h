// Result codes between importer and host: answers of the importer, answers of an asynchronous importer, and
// results of the host's suite functions. Number and name of each are said once; the log and the tool take the
// names from here. Pure constants, used everywhere that answers the host.

#pragma once

#include <cstdint>

#include "host/basic_types.h"
#include "host/named_codes.h"

namespace host {

/// Answers to importer selectors. "inFileNotAvailable" and "malSupports8" are the host's own spellings.
inline constexpr NamedCode kResults[] = {
    {0, "imNoErr"},
    {1, "imTooWide"},
    {2, "imBadFile"},
    {3, "imUnsupported"},
    {4, "imMemErr"},
    {5, "imOtherErr"},
    {6, "imNoContent"},
    {7, "imBadRate"},
    {8, "imBadCompression"},
    {9, "imBadCodec"},
    {10, "imNotFlat"},
    {11, "imBadSndComp"},
    {12, "imNoTimecode"},
    {13, "imMissingComponent"},
    {14, "imSaveErr"},
    {15, "imDeleteErr"},
    {16, "imNotFoundErr"},
    {17, "imSetFile"},
    {18, "imIterateStreams"},
    {19, "imBadStreamIndex"},
    {20, "imCantTrim"},
    {21, "imDiskFull"},
    {22, "imDiskErr"},
    {23, "imFileShareViolation"},
    {24, "imIterateFrameSizes"},
    {25, "imMediaPending"},
    {26, "imDRMControlled"},
    {27, "imActivationFailed"},
    {28, "imFrameNotFound"},
    {29, "imBadHeader"},
    {30, "imUnsupportedCompression"},
    {31, "imFileOpenFailed"},
    {32, "imFileHasNoImportableStreams"},
    {33, "imFileReadFailed"},
    {34, "imUnsupportedAudioFormat"},
    {35, "imUnsupportedVideoBitDepth"},
    {36, "imDecompressionError"},
    {37, "imInvalidPreferences"},
    {38, "inFileNotAvailable"},
    {39, "imRequiresProtectedContent"},
    {40, "imNoCaptions"},
    {101, "malSupports8"},
    {255, "imDelegate"},
    {300, "imCancel"},
    {301, "imBadFormatIndex"},
    {400, "imIsCacheable"},
};

/// Answers to selectors of an asynchronous importer.
inline constexpr NamedCode kAsyncResults[] = {
    {0, "aiNoError"},
    {1, "aiUnsupported"},
    {2, "aiUnknownError"},
    {3, "aiFrameNotFound"},
};

/// The name of a result code for a log line; "????" for any other number. Static string.
constexpr const char* errorName(std::uint32_t code) noexcept {
    return nameOrUnknown(kResults, code);
}

constexpr const char* asyncErrorName(std::uint32_t code) noexcept {
    return nameOrUnknown(kAsyncResults, code);
}

// A constant for each result that code names: its number, looked up by its own name when compiling.
#define ORVANTIS_HOST_RESULT(name) inline constexpr prMALError name = codeNamed(kResults, #name)
#define ORVANTIS_HOST_ASYNC_RESULT(name) inline constexpr std::int32_t name = codeNamed(kAsyncResults, #name)

ORVANTIS_HOST_RESULT(imNoErr);
ORVANTIS_HOST_RESULT(imBadFile);
ORVANTIS_HOST_RESULT(imUnsupported);
ORVANTIS_HOST_RESULT(imMemErr);
ORVANTIS_HOST_RESULT(imOtherErr);
ORVANTIS_HOST_RESULT(imBadCompression);
ORVANTIS_HOST_RESULT(imIterateStreams);
ORVANTIS_HOST_RESULT(imBadStreamIndex);
ORVANTIS_HOST_RESULT(imDiskErr);
ORVANTIS_HOST_RESULT(imFrameNotFound);
ORVANTIS_HOST_RESULT(imFileReadFailed);
ORVANTIS_HOST_RESULT(imDecompressionError);
ORVANTIS_HOST_RESULT(malSupports8);
ORVANTIS_HOST_RESULT(imBadFormatIndex);

ORVANTIS_HOST_ASYNC_RESULT(aiNoError);
ORVANTIS_HOST_ASYNC_RESULT(aiUnsupported);
ORVANTIS_HOST_ASYNC_RESULT(aiUnknownError);
ORVANTIS_HOST_ASYNC_RESULT(aiFrameNotFound);

#undef ORVANTIS_HOST_RESULT
#undef ORVANTIS_HOST_ASYNC_RESULT

// The answer of both entries when an exception got as far as their guard. Outside the range of the named
// codes.
inline constexpr std::int32_t kUnhandledException = 99;

// Results of suite functions: 0 is success, everything else a failure, the host's own ones have the top bit
// set.
inline constexpr prSuiteError kSuiteNoError = 0;
inline constexpr prSuiteError kSuiteFailed = static_cast<prSuiteError>(0x80000000u);
inline constexpr prSuiteError kSuiteBadParameters = static_cast<prSuiteError>(0x80000001u);
inline constexpr prSuiteError kSuiteOutOfMemory = static_cast<prSuiteError>(0x80000002u);
inline constexpr prSuiteError kSuiteNotValidNow = static_cast<prSuiteError>(0x80000003u);
inline constexpr prSuiteError kSuiteNotImplemented = static_cast<prSuiteError>(0x80000004u);
inline constexpr prSuiteError kSuiteIdNotValid = static_cast<prSuiteError>(0x80000005u);
static_assert(kSuiteFailed < 0 && kSuiteIdNotValid < 0);

}  // namespace host
