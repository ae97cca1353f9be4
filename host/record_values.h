// Numbers that the fields of the host's records take and that are neither selectors, results nor format
// codes. Pure constants.

#pragma once

#include <cstdint>

namespace host {

// imFileOpenRec8::inReadWrite
inline constexpr std::int32_t kOpenForReading = 0;
inline constexpr std::int32_t kOpenForReadingAndWriting = 1;

// imImageInfoRec::fieldType
inline constexpr std::int8_t kFieldTypeProgressive = 0;
inline constexpr std::int8_t kFieldTypeUpperFirst = 1;
inline constexpr std::int8_t kFieldTypeLowerFirst = 2;
inline constexpr std::int8_t kFieldTypeUnknown = 3;

// imImageInfoRec::alphaType
inline constexpr std::int8_t kAlphaTypeStraight = 1;
inline constexpr std::int8_t kAlphaTypeNone = 5;

// imFileInfoRec8::accessModes: audio is read sequentially and apart from video.
inline constexpr std::int32_t kAccessModeSeparateSequentialAudio = 4;

// imDataSample::sampledur: the sample is a key frame.
inline constexpr std::uint32_t kDataSampleKeyFrame = 0x80000000u;

// prBool of records and suites.
inline constexpr std::int32_t kPrFalse = 0;
inline constexpr std::int32_t kPrTrue = 1;

}  // namespace host
