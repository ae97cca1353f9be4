#include "avi/audio_chunk.h"

#include "avi/chunk_arithmetic.h"

namespace orvantis {

AudioChunkPart audioChunkPart(const IndexEntry& chunk, std::uint64_t offset, std::uint64_t wanted) noexcept {
    return {static_cast<std::int64_t>(chunk.offset + offset), partOfChunk(chunk.size, offset, wanted)};
}

AudioChunkRead readAudioChunk(fileio::File& file, const AudioChunkPart& part, std::byte* dest) {
    using Outcome = AudioChunkRead::Outcome;
    if (!file.seek(part.filePosition)) {
        return {Outcome::kSeekRefused, 0};
    }
    const std::uint64_t got = file.read(dest, part.bytes);
    return {got < part.bytes ? Outcome::kCutShort : Outcome::kRead, got};
}

}  // namespace orvantis
