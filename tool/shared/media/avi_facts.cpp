#include "tool/shared/media/avi_facts.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "avi/avi_reader.h"
#include "fileio/win_file.h"
#include "simhost/text.h"
#include "tool/shared/base/number_text.h"

namespace simhost::tool {
namespace {

using orvantis::IndexEntry;

constexpr std::uint64_t kChunkHeader = 8;

// Of a WAVEFORMATEX or its shorter predecessors, as far as there are bytes.
std::string soundFormat(const std::vector<std::uint8_t>& bytes) {
    constexpr std::uint32_t kPcm = 1;
    constexpr std::uint32_t kFloat = 3;
    constexpr std::uint32_t kExtensible = 0xFFFE;
    const auto number = [&bytes](std::size_t at, std::size_t size) {
        std::uint32_t out = 0;
        for (std::size_t i = 0; i < size && at + i < bytes.size(); ++i) {
            out |= std::uint32_t{bytes[at + i]} << (8 * i);
        }
        return out;
    };
    const std::uint32_t tag = number(0, 2) == kExtensible ? number(24, 2) : number(0, 2);
    char other[32];
    (void)std::snprintf(other, sizeof other, "format 0x%04X", tag);
    return std::string(tag == kPcm     ? "PCM"
                       : tag == kFloat ? "float"
                                       : other) +
           (tag == kPcm || tag == kFloat ? ", " + std::to_string(number(14, 2)) + " bits" : "") + ", " +
           std::to_string(number(2, 2)) + (number(2, 2) == 1 ? " channel, " : " channels, ") +
           std::to_string(number(4, 4)) + " Hz";
}

StreamFacts factsOf(const orvantis::AviStream& stream, std::uint64_t fileSize, const std::string& problems) {
    StreamFacts out;
    const orvantis::AviStreamHeader& header = stream.header;
    out.kind = header.fccType == orvantis::kStreamTypeVideo   ? StreamFacts::Kind::kVideo
               : header.fccType == orvantis::kStreamTypeAudio ? StreamFacts::Kind::kAudio
                                                              : StreamFacts::Kind::kOther;
    out.format = out.kind == StreamFacts::Kind::kVideo ? codeText(stream.formatHeader().biCompression, false)
                 : out.kind == StreamFacts::Kind::kAudio ? soundFormat(stream.format)
                                                         : "";
    out.rate = header.dwRate;
    out.scale = header.dwScale;
    out.sampleSize = header.dwSampleSize;
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
    std::uint64_t run = 0;
    for (const IndexEntry& entry : entries) {
        run = entry.size == 0 ? run + 1 : 0;
        out.emptyChunks += entry.size == 0 ? 1U : 0U;
        out.longestEmptyRun = std::max(out.longestEmptyRun, run);
        out.chunksPastEnd += entry.offset > fileSize || fileSize - entry.offset < entry.size ? 1U : 0U;
    }
    return out;
}

void findGaps(const orvantis::AviReader& reader, AviFacts& out) {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> chunks;  // begin, end
    for (const auto& stream : reader.streams) {
        for (const IndexEntry& entry : stream->entries()) {
            const std::uint64_t begin = entry.offset - std::min(entry.offset, kChunkHeader);
            chunks.emplace_back(begin, entry.offset + entry.size + entry.size % 2);
        }
    }
    std::sort(chunks.begin(), chunks.end());
    std::uint64_t end = chunks.empty() ? 0 : chunks.front().first;
    for (const auto& [begin, chunkEnd] : chunks) {
        if (begin > end && begin - end >= AviFacts::kLeastGap) {
            ++out.gapCount;
            if (out.gaps.size() < AviFacts::kMostGaps) {
                out.gaps.push_back({end, begin - end});
            }
        }
        end = std::max(end, chunkEnd);
    }
}

std::string nameOf(const StreamFacts& stream, std::size_t number) {
    const char* kind = stream.kind == StreamFacts::Kind::kVideo   ? "pictures"
                       : stream.kind == StreamFacts::Kind::kAudio ? "sound"
                                                                  : "other data";
    return "Stream " + std::to_string(number) + " (" + kind + ")";
}

void addIndexWarnings(const StreamFacts& stream, const std::string& name, std::vector<std::string>& out) {
    if (stream.index == IndexKind::kNone) {
        out.push_back(name +
                      " has no usable index, so nothing of it can be played. Recordings that were cut off "
                      "are like this; remuxing the file makes an index.");
    } else if (stream.openDmlRefused) {
        out.push_back(name +
                      ": its OpenDML index is damaged or of a kind that is not supported, so the older "
                      "index (idx1) is used. That one ends with the file's first part, at most 2 GiB.");
    }
    if (stream.chunksPastEnd > 0) {
        out.push_back(name + ": " + std::to_string(stream.chunksPastEnd) + " of " +
                      std::to_string(stream.chunks) +
                      " chunks lie behind the end of the file: it was cut off, and they cannot be read.");
    }
    if (stream.index != IndexKind::kNone && stream.declaredLength != stream.length()) {
        const char* unit = stream.kind == StreamFacts::Kind::kVideo ? "frames" : "sample frames";
        out.push_back(name + ": the header tells " + std::to_string(stream.declaredLength) + " " + unit +
                      ", the index holds " + std::to_string(stream.length()) + "; the index is what counts.");
    }
}

void addEmptyFrameWarning(const StreamFacts& video, std::vector<std::string>& out) {
    if (video.emptyChunks > 0) {
        out.push_back(std::to_string(video.emptyChunks) + " of " + std::to_string(video.chunks) +
                      " frames hold no data (at most " + std::to_string(video.longestEmptyRun) +
                      " in a row); each shows the picture before it.");
    }
}

// Sound against pictures, where both have any length.
void addLengthWarnings(const AviFacts& facts, const StreamFacts& video, std::vector<std::string>& out) {
    constexpr double kSameLength = 0.1;
    const double pictures = video.seconds();
    for (std::size_t i = 0; i < facts.streams.size(); ++i) {
        const StreamFacts& stream = facts.streams[i];
        const double sound = stream.seconds();
        if (stream.kind == StreamFacts::Kind::kAudio && pictures > 0 && sound > 0 &&
            std::abs(sound - pictures) > kSameLength) {
            out.push_back("The pictures last " + decimalText(pictures, 3) + " s, the sound of stream " +
                          std::to_string(i) + " " + decimalText(sound, 3) +
                          " s; where one is shorter, there is " +
                          (sound < pictures ? "silence." : "no picture."));
        }
    }
}

}  // namespace

std::uint64_t StreamFacts::length() const noexcept {
    return kind == Kind::kVideo ? chunks : sampleSize > 0 ? bytes / sampleSize : declaredLength;
}

double StreamFacts::seconds() const noexcept {
    return rate == 0 || index == IndexKind::kNone
               ? 0.0
               : static_cast<double>(length()) * static_cast<double>(scale) / static_cast<double>(rate);
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
    for (const auto& stream : reader.streams) {
        out.streams.push_back(factsOf(*stream, out.fileSize, out.problems));
    }
    const auto videos = reader.streamsOfType(orvantis::kStreamTypeVideo);
    if (!videos.empty()) {
        for (const IndexEntry& entry : reader.streams[videos.front()]->entries()) {
            out.frameSizes.push_back(entry.size);
        }
    }
    findGaps(reader, out);
    return out;
}

std::vector<std::string> aviWarnings(const AviFacts& facts) {
    std::vector<std::string> out;
    if (!facts.usable) {
        out.push_back("The file is no AVI file that can be used: " + facts.problems);
        return out;
    }
    const StreamFacts* video = nullptr;
    for (std::size_t i = 0; i < facts.streams.size(); ++i) {
        const StreamFacts& stream = facts.streams[i];
        const std::string name = nameOf(stream, i);
        if (stream.kind == StreamFacts::Kind::kOther) {
            out.push_back(name + " is neither pictures nor sound and is not used.");
        } else if (stream.kind == StreamFacts::Kind::kVideo && video != nullptr) {
            out.push_back(name + " is a further video stream; only the first one is played.");
        } else {
            addIndexWarnings(stream, name, out);
            if (stream.kind == StreamFacts::Kind::kVideo) {
                video = &stream;
                addEmptyFrameWarning(stream, out);
            }
        }
    }
    if (video != nullptr) {
        addLengthWarnings(facts, *video, out);
    }
    if (facts.gapCount > 0) {
        out.push_back("The indexes leave out " +
                      (facts.gapCount == 1 ? "a stretch" : std::to_string(facts.gapCount) + " stretches") +
                      " of the file of 64 KiB or more: lost data, or data of no stream.");
    }
    if (!facts.problems.empty()) {
        out.push_back("What the reader says: " + facts.problems);
    }
    return out;
}

}  // namespace simhost::tool
