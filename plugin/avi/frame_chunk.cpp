#include "avi/frame_chunk.h"

#include <algorithm>
#include <exception>
#include <stdexcept>

#include "avi/avi_stream.h"
#include "avi/chunk_arithmetic.h"
#include "fileio/error.h"

namespace orvantis {

namespace {

// The index may claim any size: a buffer that would have to grow for it grows only if the file has the bytes.
// Asked no more than once for each size reached, so that steady playback costs one seek and one read a frame.
void checkClaim(fileio::File& file, const ChunkPlace& chunk) {
    const auto fileSize = static_cast<std::uint64_t>(std::max<std::int64_t>(file.size(), 0));
    const std::uint64_t left = bytesBehind(chunk.offset, fileSize);
    if (left < chunk.size) {
        throw fileio::ReadError(chunk.size, left);
    }
}

// Why a read failed. Without memory for the whole text that is what there is to say, in few enough characters
// to need none.
std::string reasonOf(const std::exception& error) noexcept {
    try {
        return error.what();
    } catch (const std::exception&) {
        return "out of memory";
    }
}

}  // namespace

FrameChunkRead readFrameChunk(fileio::File& file, const AviStream& stream, std::uint64_t frameNumber,
                              std::int64_t frameCount, FrameChunk& chunk) {
    using Outcome = FrameChunkRead::Outcome;
    const ChunkList& list = stream.entries();
    if (frameNumber >= list.size()) {
        throw std::out_of_range("readFrameChunk");
    }
    FrameChunkRead result;
    ChunkPlace place = list.placeOf(static_cast<std::size_t>(frameNumber));
    if (place.size == 0) {
        const std::int64_t nearest = stream.nearestWithData(frameNumber, frameCount);
        if (nearest < 0) {
            result.outcome = Outcome::kNoneWithData;
            return result;
        }
        result.substitute = static_cast<std::uint64_t>(nearest);
        place = list.placeOf(static_cast<std::size_t>(nearest));
    }
    try {
        file.seekTo(static_cast<std::int64_t>(place.offset));
        if (place.size > chunk.buffer.capacity()) {
            checkClaim(file, place);
        }
        file.readExact(chunk.buffer.ensure(place.size), place.size);
        chunk.bytes = place.size;
    } catch (const std::exception& error) {
        result.outcome = Outcome::kFailed;
        result.failure = reasonOf(error);
    }
    return result;
}

}  // namespace orvantis
