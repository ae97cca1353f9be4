// Delivery of sample frames: from a range of frames to bytes of the stream's chunks, and from those to the
// host's float buffers. Whatever cannot be read is silence.

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "audio/audio_info.h"
#include "audio/channel_layout.h"
#include "audio/deinterleave.h"
#include "avi/audio_chunk.h"
#include "diag/log.h"
#include "host/audio_codes.h"
#include "host/result_codes.h"

namespace orvantis {

namespace {

using IntegerConverter = host::prSuiteError (*)(const void* source, float** destination,
                                                std::uint32_t channels, std::uint32_t frames);

/// One seek and one read, with the file's position to itself. Returns how many bytes came; a failure is
/// logged.
std::uint64_t readPart(const AudioOwner& owner, const AudioChunkPart& part, std::byte* buffer) {
    fileio::File& file = *owner.file;
    const std::lock_guard lock(*owner.filePosition);
    const AudioChunkRead read = readAudioChunk(file, part, buffer);
    switch (read.outcome) {
        case AudioChunkRead::Outcome::read:
            break;
        case AudioChunkRead::Outcome::seekRefused:
            if (logEnabled()) {
                logMessage("importAudio: seek error: %lld, pos: %lld",
                           static_cast<long long>(part.filePosition), static_cast<long long>(file.tell()));
            }
            break;
        case AudioChunkRead::Outcome::cutShort:
            logMessage("importAudio: read error: %lld, read: %lld", static_cast<long long>(part.bytes),
                       static_cast<long long>(read.bytes));
            break;
    }
    return read.bytes;
}

/// Reads up to `sizeBytes` bytes of the stream from its byte `startBytes` on, chunk by chunk. Returns how
/// many came; fewer at the end of the stream or after a failure.
std::uint64_t readStream(const AudioOwner& owner, const AviStream& stream, std::uint64_t startBytes,
                         std::byte* buffer, std::uint64_t sizeBytes) {
    if (sizeBytes == 0) return 0;
    ChunkList::Iterator chunk = stream.findByPosition(startBytes);
    const ChunkList::Iterator end = stream.entries().end();
    if (chunk == end) return 0;

    const bool logging = logEnabled();
    std::uint64_t done = 0;
    std::uint64_t offsetInChunk = startBytes - (*chunk).start;
    while (chunk != end && done < sizeBytes) {
        const std::uint64_t streamPos = startBytes + done;
        const AudioChunkPart part = audioChunkPart(*chunk, offsetInChunk, sizeBytes - done);
        if (logging) {
            logMessage("reading : %lld, %lld, %lld", static_cast<long long>(streamPos),
                       static_cast<long long>(part.filePosition), static_cast<long long>(part.bytes));
        }
        if (part.bytes != 0) {
            const std::uint64_t got = readPart(owner, part, buffer + done);
            done += got;
            if (got < part.bytes) break;
        }
        // A damaged index can hold millions of empty chunks in a row. They are gone through for the log only.
        if (part.bytes == 0 && !logging) {
            chunk = stream.findByPosition(startBytes + done);
        } else {
            ++chunk;
        }
        offsetInChunk = 0;
    }
    return done;
}

/// WAVE samples of 8 bits are unsigned around 128; the host's converter takes signed ones.
void makeSigned(std::byte* samples, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i)
        samples[i] ^= std::byte{0x80};  // the same as adding 128 modulo 256
}

/// The host's converter for samples of this kind, or null.
IntegerConverter integerConverter(const host::AudioSuite& suite, std::uint32_t sampleType) noexcept {
    switch (sampleType) {
        case host::kPrAudioSampleType_8BitInt:
            return suite.UninterleaveAndConvertFrom8BitInteger;
        case host::kPrAudioSampleType_16BitInt:
            return suite.UninterleaveAndConvertFrom16BitInteger;
        case host::kPrAudioSampleType_24BitInt:
            return suite.UninterleaveAndConvertFrom24BitInteger;
        case host::kPrAudioSampleType_32BitInt:
            return suite.UninterleaveAndConvertFrom32BitInteger;
        default:
            return nullptr;
    }
}

/// Calls the host's converter, for no frames too. Its result says nothing that the importer could act on. The
/// converter writes every channel, so one that the host gave no buffer for is given a small one of ours, and
/// the samples go block by block.
void convertIntegers(IntegerConverter convert, const std::byte* source, float** buffers,
                     std::uint32_t channels, std::uint32_t blockAlign, std::uint32_t frames) {
    if (std::find(buffers, buffers + channels, nullptr) == buffers + channels) {
        convert(source, buffers, channels, frames);
        return;
    }
    constexpr std::uint32_t kBlockFrames = 512;
    std::array<float, kBlockFrames> unwanted;
    std::array<float*, kMaxAudioChannels> destination{};
    std::uint64_t first = 0;
    do {
        const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(kBlockFrames, frames - first));
        for (std::uint32_t c = 0; c < channels; ++c) {
            destination[c] = buffers[c] != nullptr ? buffers[c] + first : unwanted.data();
        }
        convert(source + first * blockAlign, destination.data(), channels, count);
        first += kBlockFrames;
    } while (first < frames);
}

}  // namespace

std::int32_t AudioInfo::importAudio(const host::imImportAudioRec7& record) {
    // The host knows the dummy as empty, so its buffers stay as they are.
    if (!m_valid) return host::imNoErr;

    const std::int64_t position = record.position;
    const std::uint32_t size = record.size;
    float** const buffers = record.buffer;
    const std::uint32_t blockAlign = m_format.nBlockAlign;

    const Loan<fileio::ReadBuffer> buffer(m_readBuffer);
    // The host may name any position: sums and products go round in unsigned 64 bits instead of overflowing.
    // The position moves on at once, so that a read which comes meanwhile goes on behind this one.
    std::int64_t formerPosition = m_audioPosition.load(std::memory_order_relaxed);
    std::int64_t startPos = 0;
    std::int64_t endPos = 0;
    do {
        startPos = position >= 0 ? position : formerPosition;
        endPos = static_cast<std::int64_t>(static_cast<std::uint64_t>(startPos) + size);
    } while (!m_audioPosition.compare_exchange_weak(formerPosition, endPos, std::memory_order_relaxed));
    const std::uint64_t startPosBytes =
        static_cast<std::uint64_t>(blockAlign) * static_cast<std::uint64_t>(startPos);
    // Deliberately 32 bits wide: a request of 4 GiB and more wraps, and only the rest is read.
    const std::uint32_t sizeBytes = blockAlign * size;
    if (logEnabled()) {
        logMessage("importAudioRec7P->position: %lld", static_cast<long long>(position));
        logMessage("m_audioPosition           : %lld", static_cast<long long>(formerPosition));
        logMessage("startPos                  : %lld", static_cast<long long>(startPos));
        logMessage("importAudioRec7P->size    : %u", size);
        logMessage("endPos                    : %lld", static_cast<long long>(endPos));
        logMessage("m_numAudioSampleFrames    : %lld", static_cast<long long>(m_numAudioSampleFrames));
        logMessage("startPosBytes             : %lld", static_cast<long long>(startPosBytes));
        logMessage("sizeBytes                 : %lld", static_cast<long long>(sizeBytes));
    }

    std::byte* bytes = nullptr;
    try {
        // One byte at least: the host's converter gets an address for no sample frames too.
        bytes = buffer->ensure(std::max(sizeBytes, 1u));
    } catch (const std::bad_alloc&) {
        // Nothing was read: sequential reads go on where they were, unless another one has moved them.
        std::int64_t expected = endPos;
        m_audioPosition.compare_exchange_strong(expected, formerPosition, std::memory_order_relaxed);
        throw;
    }
    const std::uint64_t done = readStream(m_owner, *m_stream, startPosBytes, bytes, sizeBytes);
    const std::uint64_t fill = sizeBytes - done;
    logMessage("fill    : %lld", static_cast<long long>(fill));
    if (fill != 0) std::memset(bytes + done, 0, fill);
    return deliver(bytes, sizeBytes, buffers, size);
}

std::int32_t AudioInfo::deliver(std::byte* bytes, std::uint32_t sizeBytes, float** buffers,
                                std::uint32_t size) {
    const std::uint32_t channels = m_format.nChannels;
    const std::uint32_t blockAlign = m_format.nBlockAlign;
    // A wrapped request leaves fewer frames in the buffer than the host has room for.
    const std::uint32_t framesRead = blockAlign == 0 ? 0 : std::min(size, sizeBytes / blockAlign);
    switch (m_sampleType) {
        case host::kPrAudioSampleType_8BitInt:
            // The fill is included: it reaches the converter as -128.
            makeSigned(bytes, sizeBytes);
            [[fallthrough]];
        case host::kPrAudioSampleType_16BitInt:
        case host::kPrAudioSampleType_24BitInt:
        case host::kPrAudioSampleType_32BitInt:
            // A request for no frames is converted like any other; only one that wrapped to none is not.
            if (buffers != nullptr && (framesRead != 0 || size == 0)) {
                const IntegerConverter convert =
                    integerConverter(m_owner.suites->get().audio.get(), m_sampleType);
                convertIntegers(convert, bytes, buffers, channels, blockAlign, framesRead);
            }
            break;
        case host::kPrAudioSampleType_32BitFloat:
            if (buffers != nullptr) deinterleaveFloat(bytes, buffers, channels, framesRead);
            break;
        default:
            return host::imDecompressionError;
    }
    if (buffers != nullptr && framesRead < size) {
        for (std::uint32_t c = 0; c < channels; ++c) {
            if (buffers[c] != nullptr) std::fill(buffers[c] + framesRead, buffers[c] + size, 0.0f);
        }
    }
    return host::imNoErr;
}

}  // namespace orvantis
