#include "audio/wave_format.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "diag/format.h"

namespace orvantis {

// The structures are copied from the file as they are, and the file is little-endian.
static_assert(std::endian::native == std::endian::little);

WaveFormatExtensible waveFormatFromBytes(std::span<const std::uint8_t> bytes) noexcept {
    WaveFormatExtensible format{};
    const std::size_t count = std::min(bytes.size(), sizeof format);
    if (count != 0) {
        std::memcpy(&format, bytes.data(), count);
    }
    return format;
}

WaveGuid guidFromFormatTag(std::uint32_t tag) noexcept {
    return {tag, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
}

WaveGuid sampleFormatGuid(const WaveFormatExtensible& format) noexcept {
    if (format.wFormatTag == kWaveFormatExtensible) {
        return format.SubFormat;
    }
    return guidFromFormatTag(format.wFormatTag);
}

bool isFormatTagGuid(const WaveGuid& guid) noexcept {
    const WaveGuid expected = guidFromFormatTag(guid.data1);
    return std::memcmp(&guid, &expected, sizeof guid) == 0;
}

std::string guidToString(const WaveGuid& guid) {
    const std::uint32_t data1 = guid.data1;
    const std::uint16_t data2 = guid.data2;
    const std::uint16_t data3 = guid.data3;
    const std::uint8_t* const d = guid.data4;
    return formatString("%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", data1, data2, data3, d[0], d[1],
                        d[2], d[3], d[4], d[5], d[6], d[7]);
}

}  // namespace orvantis
