#include "audio/audio_import.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>

#include "audio/channel_layout.h"
#include "audio/deinterleave.h"
#include "audio/sample_arithmetic.h"
#include "avi/audio_chunk.h"
#include "avi/avi_stream.h"
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
    // not covered when true: every outcome has its case
    switch (read.outcome) {
        case AudioChunkRead::Outcome::kRead:
            break;
        case AudioChunkRead::Outcome::kSeekRefused:
            if (logEnabled()) {
                logMessage("importAudio: seek error: %lld, pos: %lld",
                           static_cast<long long>(part.filePosition), static_cast<long long>(file.tell()));
            }
            break;
        case AudioChunkRead::Outcome::kCutShort:
            logMessage("importAudio: read error: %lld, read: %lld", static_cast<long long>(part.bytes),
                       static_cast<long long>(read.bytes));
            break;
    }
    return read.bytes;
}

/// WAVE samples of 8 bits are unsigned around 128; the host's converter takes signed ones.
void makeSigned(std::byte* samples, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] ^= std::byte{0x80};  // the same as adding 128 modulo 256
    }
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
        // not covered when true: only whole numbers of these sizes come here
        default:
            return nullptr;
    }
}

/// Calls the host's converter for the first `frames` of the samples, for no frames too. Its result says
/// nothing that the importer could act on. The converter writes every channel, so one that the host gave no
/// buffer for is given a small one of ours, and the samples go block by block.
void convertIntegers(IntegerConverter convert, const AudioSamples& samples, float** buffers,
                     std::uint32_t frames) {
    const std::byte* const source = samples.bytes.data();
    const std::uint32_t channels = samples.channels;
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
        convert(source + first * samples.blockAlign, destination.data(), channels, count);
        first += kBlockFrames;
    } while (first < frames);
}

}  // namespace

std::uint64_t readAudioBytes(const AudioOwner& owner, const AviStream& stream, std::uint64_t startBytes,
                             std::byte* buffer, std::uint64_t sizeBytes) {
    if (sizeBytes == 0) {
        return 0;
    }
    ChunkList::Iterator chunk = stream.findByPosition(startBytes);
    const ChunkList::Iterator end = stream.entries().end();
    if (chunk == end) {
        return 0;
    }

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
            if (got < part.bytes) {
                break;
            }
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

host::ImporterResult deliverAudio(const AudioSamples& samples, LazyImporterSuites& suites, float** buffers,
                                  std::uint32_t size) {
    const std::uint32_t channels = samples.channels;
    const std::uint32_t blockAlign = samples.blockAlign;
    const auto sizeBytes = static_cast<std::uint32_t>(samples.bytes.size());
    std::byte* const bytes = samples.bytes.data();
    const std::uint32_t framesRead = framesInBuffer(sizeBytes, size, blockAlign);
    switch (samples.type) {
        case host::kPrAudioSampleType_8BitInt:
            // The fill is included: it reaches the converter as -128.
            makeSigned(bytes, sizeBytes);
            [[fallthrough]];
        case host::kPrAudioSampleType_16BitInt:
        case host::kPrAudioSampleType_24BitInt:
        case host::kPrAudioSampleType_32BitInt:
            // A request for no frames is converted like any other; only one that wrapped to none is not.
            if (buffers != nullptr && (framesRead != 0 || size == 0)) {
                const IntegerConverter convert = integerConverter(suites.get().audio.get(), samples.type);
                convertIntegers(convert, samples, buffers, framesRead);
            }
            break;
        case host::kPrAudioSampleType_32BitFloat:
            if (buffers != nullptr) {
                deinterleaveFloat(bytes, buffers, channels, framesRead);
            }
            break;
        default:
            return host::ImporterResult::imDecompressionError;
    }
    if (buffers != nullptr && framesRead < size) {
        for (std::uint32_t c = 0; c < channels; ++c) {
            if (buffers[c] != nullptr) {
                std::fill(buffers[c] + framesRead, buffers[c] + size, 0.0f);
            }
        }
    }
    return host::ImporterResult::imNoErr;
}

}  // namespace orvantis
