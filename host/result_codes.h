// Result codes between importer and host: answers of the importer, answers of an asynchronous importer, and
// results of the host's suite functions. Pure constants, used everywhere that answers the host.

#pragma once

#include "host/basic_types.h"

#include <cstdint>

namespace host {

// Answers to importer selectors. "inFileNotAvailable" and "malSupports8" are the host's own spellings.
inline constexpr prMALError imNoErr = 0;
inline constexpr prMALError imTooWide = 1;
inline constexpr prMALError imBadFile = 2;
inline constexpr prMALError imUnsupported = 3;
inline constexpr prMALError imMemErr = 4;
inline constexpr prMALError imOtherErr = 5;
inline constexpr prMALError imNoContent = 6;
inline constexpr prMALError imBadRate = 7;
inline constexpr prMALError imBadCompression = 8;
inline constexpr prMALError imBadCodec = 9;
inline constexpr prMALError imNotFlat = 10;
inline constexpr prMALError imBadSndComp = 11;
inline constexpr prMALError imNoTimecode = 12;
inline constexpr prMALError imMissingComponent = 13;
inline constexpr prMALError imSaveErr = 14;
inline constexpr prMALError imDeleteErr = 15;
inline constexpr prMALError imNotFoundErr = 16;
inline constexpr prMALError imSetFile = 17;
inline constexpr prMALError imIterateStreams = 18;
inline constexpr prMALError imBadStreamIndex = 19;
inline constexpr prMALError imCantTrim = 20;
inline constexpr prMALError imDiskFull = 21;
inline constexpr prMALError imDiskErr = 22;
inline constexpr prMALError imFileShareViolation = 23;
inline constexpr prMALError imIterateFrameSizes = 24;
inline constexpr prMALError imMediaPending = 25;
inline constexpr prMALError imDRMControlled = 26;
inline constexpr prMALError imActivationFailed = 27;
inline constexpr prMALError imFrameNotFound = 28;
inline constexpr prMALError imBadHeader = 29;
inline constexpr prMALError imUnsupportedCompression = 30;
inline constexpr prMALError imFileOpenFailed = 31;
inline constexpr prMALError imFileHasNoImportableStreams = 32;
inline constexpr prMALError imFileReadFailed = 33;
inline constexpr prMALError imUnsupportedAudioFormat = 34;
inline constexpr prMALError imUnsupportedVideoBitDepth = 35;
inline constexpr prMALError imDecompressionError = 36;
inline constexpr prMALError imInvalidPreferences = 37;
inline constexpr prMALError inFileNotAvailable = 38;
inline constexpr prMALError imRequiresProtectedContent = 39;
inline constexpr prMALError imNoCaptions = 40;
inline constexpr prMALError malSupports8 = 101;
inline constexpr prMALError imDelegate = 255;
inline constexpr prMALError imCancel = 300;
inline constexpr prMALError imBadFormatIndex = 301;
inline constexpr prMALError imIsCacheable = 400;

// Answers to selectors of an asynchronous importer.
inline constexpr std::int32_t aiNoError = 0;
inline constexpr std::int32_t aiUnsupported = 1;
inline constexpr std::int32_t aiUnknownError = 2;
inline constexpr std::int32_t aiFrameNotFound = 3;

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
