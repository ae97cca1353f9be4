// Reads the input by the plug-in's reader and by libavformat: on a plain file both have to see the same
// streams and the same chunks, but for what allowed_differences.cpp lists. Needs libavformat.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <vector>

#include "audio/wave_format.h"
#include "avi/avi_reader.h"
#include "avi/four_char_code.h"
#include "tests/fuzz/allowed_differences.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/fuzz/peer_avi.h"
#include "tests/fuzz/plain_avi.h"
#include "tests/support/memory_file.h"

namespace {

using fuzz::Compared;
using fuzz::Difference;
using fuzz::OpenDml;
using fuzz::PeerStream;
using orvantis::AviReader;
using orvantis::AviStream;

void settle(const Difference& difference, const char* what) {
    for (const fuzz::AllowedDifference& allowed : fuzz::allowedDifferences()) {
        if (allowed.what == difference.what && allowed.applies(difference)) {
            return;
        }
    }
    std::fprintf(stderr, "a difference that no row allows: %s\n", what);
    if (difference.ours != nullptr) {
        std::fprintf(stderr, "stream %d: %zu entries here, %zu there\n",
                     static_cast<int>(difference.ours->index), difference.ours->entries().size(),
                     difference.theirs->entries.size());
        for (const orvantis::IndexEntry& entry : difference.ours->entries()) {
            std::fprintf(stderr, "here %llu bytes at %llu\n", static_cast<unsigned long long>(entry.size),
                         static_cast<unsigned long long>(entry.offset));
        }
        for (const fuzz::PeerEntry& entry : difference.theirs->entries) {
            std::fprintf(stderr, "there %lld, %lld bytes behind %lld\n", static_cast<long long>(entry.frame),
                         static_cast<long long>(entry.size), static_cast<long long>(entry.header));
        }
    }
    std::abort();
}

bool sameKind(const AviStream& ours, const PeerStream& theirs) {
    const bool video = ours.header.fccType == orvantis::kStreamTypeVideo;
    return theirs.kind == (video ? PeerStream::Kind::kVideo : PeerStream::Kind::kAudio);
}

bool sameRate(const AviStream& ours, const PeerStream& theirs) {
    return std::uint64_t{ours.header.dwRate} * static_cast<std::uint64_t>(theirs.scale) ==
           std::uint64_t{ours.header.dwScale} * static_cast<std::uint64_t>(theirs.rate);
}

bool samePicture(const AviStream& ours, const PeerStream& theirs) {
    const auto format = ours.formatHeader();
    const int height = format.biHeight < 0 ? -format.biHeight : format.biHeight;
    return format.biCompression == theirs.tag && format.biWidth == theirs.width && height == theirs.height;
}

bool sameSound(const AviStream& ours, const PeerStream& theirs) {
    const auto format = orvantis::waveFormatFromBytes(ours.format);
    return format.nChannels == theirs.channels &&
           static_cast<int>(format.nSamplesPerSec) == theirs.samplesPerSecond;
}

// Each frame of the one is the same chunk in the other.
bool sameEntries(const AviStream& ours, const PeerStream& theirs) {
    if (ours.entries().size() != theirs.entries.size()) {
        return false;
    }
    for (std::size_t i = 0; i < theirs.entries.size(); ++i) {
        const orvantis::ChunkPlace place = ours.entries().placeOf(i);
        const fuzz::PeerEntry& entry = theirs.entries[i];
        if (entry.frame != static_cast<std::int64_t>(i) ||
            static_cast<std::uint64_t>(entry.header) + 8 != place.offset ||
            static_cast<std::uint64_t>(entry.size) != place.size) {
            return false;
        }
    }
    return true;
}

OpenDml openDmlOf(const fuzz::ChunkNode& strl) {
    for (const fuzz::ChunkNode& node : strl.children) {
        if (node.id == orvantis::riffCode("indx")) {
            const std::uint64_t room = node.data.size() < 24 ? 0 : (node.data.size() - 24) / 16;
            const bool superIndex = node.data.size() < 4 || node.data[3] == orvantis::kIndexOfIndexes;
            return superIndex && fuzz::numberAt(node.data, 4, 4) > room ? OpenDml::kClaimsMore
                                                                        : OpenDml::kWhole;
        }
    }
    return OpenDml::kNone;
}

// Of each stream list of a plain file, in their order.
std::vector<OpenDml> openDmlOfStreams(const fuzz::ChunkTree& tree) {
    std::vector<OpenDml> found;
    for (const fuzz::ChunkNode& hdrl : tree.root.children.front().children) {
        for (const fuzz::ChunkNode& node : hdrl.children) {
            if (hdrl.type == orvantis::riffCode("hdrl") && node.type == orvantis::riffCode("strl")) {
                found.push_back(openDmlOf(node));
            }
        }
    }
    return found;
}

void compare(const AviReader& file, const AviStream& ours, const PeerStream& theirs, std::uint64_t fileSize,
             const std::vector<OpenDml>& openDml) {
    const auto demand = [&](bool same, Compared what, const char* name) {
        if (!same) {
            settle({what, &file, &ours, &theirs, fileSize, &openDml}, name);
        }
    };
    demand(sameKind(ours, theirs), Compared::kKind, "kind of a stream");
    if (!sameKind(ours, theirs)) {
        return;
    }
    if (theirs.kind == PeerStream::Kind::kVideo) {
        demand(sameRate(ours, theirs), Compared::kRate, "rate of a video");
        demand(samePicture(ours, theirs), Compared::kPicture, "picture of a video");
        demand(sameEntries(ours, theirs), Compared::kEntries, "index of a video");
    } else {
        demand(sameSound(ours, theirs), Compared::kSound, "format of a sound");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> input(data, size);
    const fuzz::ChunkTree tree = fuzz::readTree(input);
    if (!fuzz::isPlain(tree)) {
        return 0;
    }
    orvantis::test::MemoryFile file(input);
    AviReader reader;
    const bool usable = reader.parse(file, false);
    FUZZ_CHECK(usable);  // a plain file is usable
    const auto peer = fuzz::readAsPeer(input);
    if (!peer) {
        settle({Compared::kAcceptance, &reader, nullptr, nullptr, size, nullptr},
               "the peer refuses the file");
        return 0;
    }
    if (peer->size() != reader.streams.size()) {
        settle({Compared::kStreamCount, &reader, nullptr, nullptr, size, nullptr}, "number of streams");
        return 0;
    }
    const std::vector<OpenDml> openDml = openDmlOfStreams(tree);
    FUZZ_CHECK(openDml.size() == peer->size());
    for (std::size_t i = 0; i < peer->size(); ++i) {
        compare(reader, *reader.streams[i], (*peer)[i], size, openDml);
    }
    return 0;
}
