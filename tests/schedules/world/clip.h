// The clip of all scenarios: a few frames, each of which holds its own number, and a little sound.
#pragma once

#include <cstdint>
#include <vector>

namespace schedules::world {

inline constexpr std::uint32_t kWidth = 4;
inline constexpr std::uint32_t kHeight = 2;
inline constexpr std::uint32_t kFrames = 4;
inline constexpr std::uint32_t kChunkBytes = 8;
inline constexpr std::uint32_t kSoundChunkBytes = 16;  ///< four sample frames of two channels
inline constexpr std::int16_t kSample = 0x2121;

/// The whole file, made once.
const std::vector<std::uint8_t>& clipBytes();

}  // namespace schedules::world
