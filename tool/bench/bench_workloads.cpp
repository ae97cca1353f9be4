#include "tool/bench/bench_workloads.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "host/suites.h"
#include "tool/bench/bench_host.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

std::uint32_t largestChunk(const PlainFile& file) {
    std::uint32_t largest = 0;
    for (const ChunkPlace& chunk : file.chunks()) {
        largest = std::max(largest, chunk.size);
    }
    return largest;
}

// Every page is there before anything is timed.
void warm(fileio::ReadBuffer& buffer, std::size_t bytes) {
    std::memset(buffer.ensure(bytes), 1, bytes);
}

double readAll(PlainFile& file, fileio::ReadBuffer& buffer) {
    const double start = benchClock();
    for (const ChunkPlace& chunk : file.chunks()) {
        file.read(chunk.offset, chunk.size, buffer.data());
    }
    return benchClock() - start;
}

}  // namespace

double benchClock() noexcept {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

PlainFile::PlainFile(const std::string& pathUtf8, bool audio) {
    if (!m_file.open(pathUtf8.c_str(), fileio::kOpenRead | fileio::kOpenShareRead)) {
        throw ToolError(kFailed, "cannot open '" + pathUtf8 + "'");
    }
    orvantis::AviReader reader;
    if (!reader.parse(m_file, false)) {
        throw ToolError(kFailed, reader.errorText());
    }
    const auto streams =
        reader.streamsOfType(audio ? orvantis::kStreamTypeAudio : orvantis::kStreamTypeVideo);
    if (streams.empty()) {
        return;
    }
    for (const orvantis::IndexEntry& entry : reader.streams[streams.front()]->entries()) {
        m_chunks.push_back({entry.offset, entry.size});
    }
}

std::uint64_t PlainFile::totalBytes() const noexcept {
    std::uint64_t total = 0;
    for (const ChunkPlace& chunk : m_chunks) {
        total += chunk.size;
    }
    return total;
}

void PlainFile::read(std::uint64_t offset, std::uint32_t size, std::byte* destination) {
    if (!m_file.seek(static_cast<std::int64_t>(offset)) || m_file.read(destination, size) != size) {
        throw ToolError(kFailed, "a plain read failed");
    }
}

double timeOpening(const BenchImporter& importer, const std::string& pathUtf8) {
    const double start = benchClock();
    BenchClip clip(importer, pathUtf8);
    (void)clip.tryDescribe();
    return benchClock() - start;
}

FrameReading::FrameReading(const BenchImporter& importer, const std::string& pathUtf8)
    : m_clip(importer, pathUtf8), m_plain(pathUtf8, false) {
    m_clip.describe();
    warm(m_buffer, largestChunk(m_plain));
}

double FrameReading::ours() {
    const double start = benchClock();
    for (std::uint32_t i = 0; i < m_clip.frames(); ++i) {
        m_clip.frame(i);
    }
    return benchClock() - start;
}

double FrameReading::limit() {
    return readAll(m_plain, m_buffer);
}

FrameCalls::FrameCalls(const BenchImporter& importer, const std::string& pathUtf8)
    : m_clip(importer, pathUtf8), m_plain(pathUtf8, false) {
    m_clip.describe();
    warm(m_buffer, largestChunk(m_plain));
}

double FrameCalls::ours() {
    const double start = benchClock();
    for (std::uint32_t i = 0; i < m_clip.frames(); ++i) {
        m_clip.frame(i);
    }
    return benchClock() - start;
}

double FrameCalls::limit() {
    const host::PPixCreatorSuite& creator = benchPPixCreatorSuite();
    const host::PPixSuite& ppix = benchPPixSuite();
    const host::prRect bounds{0, 0, m_clip.width(), m_clip.height()};
    const double start = benchClock();
    std::uint32_t index = 0;
    for (const ChunkPlace& chunk : m_plain.chunks()) {
        host::PPixHand frame = nullptr;
        host::imSourceVideoRec record;
        m_clip.fillRequest(record, index++, &frame);  // the host's own work too
        m_plain.read(chunk.offset, chunk.size, m_buffer.data());
        char* pixels = nullptr;
        std::int32_t rowBytes = 0;
        creator.CreatePPix(&frame, host::kBufferAccessWriteOnly, m_clip.pixelFormat(), &bounds);
        ppix.GetPixels(frame, host::kBufferAccessWriteOnly, &pixels);
        ppix.GetRowBytes(frame, &rowBytes);
        ppix.Dispose(frame);
    }
    return benchClock() - start;
}

AudioReading::AudioReading(const BenchImporter& importer, const std::string& pathUtf8)
    : m_clip(importer, pathUtf8), m_plain(pathUtf8, true), m_seconds(0), m_bytesPerSecond(0) {
    m_clip.describe();
    if (m_clip.audioRate() == 0 || m_clip.frames() == 0) {
        throw ToolError(kFailed, "the clip has no sound");
    }
    const double seconds = static_cast<double>(m_clip.frames()) * m_clip.frameSeconds();
    m_seconds = std::max(1U, static_cast<std::uint32_t>(std::lround(seconds)));
    m_bytesPerSecond = static_cast<std::size_t>(m_plain.totalBytes() / m_seconds);
    m_buffer.assign(m_bytesPerSecond + largestChunk(m_plain), std::byte{1});
    m_samples.assign(std::size_t{m_clip.audioRate()} * m_clip.audioChannels(), 1.0F);
    for (std::uint32_t c = 0; c < m_clip.audioChannels(); ++c) {
        m_channels.push_back(m_samples.data() + std::size_t{c} * m_clip.audioRate());
    }
}

double AudioReading::ours() {
    const double start = benchClock();
    for (std::uint32_t second = 0; second < m_seconds; ++second) {
        m_clip.audio(std::int64_t{second} * m_clip.audioRate(), m_clip.audioRate(), m_channels.data());
    }
    return benchClock() - start;
}

double AudioReading::limit() {
    const double start = benchClock();
    std::size_t filled = 0;
    for (const ChunkPlace& chunk : m_plain.chunks()) {
        m_plain.read(chunk.offset, chunk.size, m_buffer.data() + filled);
        filled += chunk.size;
        if (filled >= m_bytesPerSecond) {
            std::memcpy(m_samples.data(), m_buffer.data(),
                        std::min(filled, m_samples.size() * sizeof(float)));
            filled = 0;
        }
    }
    return benchClock() - start;
}

AsyncPlayback::AsyncPlayback(const BenchImporter& importer, const std::string& pathUtf8)
    : m_clip(importer, pathUtf8),
      m_async((m_clip.describe(), m_clip)),
      m_plain(pathUtf8, false),
      m_buffers(kFramesAhead + 1) {
    for (fileio::ReadBuffer& buffer : m_buffers) {
        warm(buffer, largestChunk(m_plain));
    }
}

double AsyncPlayback::ours() {
    const std::uint32_t count = frames();
    const std::uint32_t inClip = m_clip.frames();
    const double start = benchClock();
    std::uint32_t announced = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        for (; announced < count && announced <= i + kFramesAhead; ++announced) {
            m_async.initiate(announced % inClip);
        }
        m_async.frame(i % inClip);
    }
    return benchClock() - start;
}

double AsyncPlayback::reads(bool busy) {
    std::atomic<bool> done = false;
    std::thread other;
    if (busy) {
        other = std::thread([&done] {
            while (!done.load(std::memory_order_relaxed)) {
                (void)benchClock();
            }
        });
    }
    const double start = benchClock();
    std::size_t next = 0;
    for (std::uint32_t pass = 0; pass < kPasses; ++pass) {
        for (const ChunkPlace& chunk : m_plain.chunks()) {
            m_plain.read(chunk.offset, chunk.size, m_buffers[next].data());
            next = (next + 1) % m_buffers.size();
        }
    }
    const double seconds = benchClock() - start;
    done = true;
    if (other.joinable()) {
        other.join();
    }
    return seconds;
}

double AsyncPlayback::pipeline(double decodeSeconds) {
    const std::uint32_t count = frames();
    const std::vector<ChunkPlace>& chunks = m_plain.chunks();
    std::mutex mutex;
    std::condition_variable changed;
    std::uint32_t read = 0;
    std::uint32_t decoded = 0;
    const double start = benchClock();
    std::thread reader([&] {
        for (std::uint32_t i = 0; i < count; ++i) {
            {
                std::unique_lock lock(mutex);
                changed.wait(lock, [&] { return i < decoded + m_buffers.size(); });
            }
            const ChunkPlace& chunk = chunks[i % chunks.size()];
            m_plain.read(chunk.offset, chunk.size, m_buffers[i % m_buffers.size()].data());
            {
                const std::lock_guard lock(mutex);
                ++read;
            }
            changed.notify_all();
        }
    });
    for (std::uint32_t i = 0; i < count; ++i) {
        {
            std::unique_lock lock(mutex);
            changed.wait(lock, [&] { return i < read; });
        }
        for (const double end = benchClock() + decodeSeconds; benchClock() < end;) {
        }
        {
            const std::lock_guard lock(mutex);
            ++decoded;
        }
        changed.notify_all();
    }
    reader.join();
    return benchClock() - start;
}

}  // namespace simhost::tool
