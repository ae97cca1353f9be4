#include "tool/shared/media/index_probe.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <vector>

namespace simhost::tool {
namespace {

using orvantis::IndexEntry;

constexpr std::uint64_t kHeaderBytes = 8;
constexpr std::uint64_t kListType = 8;  // from a list's header to its type, where idx1 counts from

bool isStreamDigit(std::uint8_t c) {
    return c >= '0' && c <= '9';
}

struct Found {
    std::size_t inside = 0;   // how many headers lie in the file
    std::size_t matches = 0;  // and how many of them are those of the entries' chunks
};

bool isStreamLetter(std::uint8_t c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// An index that leads to the right place may still be wrong about a chunk's size.
Found look(fileio::File& file, std::span<const IndexEntry> entries, std::int64_t shift) {
    Found out;
    const auto fileSize = static_cast<std::uint64_t>(std::max<std::int64_t>(file.size(), 0));
    for (const IndexEntry& entry : entries) {
        const std::uint64_t at = entry.offset + static_cast<std::uint64_t>(shift) - kHeaderBytes;
        std::array<std::uint8_t, kHeaderBytes> header{};
        if (at > fileSize || fileSize - at < kHeaderBytes || !file.seek(static_cast<std::int64_t>(at)) ||
            file.read(header.data(), header.size()) != header.size()) {
            continue;
        }
        ++out.inside;
        std::uint32_t size = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            size |= std::uint32_t{header[4 + i]} << (8 * i);
        }
        const bool named = isStreamDigit(header[0]) && isStreamDigit(header[1]);
        const bool lettered = isStreamLetter(header[2]) && isStreamLetter(header[3]);
        out.matches += named && (shift == 0 ? lettered : size == entry.size) ? 1U : 0U;
    }
    return out;
}

std::vector<IndexEntry> spread(const orvantis::ChunkList& entries) {
    std::vector<IndexEntry> out;
    const std::size_t wanted = std::min(entries.size(), kMostLookedAt);
    for (std::size_t i = 0; i < wanted; ++i) {
        const IndexEntry entry = entries[i * entries.size() / wanted];
        if (entry.size > 0) {
            out.push_back(entry);
        }
    }
    return out;
}

}  // namespace

IndexProbe probeIndex(fileio::File& file, const orvantis::ChunkList& entries,
                      std::optional<std::uint64_t> moviOffset) {
    const std::vector<IndexEntry> some = spread(entries);
    const Found asItStands = look(file, some, 0);
    if (some.empty() || asItStands.matches * 2 > asItStands.inside) {
        return {};
    }
    if (moviOffset) {
        // Offsets of the header, and offsets of the data behind it; the list's type, the list's header and
        // the first chunk as what they count from.
        const auto fromStart = -static_cast<std::int64_t>(*moviOffset + kListType);
        constexpr std::int64_t kHeader = kHeaderBytes;
        for (const std::int64_t shift :
             {fromStart, fromStart - kHeader, std::int64_t{4}, -kHeader, std::int64_t{-4}}) {
            const Found found = look(file, some, shift);
            if (found.matches > asItStands.matches && found.matches * 2 > found.inside) {
                return {shift <= fromStart ? IndexBase::kFileStart : IndexBase::kOther, shift};
            }
        }
    }
    return {asItStands.inside > 0 && asItStands.matches == 0 ? IndexBase::kNowhere : IndexBase::kRight, 0};
}

}  // namespace simhost::tool
