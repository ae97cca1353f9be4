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

// The results that code names, each once: as a number of the interface and as an answer of its own type.
#define ORVANTIS_EACH_IMPORTER_RESULT(use)                                                             \
    use(imNoErr) use(imBadFile) use(imUnsupported) use(imMemErr) use(imOtherErr) use(imBadCompression) \
        use(imIterateStreams) use(imBadStreamIndex) use(imDiskErr) use(imFrameNotFound)                \
            use(imFileReadFailed) use(imDecompressionError) use(malSupports8) use(imBadFormatIndex)
#define ORVANTIS_EACH_ASYNC_RESULT(use) \
    use(aiNoError) use(aiUnsupported) use(aiUnknownError) use(aiFrameNotFound)

#define ORVANTIS_IMPORTER_NUMBER(name) inline constexpr prMALError name = codeNamed(kResults, #name);
#define ORVANTIS_IMPORTER_ENUMERATOR(name) name = codeNamed(kResults, #name),
#define ORVANTIS_ASYNC_NUMBER(name) inline constexpr std::int32_t name = codeNamed(kAsyncResults, #name);
#define ORVANTIS_ASYNC_ENUMERATOR(name) name = codeNamed(kAsyncResults, #name),

/// What an importer answers to a selector. Its number is what the host gets.
enum class [[nodiscard]] ImporterResult : std::int32_t {
    ORVANTIS_EACH_IMPORTER_RESULT(ORVANTIS_IMPORTER_ENUMERATOR)
};

/// What an asynchronous importer answers to a selector.
enum class [[nodiscard]] AsyncResult : std::int32_t { ORVANTIS_EACH_ASYNC_RESULT(ORVANTIS_ASYNC_ENUMERATOR) };

ORVANTIS_EACH_IMPORTER_RESULT(ORVANTIS_IMPORTER_NUMBER)
ORVANTIS_EACH_ASYNC_RESULT(ORVANTIS_ASYNC_NUMBER)

#undef ORVANTIS_EACH_IMPORTER_RESULT
#undef ORVANTIS_EACH_ASYNC_RESULT
#undef ORVANTIS_IMPORTER_NUMBER
#undef ORVANTIS_IMPORTER_ENUMERATOR
#undef ORVANTIS_ASYNC_NUMBER
#undef ORVANTIS_ASYNC_ENUMERATOR

constexpr std::int32_t numberOf(ImporterResult result) noexcept {
    return static_cast<std::int32_t>(result);
}

constexpr std::int32_t numberOf(AsyncResult result) noexcept {
    return static_cast<std::int32_t>(result);
}

/// The name of a result code for a log line; "????" for any other number. Static string.
constexpr const char* errorName(std::uint32_t code) noexcept {
    return nameOrUnknown(kResults, code);
}

constexpr const char* errorName(ImporterResult result) noexcept {
    return errorName(static_cast<std::uint32_t>(result));
}

constexpr const char* asyncErrorName(std::uint32_t code) noexcept {
    return nameOrUnknown(kAsyncResults, code);
}

constexpr const char* asyncErrorName(AsyncResult result) noexcept {
    return asyncErrorName(static_cast<std::uint32_t>(result));
}

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
