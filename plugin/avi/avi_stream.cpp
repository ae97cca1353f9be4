#include "avi/avi_stream.h"

#include <algorithm>

namespace orvantis {

namespace {

// Calls `found(first, last)` for each run of entries without data, in order.
template <typename Found>
void forEachEmptyRun(const std::vector<IndexEntry>& list, Found found) {
    const std::size_t count = list.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (list[i].size != 0) continue;
        const std::size_t first = i;
        while (i + 1 < count && list[i + 1].size == 0) ++i;
        found(first, i);
    }
}

}  // namespace

AviStream::AviStream(std::uint64_t ordinal) : index(ordinal) {
    // The suffix would follow from the stream's type, which is not known before the header is read: it stays
    // "??".
    const auto tens = static_cast<std::uint32_t>('0' + ordinal / 10 % 10);
    const auto ones = static_cast<std::uint32_t>('0' + ordinal % 10);
    chunkId = (riffCode("00??") & 0xFFFF0000U) | ones << 8 | tens;
}

std::uint64_t AviStream::totalBytes() const noexcept {
    const std::vector<IndexEntry>& list = entries();
    return list.empty() ? 0 : list.back().start + list.back().size;
}

const IndexEntry* AviStream::findByPosition(std::uint64_t bytePos) const noexcept {
    const std::vector<IndexEntry>& list = entries();
    const auto after =
        std::upper_bound(list.begin(), list.end(), bytePos,
                         [](std::uint64_t pos, const IndexEntry& entry) { return pos < entry.start; });
    if (after == list.begin()) return nullptr;
    const IndexEntry& candidate = *(after - 1);
    return bytePos - candidate.start < candidate.size ? &candidate : nullptr;
}

BitmapInfoHeader AviStream::formatHeader() const noexcept {
    BitmapInfoHeader result{};
    const std::size_t count = std::min(format.size(), sizeof(result));
    if (count != 0) std::memcpy(&result, format.data(), count);
    return result;
}

std::span<const std::uint8_t> AviStream::extraData() const noexcept {
    constexpr std::size_t kVideoHeader = sizeof(BitmapInfoHeader);
    constexpr std::size_t kAudioHeader = 18;  // WAVEFORMATEX
    std::size_t fixed = 0;
    if (header.fccType == kStreamTypeVideo) fixed = kVideoHeader;
    if (header.fccType == kStreamTypeAudio) fixed = kAudioHeader;
    return std::span<const std::uint8_t>(format).subspan(std::min(fixed, format.size()));
}

void AviStream::indexEmptyRuns() {
    // Counted first: a list of a million empty chunks must not cost twice its memory while this one grows.
    std::size_t runs = 0;
    forEachEmptyRun(entries(), [&](std::size_t, std::size_t) { ++runs; });
    m_emptyRuns.clear();
    m_emptyRuns.reserve(runs);
    forEachEmptyRun(entries(), [&](std::size_t first, std::size_t last) {
        m_emptyRuns.push_back(EmptyRun{static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(last)});
    });
}

std::int64_t AviStream::nearestWithData(std::uint64_t entry, std::int64_t frameCount) const noexcept {
    const auto after =
        std::upper_bound(m_emptyRuns.begin(), m_emptyRuns.end(), entry,
                         [](std::uint64_t wanted, const EmptyRun& run) { return wanted < run.first; });
    if (after == m_emptyRuns.begin()) return -1;
    const EmptyRun& run = *(after - 1);
    if (run.first > 0) return std::int64_t{run.first} - 1;
    // Nothing but empty chunks from the start on: the first one behind the run serves.
    const std::int64_t next = std::int64_t{run.last} + 1;
    const auto listed = static_cast<std::int64_t>(entries().size());
    return next < std::min(frameCount, listed) ? next : -1;
}

}  // namespace orvantis
