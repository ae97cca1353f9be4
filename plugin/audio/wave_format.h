// The format structure of a WAVE stream and the GUID that names its sample format. Pure values and functions;
// no thread, no state.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <type_traits>

namespace orvantis {

inline constexpr std::uint16_t kWaveFormatPcm = 1;
inline constexpr std::uint16_t kWaveFormatIeeeFloat = 3;
/// The real format is named by SubFormat.
inline constexpr std::uint16_t kWaveFormatExtensible = 0xFFFE;
/// Bytes of the oldest form, PCMWAVEFORMAT, which ends behind wBitsPerSample. Nothing shorter describes a
/// stream.
inline constexpr std::size_t kMinWaveFormatBytes = 16;

#pragma pack(push, 1)

struct WaveGuid {
    std::uint32_t data1;
    std::uint16_t data2;
    std::uint16_t data3;
    std::uint8_t data4[8];
};

/// WAVEFORMATEXTENSIBLE. A shorter structure is held with zeros in the place of what it lacks. Packed: read
/// and write the fields by value.
struct WaveFormatExtensible {
    std::uint16_t wFormatTag;
    std::uint16_t nChannels;
    std::uint32_t nSamplesPerSec;
    std::uint32_t nAvgBytesPerSec;  ///< never used: many writers leave it wrong
    std::uint16_t nBlockAlign;      ///< bytes of one sample frame
    std::uint16_t wBitsPerSample;
    std::uint16_t cbSize;
    std::uint16_t wValidBitsPerSample;
    std::uint32_t
        dwChannelMask;  ///< one bit for each loudspeaker; has a meaning only under kWaveFormatExtensible
    WaveGuid SubFormat;
};

#pragma pack(pop)

static_assert(sizeof(WaveGuid) == 16);
static_assert(offsetof(WaveGuid, data2) == 4 && offsetof(WaveGuid, data3) == 6 &&
              offsetof(WaveGuid, data4) == 8);
static_assert(sizeof(WaveFormatExtensible) == 40);
static_assert(offsetof(WaveFormatExtensible, wFormatTag) == 0);
static_assert(offsetof(WaveFormatExtensible, nChannels) == 2);
static_assert(offsetof(WaveFormatExtensible, nSamplesPerSec) == 4);
static_assert(offsetof(WaveFormatExtensible, nAvgBytesPerSec) == 8);
static_assert(offsetof(WaveFormatExtensible, nBlockAlign) == 12);
static_assert(offsetof(WaveFormatExtensible, wBitsPerSample) == 14);
static_assert(offsetof(WaveFormatExtensible, cbSize) == 16);
static_assert(offsetof(WaveFormatExtensible, wValidBitsPerSample) == 18);
static_assert(offsetof(WaveFormatExtensible, dwChannelMask) == 20);
static_assert(offsetof(WaveFormatExtensible, SubFormat) == 24);
static_assert(std::is_trivially_copyable_v<WaveFormatExtensible> &&
              std::is_standard_layout_v<WaveFormatExtensible>);

/// The first 40 of `bytes`, zeros behind a shorter run.
WaveFormatExtensible waveFormatFromBytes(std::span<const std::uint8_t> bytes) noexcept;

/// The GUID by which every format tag is also known: the tag, then the fixed 00000010-8000-00aa00389b71.
WaveGuid guidFromFormatTag(std::uint32_t tag) noexcept;
/// The GUID of the stream's samples: SubFormat of an extensible format, else the one made from its tag.
WaveGuid sampleFormatGuid(const WaveFormatExtensible& format) noexcept;
/// True when `guid` is a format tag (its data1) in GUID form and no GUID of some vendor's own.
bool isFormatTagGuid(const WaveGuid& guid) noexcept;
/// "00000001-0000-0010-8000-00aa00389b71"
std::string guidToString(const WaveGuid& guid);

}  // namespace orvantis
