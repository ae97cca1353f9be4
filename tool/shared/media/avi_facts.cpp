#include "tool/shared/media/avi_facts.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "fileio/win_file.h"
#include "simhost/text.h"
#include "tool/shared/media/unindexed_chunks.h"

namespace simhost::tool {
namespace {

using orvantis::IndexEntry;

constexpr std::uint64_t kChunkHeader = 8;

// A WAVEFORMATEX or its shorter predecessors, as far as there are bytes.
struct SoundFormat {
    static constexpr std::uint32_t kPcm = 1;
    static constexpr std::uint32_t kFloat = 3;

    explicit SoundFormat(const std::vector<std::uint8_t>& bytes) {
        constexpr std::uint32_t kExtensible = 0xFFFE;
        const auto number = [&bytes](std::size_t at, std::size_t size) {
            std::uint32_t out = 0;
            for (std::size_t i = 0; i < size && at + i < bytes.size(); ++i) {
                out |= std::uint32_t{bytes[at + i]} << (8 * i);
            }
            return out;
        };
        tag = number(0, 2) == kExtensible ? number(24, 2) : number(0, 2);
        channels = number(2, 2);
        rate = number(4, 4);
        frameBytes = number(12, 2);
        bits = number(14, 2);
    }

    bool isUncompressed() const { return tag == kPcm || tag == kFloat; }
    std::string text() const {
        char other[32];
        (void)std::snprintf(other, sizeof other, "format 0x%04X", tag);
        return std::string(tag == kPcm     ? "PCM"
                           : tag == kFloat ? "float"
                                           : other) +
               (isUncompressed() ? ", " + std::to_string(bits) + " bits" : "") + ", " +
               std::to_string(channels) + (channels == 1 ? " channel, " : " channels, ") +
               std::to_string(rate) + " Hz";
    }

    std::uint32_t tag;
    std::uint32_t channels;
    std::uint32_t rate;
    std::uint32_t frameBytes;
    std::uint32_t bits;
};

StreamFacts factsOf(const orvantis::AviStream& stream, const IndexProbe& probe, std::uint64_t fileSize,
                    const std::string& problems) {
    StreamFacts out;
    const orvantis::AviStreamHeader& header = stream.header;
    out.kind = header.fccType == orvantis::kStreamTypeVideo   ? StreamFacts::Kind::kVideo
               : header.fccType == orvantis::kStreamTypeAudio ? StreamFacts::Kind::kAudio
                                                              : StreamFacts::Kind::kOther;
    if (out.kind == StreamFacts::Kind::kVideo) {
        out.format = codeText(stream.formatHeader().biCompression, false);
        out.width = stream.formatHeader().biWidth;
        out.height = stream.formatHeader().biHeight;
    } else if (out.kind == StreamFacts::Kind::kAudio) {
        const SoundFormat format(stream.format);
        out.format = format.text();
        out.frameBytes = format.isUncompressed() ? format.frameBytes : 0;
        out.samplesPerSecond = format.isUncompressed() ? format.rate : 0;
        out.channels = format.isUncompressed() ? format.channels : 0;
    }
    out.rate = header.dwRate;
    out.scale = header.dwScale;
    out.declaredLength = header.dwLength;
    const orvantis::ChunkList& entries = stream.entries();
    out.index = entries.empty()          ? IndexKind::kNone
                : stream.hasOpenDmlIndex ? IndexKind::kOpenDml
                                         : IndexKind::kLegacy;
    // An index that fails before its entries are known leaves a line of the reader only.
    const std::string mark = "readIndex: stream[" + std::to_string(stream.index) + "]";
    out.openDmlRefused =
        !stream.hasOpenDmlIndex && (!stream.superIndex.empty() || problems.find(mark) != std::string::npos);
    out.chunks = entries.size();
    out.bytes = stream.totalBytes();
    out.base = probe.base;
    std::uint64_t run = 0;
    for (const IndexEntry& entry : entries) {
        run = entry.size == 0 ? run + 1 : 0;
        out.emptyChunks += entry.size == 0 ? 1U : 0U;
        out.longestEmptyRun = std::max(out.longestEmptyRun, run);
        const std::uint64_t data = probe.positionOf(entry);
        const bool inside = data <= fileSize && fileSize - data >= entry.size;
        out.chunksPastEnd += inside ? 0U : 1U;
        out.bytesInFile += inside ? entry.size : 0U;
    }
    // Many entries may name one chunk.
    out.bytesInFile = std::min(out.bytesInFile, fileSize);
    return out;
}

// Where idx1 counts from; nothing without that list.
std::optional<std::uint64_t> moviOffset(const orvantis::AviReader& reader) {
    if (reader.chunks.empty()) {
        return std::nullopt;
    }
    const orvantis::RiffChunk* movi =
        orvantis::findList(reader.chunks.front().children, orvantis::riffCode("movi"));
    return movi == nullptr ? std::nullopt : std::optional(movi->offset);
}

void addChunks(const orvantis::AviStream& stream, const IndexProbe& probe,
               std::vector<std::pair<std::uint64_t, std::uint64_t>>& out) {
    for (const IndexEntry& entry : stream.entries()) {
        const std::uint64_t data = probe.positionOf(entry);
        out.emplace_back(data - std::min(data, kChunkHeader), data + entry.size + entry.size % 2);
    }
}

}  // namespace

std::uint64_t StreamFacts::heldLength() const noexcept {
    return kind == Kind::kVideo ? chunks : frameBytes > 0 ? bytes / frameBytes : 0;
}

double StreamFacts::seconds() const noexcept {
    if (index == IndexKind::kNone) {
        return 0.0;
    }
    if (kind == Kind::kVideo) {
        return rate == 0 ? 0.0 : static_cast<double>(chunks) * scale / rate;
    }
    const std::uint64_t played = std::min<std::uint64_t>(declaredLength, heldLength());
    return samplesPerSecond == 0 ? 0.0 : static_cast<double>(played) / samplesPerSecond;
}

std::optional<AviFacts> readAviFacts(const std::string& pathUtf8) {
    fileio::WinFile file;
    if (!file.open(pathUtf8.c_str(), fileio::kOpenRead | fileio::kOpenShareRead)) {
        return std::nullopt;
    }
    AviFacts out;
    out.fileSize = static_cast<std::uint64_t>(std::max<std::int64_t>(file.size(), 0));
    orvantis::AviReader reader;
    out.usable = reader.parse(file, false);
    out.problems = reader.errorText();
    if (!out.usable) {
        return out;
    }
    const std::optional<std::uint64_t> movi = moviOffset(reader);
    std::vector<std::pair<std::uint64_t, std::uint64_t>> chunks;
    for (const auto& stream : reader.streams) {
        const IndexProbe probe =
            probeIndex(file, stream->entries(), stream->hasOpenDmlIndex ? std::nullopt : movi);
        out.streams.push_back(factsOf(*stream, probe, out.fileSize, out.problems));
        addChunks(*stream, probe, chunks);
    }
    const auto videos = reader.streamsOfType(orvantis::kStreamTypeVideo);
    if (!videos.empty()) {
        for (const IndexEntry& entry : reader.streams[videos.front()]->entries()) {
            out.frameSizes.push_back(entry.size);
        }
    }
    constexpr std::uint64_t kListHeader = 12;
    out.unindexedChunks = countUnindexedChunks(
        file, chunks, movi ? std::optional(*movi + kListHeader) : std::nullopt, reader.streams.size());
    out.gaps = findGaps(file, std::move(chunks));
    out.gapCount = out.gaps.size();
    out.gaps.resize(std::min(out.gaps.size(), AviFacts::kMostGaps));
    return out;
}

}  // namespace simhost::tool
