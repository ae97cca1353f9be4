#include "tests/fuzz/allowed_differences.h"

#include <algorithm>
#include <array>
#include <limits>
#include <set>
#include <vector>

#include "audio/wave_format.h"
#include "avi/avi_structs.h"

namespace fuzz {

namespace {

using orvantis::AviStream;
using orvantis::IndexEntry;

constexpr std::uint32_t kSigned = 0x7FFFFFFF;
constexpr std::uint32_t kPeersSize = 0x3FFFFFFF;  // it keeps a size in 30 bits

// Formats that the peer takes for no formats at all.
bool impossibleFormat(const Difference& d) {
    return std::any_of(d.file->streams.begin(), d.file->streams.end(), [](const auto& stream) {
        if (stream->header.fccType == orvantis::kStreamTypeVideo) {
            return stream->formatHeader().biHeight == std::numeric_limits<std::int32_t>::min();
        }
        const auto samplesPerSecond = orvantis::waveFormatFromBytes(stream->format).nSamplesPerSec;
        return samplesPerSecond == 0 || samplesPerSecond > kSigned;
    });
}

bool oddRate(const Difference& d) {
    return d.ours->header.dwRate == 0 || d.ours->header.dwScale == 0 || d.ours->header.dwRate > kSigned ||
           d.ours->header.dwScale > kSigned;
}

bool withoutPicture(const Difference& d) {
    const auto format = d.ours->formatHeader();
    return format.biWidth <= 0 || format.biHeight == 0 ||
           format.biHeight == std::numeric_limits<std::int32_t>::min();
}

bool oddSound(const Difference& d) {
    const auto format = orvantis::waveFormatFromBytes(d.ours->format);
    return format.wFormatTag == orvantis::kWaveFormatExtensible || format.nChannels == 0 ||
           format.nSamplesPerSec == 0 || format.nSamplesPerSec > kSigned;
}

bool hasOpenDml(const Difference& d) {
    return (*d.openDml)[d.ours->index] != OpenDml::kNone;
}

// An index that was refused, that claims more entries than it has, or has some that the file does not have.
bool damagedOpenDml(const Difference& d) {
    const auto claimsMore = [](const orvantis::StandardIndex& index) {
        return index.header.nEntriesInUse > index.entries;
    };
    const auto isBeyond = [&](const IndexEntry& entry) {
        return entry.offset > d.fileSize || d.fileSize - entry.offset < entry.size;
    };
    return hasOpenDml(d) &&
           (!d.ours->hasOpenDmlIndex || (*d.openDml)[d.ours->index] == OpenDml::kClaimsMore ||
            std::any_of(d.ours->standardIndexes.begin(), d.ours->standardIndexes.end(), claimsMore) ||
            std::any_of(d.ours->entries().begin(), d.ours->entries().end(), isBeyond));
}

// Any stream's, since the peer gives the entries to the stream that the index names.
bool misnamedOpenDml(const Difference& d) {
    return std::any_of(d.file->streams.begin(), d.file->streams.end(), [](const auto& stream) {
        return std::any_of(stream->standardIndexes.begin(), stream->standardIndexes.end(),
                           [&](const orvantis::StandardIndex& index) {
                               return (index.header.dwChunkId & 0xFFFFU) != (stream->chunkId & 0xFFFFU);
                           });
    });
}

bool openDmlOfOthers(const Difference& d) {
    return !hasOpenDml(d) && d.theirs->entries.empty() &&
           std::any_of(d.openDml->begin(), d.openDml->end(),
                       [](OpenDml other) { return other != OpenDml::kNone; });
}

// Entries that the peer does not keep: empty, far, behind the file's end, or at the place of another one, of
// whichever stream.
std::vector<bool> entriesLeftOut(const Difference& d) {
    std::multiset<std::uint64_t> places;
    for (const auto& stream : d.file->streams) {
        for (const IndexEntry& entry : stream->entries()) {
            places.insert(entry.offset);
        }
    }
    std::vector<bool> leftOut;
    for (const IndexEntry& entry : d.ours->entries()) {
        leftOut.push_back(entry.size == 0 || entry.offset > kSigned || entry.size > (kPeersSize >> 1) ||
                          entry.offset > d.fileSize || d.fileSize - entry.offset < entry.size ||
                          places.count(entry.offset) > 1);
    }
    return leftOut;
}

// What the peer has is ours by number and size, all of it shifted by one distance in the file. What it does
// not have may be left out, or is beyond the file when it is shifted, too. Its numbers begin at `start`.
bool areOursFrom(const Difference& d, std::int64_t start, std::vector<bool> leftOut) {
    const auto& ours = d.ours->entries();
    const auto count = static_cast<std::int64_t>(ours.size());
    std::int64_t next = 0;
    std::int64_t shift = 0;  // towards the file's end
    for (const PeerEntry& entry : d.theirs->entries) {
        const std::int64_t number = entry.frame - start;
        if (number < next || number >= count) {
            return false;
        }
        const orvantis::ChunkPlace place = ours.placeOf(static_cast<std::size_t>(number));
        const std::int64_t distance = entry.header + 8 - static_cast<std::int64_t>(place.offset);
        if (next == 0) {
            shift = distance;
            for (std::size_t i = 0; i < leftOut.size(); ++i) {
                const orvantis::ChunkPlace other = ours.placeOf(i);
                const std::uint64_t moved = other.offset + static_cast<std::uint64_t>(shift);
                leftOut[i] = leftOut[i] || moved > d.fileSize || d.fileSize - moved < other.size;
            }
        }
        if (distance != shift || ((place.size ^ static_cast<std::uint64_t>(entry.size)) & kPeersSize) != 0 ||
            !std::all_of(leftOut.begin() + next, leftOut.begin() + number, [](bool out) { return out; })) {
            return false;
        }
        next = number + 1;
    }
    return std::all_of(leftOut.begin() + next, leftOut.end(), [](bool out) { return out; });
}

bool fewerOrShifted(const Difference& d) {
    return areOursFrom(d, 0, entriesLeftOut(d));
}

bool startsLater(const Difference& d) {
    const auto start = std::int64_t{d.ours->header.dwStart};
    return start != 0 &&
           areOursFrom(d, start * std::max<std::int64_t>(1, d.ours->header.dwSampleSize), entriesLeftOut(d));
}

constexpr std::array kAllowed = {
    AllowedDifference{
        "refused by the peer", Compared::kAcceptance,
        "the peer refuses a file for a sample rate of 0 or beyond 31 bits, or a height that has no "
        "positive; the plug-in shows such a stream as a placeholder or leaves it to the codec",
        impossibleFormat},
    AllowedDifference{
        "odd rate", Compared::kRate,
        "a rate or scale of 0 or beyond 31 bits: the peer takes another from the main header, the "
        "plug-in keeps what the file says until the rate is sanitised",
        oddRate},
    AllowedDifference{"no picture", Compared::kPicture,
                      "width or height of 0 or less: the codec library is asked, not the header",
                      withoutPicture},
    AllowedDifference{"sound by its extension", Compared::kSound,
                      "the peer looks into the extension of a format and corrects rate and channels of 0",
                      oddSound},
    AllowedDifference{"later start", Compared::kEntries,
                      "dwStart other than 0: the peer counts frames from there", startsLater},
    AllowedDifference{
        "damaged OpenDML index", Compared::kEntries,
        "of an OpenDML index that names what is not there the plug-in takes nothing and goes by "
        "idx1, or what its chunk holds, the peer takes what it can, and what is behind the chunk",
        damagedOpenDml},
    AllowedDifference{"index of another stream", Compared::kEntries,
                      "the peer goes by the stream that a standard index names, the plug-in by whose it is",
                      misnamedOpenDml},
    AllowedDifference{"OpenDML index of other streams", Compared::kEntries,
                      "the peer reads no idx1 where any stream has an OpenDML index", openDmlOfOthers},
    AllowedDifference{"left out, or counted from elsewhere", Compared::kEntries,
                      "the peer leaves out entries that are empty, far, beyond the file or at the place of "
                      "another, where the "
                      "plug-in repeats a frame or says so when it is wanted; and it guesses from the first "
                      "entry what offsets "
                      "count from, the plug-in counts from movi as the format has it",
                      fewerOrShifted},
};

}  // namespace

std::span<const AllowedDifference> allowedDifferences() {
    return kAllowed;
}

}  // namespace fuzz
