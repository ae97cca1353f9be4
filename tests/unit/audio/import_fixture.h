// An audio stream in a file in memory, an AudioInfo on it, and buffers as the host hands them in.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <vector>

#include "audio/audio_info.h"
#include "avi/avi_stream.h"
#include "avi/chunk_list_builder.h"
#include "recording_file.h"
#include "tests/support/fake_host/fake_host.h"
#include "wave_bytes.h"

namespace orvantis::audio_test {

using test::convertedSample;

/// What the host's buffers hold before a read: a value that no stream of these tests delivers.
inline constexpr float kUntouched = -12345.0f;

/// The byte at `position` of every stream of these tests.
inline std::uint8_t streamByte(std::uint64_t position) {
    return static_cast<std::uint8_t>((position * 2654435761u) >> 13);
}

/// One float buffer a channel, with a guard value ahead of and behind its samples.
class HostBuffers {
 public:
    HostBuffers(std::uint32_t channels, std::size_t frames)
        : m_samples(channels, std::vector<float>(frames + 2, kUntouched)) {
        for (std::vector<float>& samples : m_samples) {
            pointers.push_back(samples.data() + 1);
        }
    }
    float at(std::uint32_t channel, std::size_t frame) const { return m_samples[channel][frame + 1]; }
    std::uint32_t bitsAt(std::uint32_t channel, std::size_t frame) const {
        std::uint32_t bits;
        std::memcpy(&bits, &m_samples[channel][frame + 1], sizeof bits);
        return bits;
    }
    bool guardsHold() const {
        for (const std::vector<float>& samples : m_samples) {
            if (samples.front() != kUntouched || samples.back() != kUntouched) {
                return false;
            }
        }
        return true;
    }
    bool untouched() const {
        for (const std::vector<float>& samples : m_samples) {
            for (const float sample : samples) {
                if (sample != kUntouched) {
                    return false;
                }
            }
        }
        return true;
    }

    std::vector<float*> pointers;

 private:
    std::vector<std::vector<float>> m_samples;
};

class ImportFixture {
 public:
    ImportFixture() = default;

    /// Lays out chunks of these sizes, 100 + 8 bytes apart, filled with streamByte() of their stream
    /// positions. The first one's data lies at 108; everything between them is 0xEE.
    void layOut(const std::vector<std::uint32_t>& sizes) {
        ChunkListBuilder list;
        file.content.clear();
        std::uint64_t start = 0;
        for (const std::uint32_t size : sizes) {
            file.content.resize(file.content.size() + 108, std::byte{0xEE});
            list.add(file.content.size(), 0, size, true);
            for (std::uint32_t i = 0; i < size; ++i) {
                file.content.push_back(std::byte{streamByte(start + i)});
            }
            start += size;
        }
        file.content.resize(file.content.size() + 108, std::byte{0xEE});
        stream.legacyEntries = list.finish();
    }
    /// Replaces the bytes of a stream that consists of one chunk.
    void setOnlyChunk(const std::vector<std::uint8_t>& bytes) {
        layOut({static_cast<std::uint32_t>(bytes.size())});
        std::memcpy(file.content.data() + 108, bytes.data(), bytes.size());
    }
    /// Analyses the stream under this format. 0 when accepted.
    std::int32_t analyse(const WaveBytes& wave, std::uint32_t length = 0) {
        channels = wave.channels;
        sampleBytes = wave.bits / 8;
        stream.header.fccType = kStreamTypeAudio;
        stream.header.dwLength = length;
        stream.format = waveBytes(wave);
        return numberOf(info.init(stream));
    }
    std::int32_t importFrames(std::int64_t position, std::uint32_t size, float** buffers) {
        // At an odd address, as a packed record may lie.
        alignas(8) std::byte storage[sizeof(host::imImportAudioRec7) + 1]{};
        auto* const record = reinterpret_cast<host::imImportAudioRec7*>(storage + 1);
        record->position = position;
        record->size = size;
        record->buffer = buffers;
        return numberOf(info.importAudio(*record));
    }
    std::int32_t importFrames(std::int64_t position, std::uint32_t size, HostBuffers& buffers) {
        return importFrames(position, size, buffers.pointers.data());
    }
    /// Reads `size` frames of 16-bit samples from `position` on and expects the frames [firstFrame,
    /// firstFrame + good) of the stream with silence behind them.
    void expectFrames(std::int64_t position, std::uint32_t size, std::uint64_t firstFrame,
                      std::uint32_t good) {
        HostBuffers buffers(channels, size);
        ASSERT_EQ(importFrames(position, size, buffers), 0);
        for (std::uint32_t f = 0; f < size; ++f) {
            for (std::uint32_t c = 0; c < channels; ++c) {
                ASSERT_EQ(buffers.at(c, f), f < good ? sample16(firstFrame + f, c) : 0.0f)
                    << "frame " << f << " of " << size << ", channel " << c << ", position " << position;
            }
        }
        ASSERT_TRUE(buffers.guardsHold());
    }
    float sample16(std::uint64_t frame, std::uint32_t channel) const {
        const std::uint64_t position = (frame * channels + channel) * 2;
        const std::uint8_t bytes[2] = {streamByte(position), streamByte(position + 1)};
        return convertedSample(bytes, 16);
    }

    test::FakeHost audioHost;
    RecordingFile file;
    AviStream stream{1};
    LazyImporterSuites suites{audioHost.basicSuite()};
    std::mutex filePosition;
    AudioInfo info{AudioOwner{&file, &filePosition, &suites}};
    std::uint32_t channels = 0;
    std::uint32_t sampleBytes = 0;
};

}  // namespace orvantis::audio_test
