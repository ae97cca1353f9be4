// What is measured and what it is measured against, one class for each comparison. ours() and limit() each
// do the same work once and return how long it took in seconds; callers alternate them. Used by the tool's
// bench command (the built plug-in) and by the native benchmarks. Main thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fileio/read_buffer.h"
#include "fileio/win_file.h"
#include "tool/bench/bench_clip.h"

namespace simhost::tool {

/// Seconds on a clock that only goes forward.
double benchClock() noexcept;

/// Where the bytes of a chunk lie.
struct ChunkPlace {
    std::uint64_t offset;
    std::uint32_t size;
};

/// The file as the system gives it, and where the chunks of its first video or audio stream lie.
class PlainFile {
 public:
    /// Throws ToolError.
    PlainFile(const std::string& pathUtf8, bool audio);

    const std::vector<ChunkPlace>& chunks() const noexcept { return m_chunks; }
    std::uint64_t totalBytes() const noexcept;
    /// One seek and one read.
    void read(std::uint64_t offset, std::uint32_t size, std::byte* destination);

 private:
    fileio::WinFile m_file;
    std::vector<ChunkPlace> m_chunks;
};

/// imOpenFile8 and imGetInfo8; closing is not timed.
double timeOpening(const BenchImporter& importer, const std::string& pathUtf8);

/// All frames of a clip in order, against plain reads of the same chunks into one warm buffer.
class FrameReading {
 public:
    FrameReading(const BenchImporter& importer, const std::string& pathUtf8);
    double ours();
    double limit();
    std::uint64_t bytes() const noexcept { return m_plain.totalBytes(); }
    std::uint32_t frames() const noexcept { return m_clip.frames(); }

 private:
    BenchClip m_clip;
    PlainFile m_plain;
    fileio::ReadBuffer m_buffer;
};

/// imGetSourceVideo over and over, against the same reads and the calls of the host's functions that it has
/// to make. Both return the time of all calls.
class FrameCalls {
 public:
    FrameCalls(const BenchImporter& importer, const std::string& pathUtf8);
    double ours();
    double limit();
    std::uint32_t calls() const noexcept { return m_clip.frames(); }

 private:
    BenchClip m_clip;
    PlainFile m_plain;
    fileio::ReadBuffer m_buffer;
};

/// All audio of a clip in requests of one second, against plain reads of the same chunks and one copy of
/// their bytes into the host's buffers.
class AudioReading {
 public:
    AudioReading(const BenchImporter& importer, const std::string& pathUtf8);
    double ours();
    double limit();
    std::uint64_t bytes() const noexcept { return m_plain.totalBytes(); }

 private:
    BenchClip m_clip;
    PlainFile m_plain;
    std::uint32_t m_seconds;
    std::size_t m_bytesPerSecond;
    std::vector<std::byte> m_buffer;
    std::vector<float> m_samples;
    std::vector<float*> m_channels;
};

/// All frames of a clip through the asynchronous importer, again and again: the pipe is filled and emptied
/// only once.
class AsyncPlayback {
 public:
    static constexpr std::uint32_t kFramesAhead = 6;
    static constexpr std::uint32_t kPasses = 4;

    AsyncPlayback(const BenchImporter& importer, const std::string& pathUtf8);
    double ours();
    /// The reads alone, into as many warm buffers as there are frames in flight. `busy` keeps another
    /// processor at work meanwhile, as decoding does: processors share more than the eye sees.
    double reads(bool busy);
    /// A bare pipeline: one thread reads into as many warm buffers, another spends `decodeSeconds` on each.
    /// No plug-in and no host.
    double pipeline(double decodeSeconds);
    std::uint32_t frames() const noexcept { return m_clip.frames() * kPasses; }

 private:
    BenchClip m_clip;
    BenchAsync m_async;
    PlainFile m_plain;
    std::vector<fileio::ReadBuffer> m_buffers;
};

}  // namespace simhost::tool
