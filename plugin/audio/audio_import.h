// Delivery of sample frames: from a range of bytes of the stream to those of its chunks, and from those to
// the host's float buffers. Any thread; the caller's buffers belong to one call at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "audio/audio_owner.h"
#include "host/result_codes.h"

namespace orvantis {

class AviStream;

/// Reads up to `sizeBytes` bytes of the stream from its byte `startBytes` on, chunk by chunk, each with the
/// file's position to itself. Returns how many came; fewer at the end of the stream or after a failure, which
/// is logged.
[[nodiscard]] std::uint64_t readAudioBytes(const AudioOwner& owner, const AviStream& stream,
                                           std::uint64_t startBytes, std::byte* buffer,
                                           std::uint64_t sizeBytes);

/// Interleaved samples as the file has them.
struct AudioSamples {
    std::span<std::byte> bytes;  ///< with an address also when there are none; overwritten on the way
    std::uint32_t type;          ///< host sample-type code
    std::uint32_t channels;      ///< at most kMaxAudioChannels
    std::uint32_t blockAlign;    ///< bytes of one sample frame
};

/// Writes the samples to the host's `buffers`, one a channel, each with room for `size` floats; what the
/// samples do not fill is silence. A null buffer, or none at all, is left out. imNoErr, or
/// imDecompressionError for a sample type that cannot be converted; throws std::runtime_error when the audio
/// suite is needed and refused.
host::ImporterResult deliverAudio(const AudioSamples& samples, LazyImporterSuites& suites, float** buffers,
                                  std::uint32_t size);

}  // namespace orvantis
