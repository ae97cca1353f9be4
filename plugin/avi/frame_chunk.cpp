#include "avi/frame_chunk.h"

#include <algorithm>
#include <exception>

#include "diag/log.h"
#include "fileio/error.h"

namespace orvantis {

namespace {

// The index may claim any size: a buffer that would have to grow for it grows only if the file has the bytes.
// Asked no more than once for each size reached, so that steady playback costs one seek and one read a frame.
void checkClaim(fileio::File& file, const IndexEntry& entry) {
    const auto fileSize = static_cast<std::uint64_t>(std::max<std::int64_t>(file.size(), 0));
    const std::uint64_t left = entry.offset < fileSize ? fileSize - entry.offset : 0;
    if (left < entry.size) throw fileio::ReadError(entry.size, left);
}

}  // namespace

std::int32_t readFrameChunk(fileio::File& file, const AviStream& stream, std::uint64_t frameNumber,
                            std::int64_t frameCount, FrameChunk& chunk) {
    const std::vector<IndexEntry>& list = stream.entries();
    const IndexEntry* entry = &list.at(static_cast<std::size_t>(frameNumber));
    if (entry->size == 0) {
        const std::int64_t nearest = stream.nearestWithData(frameNumber, frameCount);
        if (nearest < 0) return host::imFrameNotFound;
        logMessage("Empty frame: %u, frame read: %u", static_cast<unsigned>(frameNumber),
                   static_cast<unsigned>(nearest));
        entry = &list[static_cast<std::size_t>(nearest)];
    }
    try {
        file.seekTo(static_cast<std::int64_t>(entry->offset));
        if (entry->size > chunk.buffer.capacity()) checkClaim(file, *entry);
        file.readExact(chunk.buffer.ensure(entry->size), entry->size);
        chunk.bytes = entry->size;
        return host::imNoErr;
    } catch (const std::exception& error) {
        logMessage("Failed to read frame from AVI: %s", error.what());
        return host::imFileReadFailed;
    }
}

}  // namespace orvantis
