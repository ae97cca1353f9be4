#include "tests/fuzz/allowed_differences.h"

#include <algorithm>
#include <array>
#include <limits>
#include <set>

#include "audio/wave_format.h"
#include "avi/avi_structs.h"

namespace fuzz {

namespace {

using orvantis::AviStream;
using orvantis::IndexEntry;

constexpr std::uint32_t kSigned = 0x7FFFFFFF;

bool anyFile(const Difference&) {
    return true;
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

bool hasSampleSize(const Difference& d) {
    return d.ours->header.dwSampleSize != 0;
}

bool startsLater(const Difference& d) {
    return d.ours->header.dwStart != 0;
}

bool incompleteOpenDml(const Difference& d) {
    return !d.ours->superIndex.empty() || !d.ours->standardIndexes.empty();
}

// Places that a file of a test cannot have, or that two entries share.
bool oddEntries(const Difference& d) {
    std::set<std::uint64_t> places;
    return std::any_of(d.ours->entries().begin(), d.ours->entries().end(), [&](const IndexEntry& entry) {
        return entry.size == 0 || entry.offset > kSigned || entry.size > (kSigned >> 1) ||
               !places.insert(entry.offset).second;
    });
}

// Chunks that the file does not have: the peer asks where they are when it reads the index, the plug-in when
// a frame is wanted.
bool beyondTheFile(const Difference& d) {
    return std::any_of(d.ours->entries().begin(), d.ours->entries().end(), [&](const IndexEntry& entry) {
        return entry.offset > d.fileSize || d.fileSize - entry.offset < entry.size;
    });
}

// The same chunks in the same order, all of them shifted by one distance.
bool shiftedEntries(const Difference& d) {
    if (d.ours->entries().size() != d.theirs->entries.size() || d.theirs->entries.empty()) {
        return false;
    }
    const auto shiftAt = [&](std::size_t i) {
        return d.ours->entries().placeOf(i).offset - static_cast<std::uint64_t>(d.theirs->entries[i].header);
    };
    for (std::size_t i = 0; i < d.theirs->entries.size(); ++i) {
        if (d.ours->entries().placeOf(i).size != static_cast<std::uint64_t>(d.theirs->entries[i].size) ||
            shiftAt(i) != shiftAt(0)) {
            return false;
        }
    }
    return true;
}

constexpr std::array kAllowed = {
    AllowedDifference{"refused by the peer", Compared::kAcceptance,
                      "the peer refuses a file for formats or rates that the plug-in shows as a placeholder",
                      anyFile},
    AllowedDifference{
        "odd rate", Compared::kRate,
        "a rate or scale of 0 or beyond 31 bits: the peer takes another from the main header, the "
        "plug-in keeps what the file says until the rate is sanitised",
        oddRate},
    AllowedDifference{"sizes as stored", Compared::kRate,
                      "a stream with a sample size: the peer counts bytes instead of frames", hasSampleSize},
    AllowedDifference{"no picture", Compared::kPicture,
                      "width or height of 0 or less: the codec library is asked, not the header",
                      withoutPicture},
    AllowedDifference{"sound by its extension", Compared::kSound,
                      "the peer looks into the extension of a format and corrects rate and channels of 0",
                      oddSound},
    AllowedDifference{"chunks as bytes", Compared::kEntries,
                      "a video stream with a sample size: the peer's timestamps are no frame numbers",
                      hasSampleSize},
    AllowedDifference{"later start", Compared::kEntries,
                      "dwStart other than 0: the peer counts frames from there", startsLater},
    AllowedDifference{
        "damaged OpenDML index", Compared::kEntries,
        "of an OpenDML index that names what is not there the plug-in takes nothing and goes by "
        "idx1, the peer takes what it can",
        incompleteOpenDml},
    AllowedDifference{"offsets from the file's start", Compared::kEntries,
                      "idx1 with offsets that count from elsewhere: the peer guesses from the first one, the "
                      "plug-in counts from movi as the format has it",
                      shiftedEntries},
    AllowedDifference{
        "entries beyond the file", Compared::kEntries,
        "the peer guesses what the offsets count from, the plug-in reads the index as it stands "
        "and says so when the frame is wanted",
        beyondTheFile},
    AllowedDifference{"empty, repeated or far entries", Compared::kEntries,
                      "the peer leaves out empty chunks and those at the place of another, and guesses what "
                      "offsets count from; the plug-in shows a repeated frame and reads what the index says",
                      oddEntries},
};

}  // namespace

std::span<const AllowedDifference> allowedDifferences() {
    return kAllowed;
}

}  // namespace fuzz
