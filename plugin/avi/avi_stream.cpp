#include "avi/avi_stream.h"

#include <algorithm>
#include <cstring>

namespace orvantis {

AviStream::AviStream(std::uint64_t ordinal) : index(ordinal) {
    // The suffix would follow from the stream's type, which is not known before the header is read: it stays
    // "??".
    const auto tens = static_cast<std::uint32_t>('0' + ordinal / 10 % 10);
    const auto ones = static_cast<std::uint32_t>('0' + ordinal % 10);
    chunkId = (riffCode("00??") & 0xFFFF0000U) | ones << 8 | tens;
}

BitmapInfoHeader AviStream::formatHeader() const noexcept {
    BitmapInfoHeader result{};
    const std::size_t count = std::min(format.size(), sizeof(result));
    if (count != 0) {
        std::memcpy(&result, format.data(), count);
    }
    return result;
}

std::span<const std::uint8_t> AviStream::extraData() const noexcept {
    constexpr std::size_t kVideoHeader = sizeof(BitmapInfoHeader);
    constexpr std::size_t kAudioHeader = 18;  // WAVEFORMATEX
    std::size_t fixed = 0;
    if (header.fccType == kStreamTypeVideo) {
        fixed = kVideoHeader;
    }
    if (header.fccType == kStreamTypeAudio) {
        fixed = kAudioHeader;
    }
    return std::span<const std::uint8_t>(format).subspan(std::min(fixed, format.size()));
}

std::int64_t AviStream::nearestWithData(std::uint64_t entry, std::int64_t frameCount) const noexcept {
    // The chunk with the byte ahead of the empty one, else the chunk with the stream's first byte: however
    // long a run of empty chunks is, it is not gone through.
    const ChunkList& list = entries();
    const std::uint64_t start = list[static_cast<std::size_t>(entry)].start;
    if (start != 0) {
        return static_cast<std::int64_t>(list.findByPosition(start - 1).number());
    }
    const auto first = static_cast<std::int64_t>(list.findByPosition(0).number());
    return first < std::min(frameCount, static_cast<std::int64_t>(list.size())) ? first : -1;
}

}  // namespace orvantis
