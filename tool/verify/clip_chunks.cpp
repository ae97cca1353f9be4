#include "tool/verify/clip_chunks.h"

#include <algorithm>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "fileio/win_file.h"

namespace simhost::tool {
namespace {

constexpr std::uint32_t kBlockSamples = 1024;

bool isInside(const orvantis::IndexEntry& entry, std::uint64_t fileSize) {
    return entry.offset <= fileSize && fileSize - entry.offset >= entry.size;
}

void addPictures(const orvantis::AviStream& stream, std::uint64_t fileSize, ClipChunks& out) {
    out.declaredPictures = stream.header.dwLength;
    out.rate = stream.header.dwRate;
    out.scale = stream.header.dwScale;
    out.pictures.reserve(stream.entries().size());
    for (const orvantis::IndexEntry& entry : stream.entries()) {
        out.pictures.push_back(entry.size == 0             ? ChunkState::kRepeated
                               : isInside(entry, fileSize) ? ChunkState::kThere
                                                           : ChunkState::kMissing);
    }
}

// Bytes of a sample frame: nBlockAlign of the format.
std::uint32_t frameBytesOf(const orvantis::AviStream& stream) {
    constexpr std::size_t kBlockAlign = 12;
    return stream.format.size() < kBlockAlign + 2
               ? 0
               : stream.format[kBlockAlign] + 256U * stream.format[kBlockAlign + 1];
}

SoundChunks soundOf(const orvantis::AviStream& stream, std::uint64_t fileSize) {
    SoundChunks out;
    out.declared = stream.header.dwLength;
    const std::uint32_t frameBytes = frameBytesOf(stream);
    if (frameBytes == 0) {
        return out;
    }
    for (const orvantis::IndexEntry& entry : stream.entries()) {
        // A sound of one byte a sample frame is read chunk by chunk; so is one of an index that names more
        // than the file holds, the same bytes again and again: its blocks would be without number.
        const bool whole = frameBytes == 1 || entry.start + entry.size > fileSize;
        const std::uint64_t most = whole ? UINT32_MAX : kBlockSamples;
        const std::uint64_t end = (entry.start + entry.size) / frameBytes;
        const ChunkState state = isInside(entry, fileSize) ? ChunkState::kThere : ChunkState::kMissing;
        for (std::uint64_t at = entry.start / frameBytes; at < end;) {
            const auto count = static_cast<std::uint32_t>(std::min(most, end - at));
            out.blocks.push_back({at, count, state});
            at += count;
            if (state == ChunkState::kMissing && at < end) {
                // A damaged index may claim any size: one block for the rest of what there is not.
                out.blocks.back().count = static_cast<std::uint32_t>(
                    std::min<std::uint64_t>(UINT32_MAX, end - out.blocks.back().first));
                break;
            }
        }
        out.sampleFrames = end;
    }
    return out;
}

}  // namespace

std::optional<ClipChunks> readClipChunks(const std::string& pathUtf8) {
    fileio::WinFile file;
    orvantis::AviReader reader;
    if (!file.open(pathUtf8.c_str(), fileio::kOpenRead | fileio::kOpenShareRead) ||
        !reader.parse(file, false)) {
        return std::nullopt;
    }
    const auto fileSize = static_cast<std::uint64_t>(std::max<std::int64_t>(file.size(), 0));
    ClipChunks out;
    const auto pictures = reader.streamsOfType(orvantis::kStreamTypeVideo);
    if (!pictures.empty()) {
        addPictures(*reader.streams[pictures.front()], fileSize, out);
    }
    for (const std::size_t sound : reader.streamsOfType(orvantis::kStreamTypeAudio)) {
        out.sounds.push_back(soundOf(*reader.streams[sound], fileSize));
    }
    return out;
}

}  // namespace simhost::tool
