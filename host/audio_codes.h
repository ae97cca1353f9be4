// The host's codes for audio: sample types (imAudioInfoRec7) and channel labels (imGetAudioChannelLayoutRec).
// Pure constants, used by the audio handlers and the label names of the log.

#pragma once

#include <cstdint>

namespace host {

// Sample types that an importer of PCM and float audio reports; the host knows more.
inline constexpr std::uint32_t kPrAudioSampleType_8BitInt = 1;
inline constexpr std::uint32_t kPrAudioSampleType_16BitInt = 3;
inline constexpr std::uint32_t kPrAudioSampleType_24BitInt = 4;
inline constexpr std::uint32_t kPrAudioSampleType_32BitInt = 5;
inline constexpr std::uint32_t kPrAudioSampleType_32BitFloat = 6;
inline constexpr std::uint32_t kPrAudioSampleType_Other = 14;

// Which loudspeaker a channel feeds.
inline constexpr std::uint32_t kPrAudioChannelLabel_Discrete = 0;
inline constexpr std::uint32_t kPrAudioChannelLabel_FrontLeft = 100;
inline constexpr std::uint32_t kPrAudioChannelLabel_FrontRight = 101;
inline constexpr std::uint32_t kPrAudioChannelLabel_FrontCenter = 102;
inline constexpr std::uint32_t kPrAudioChannelLabel_LowFrequency = 103;
inline constexpr std::uint32_t kPrAudioChannelLabel_BackLeft = 104;
inline constexpr std::uint32_t kPrAudioChannelLabel_BackRight = 105;
inline constexpr std::uint32_t kPrAudioChannelLabel_BackCenter = 106;
inline constexpr std::uint32_t kPrAudioChannelLabel_FrontLeftOfCenter = 107;
inline constexpr std::uint32_t kPrAudioChannelLabel_FrontRightOfCenter = 108;
inline constexpr std::uint32_t kPrAudioChannelLabel_SideLeft = 109;
inline constexpr std::uint32_t kPrAudioChannelLabel_SideRight = 110;
inline constexpr std::uint32_t kPrAudioChannelLabel_TopCenter = 111;
inline constexpr std::uint32_t kPrAudioChannelLabel_TopFrontLeft = 112;
inline constexpr std::uint32_t kPrAudioChannelLabel_TopFrontRight = 113;
inline constexpr std::uint32_t kPrAudioChannelLabel_TopFrontCenter = 114;
inline constexpr std::uint32_t kPrAudioChannelLabel_TopBackLeft = 115;
inline constexpr std::uint32_t kPrAudioChannelLabel_TopBackRight = 116;
inline constexpr std::uint32_t kPrAudioChannelLabel_TopBackCenter = 117;
inline constexpr std::uint32_t kPrAudioChannelLabel_FrontLeftWide = 118;
inline constexpr std::uint32_t kPrAudioChannelLabel_FrontRightWide = 119;
inline constexpr std::uint32_t kPrAudioChannelLabel_LeftHeight = 127;
inline constexpr std::uint32_t kPrAudioChannelLabel_RightHeight = 128;
inline constexpr std::uint32_t kPrAudioChannelLabel_RearSurroundLeft = 129;
inline constexpr std::uint32_t kPrAudioChannelLabel_RearSurroundRight = 130;
inline constexpr std::uint32_t kPrAudioChannelLabel_LFE2 = 131;
inline constexpr std::uint32_t kPrAudioChannelLabel_LeftTotal = 132;
inline constexpr std::uint32_t kPrAudioChannelLabel_RightTotal = 133;
inline constexpr std::uint32_t kPrAudioChannelLabel_Ambisonic_W = 134;
inline constexpr std::uint32_t kPrAudioChannelLabel_Ambisonic_X = 135;
inline constexpr std::uint32_t kPrAudioChannelLabel_Ambisonic_Y = 136;
inline constexpr std::uint32_t kPrAudioChannelLabel_Ambisonic_Z = 137;

}  // namespace host
