// Format chunks of audio streams, byte by byte.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvantis::audio_test {

inline constexpr std::uint16_t kTagPcm = 1;
inline constexpr std::uint16_t kTagFloat = 3;
inline constexpr std::uint16_t kTagExtensible = 0xFFFE;

struct WaveBytes {
    std::uint16_t tag = kTagPcm;
    std::uint16_t channels = 2;
    std::uint32_t rate = 48000;
    std::uint16_t bits = 16;
    int blockAlign = -1;  ///< channels * bits / 8 unless given
    std::uint32_t mask = 0;
    std::uint32_t subFormat = 1;  ///< first word of the SubFormat GUID, under kTagExtensible
};

inline void append(std::vector<std::uint8_t>& bytes, std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

/// WAVEFORMATEXTENSIBLE (40 bytes) under kTagExtensible, else PCMWAVEFORMAT (16 bytes).
inline std::vector<std::uint8_t> waveBytes(const WaveBytes& wave) {
    const int blockAlign = wave.blockAlign >= 0 ? wave.blockAlign : wave.channels * (wave.bits / 8);
    std::vector<std::uint8_t> bytes;
    append(bytes, wave.tag, 2);
    append(bytes, wave.channels, 2);
    append(bytes, wave.rate, 4);
    append(bytes, std::uint64_t{wave.rate} * static_cast<unsigned>(blockAlign), 4);
    append(bytes, static_cast<unsigned>(blockAlign), 2);
    append(bytes, wave.bits, 2);
    if (wave.tag != kTagExtensible) {
        return bytes;
    }
    append(bytes, 22, 2);         // cbSize
    append(bytes, wave.bits, 2);  // wValidBitsPerSample
    append(bytes, wave.mask, 4);
    append(bytes, wave.subFormat, 4);
    append(bytes, 0x0000, 2);
    append(bytes, 0x0010, 2);
    for (const int byte : {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}) {
        append(bytes, static_cast<unsigned>(byte), 1);
    }
    return bytes;
}

}  // namespace orvantis::audio_test
