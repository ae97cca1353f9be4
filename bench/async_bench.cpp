// The asynchronous importer: how long the host waits for a frame and for a flush, whether frames keep their
// order and come in time, and what is left of the machine's throughput. Reads wait for a device where a
// figure needs the length of a step to be exact.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "bench/allocation_count.h"
#include "bench/bench_files.h"
#include "bench/device.h"
#include "bench/series.h"
#include "simhost/plugin.h"
#include "tests/support/environment.h"
#include "tool/bench/bench_workloads.h"

namespace orvantis::bench {

namespace {

using simhost::tool::AsyncPlayback;
using simhost::tool::BenchAsync;
using simhost::tool::BenchClip;
using simhost::tool::benchClock;
using simhost::tool::BenchImporter;

constexpr const char* kDelayVariable = "ORVANTIS_STANDIN_DELAY_US";
constexpr std::uint32_t kInFlight = AsyncPlayback::kFramesAhead + 1;
constexpr double kMicroseconds = 1e6;

/// The codec takes so long for a frame. Make it before the importer.
class DecodeTime {
 public:
    explicit DecodeTime(double seconds)
        : m_variable(kDelayVariable, std::to_string(std::lround(seconds * kMicroseconds))) {}

 private:
    test::ScopedEnvironment m_variable;
};

/// A clip with its asynchronous importer, frames by any number.
class Playing {
 public:
    Playing(const BenchImporter& importer, const std::string& path)
        : m_clip(importer, path), m_async((m_clip.describe(), m_clip)) {}

    void initiate(std::uint32_t number) const { m_async.initiate(number % m_clip.frames()); }
    std::uint64_t frame(std::uint32_t number) const { return m_async.frame(number % m_clip.frames()); }
    void synchronousFrame(std::uint32_t number) const { m_clip.frame(number % m_clip.frames()); }
    void flush() const { m_async.flush(); }

    /// In order with kInFlight requests in flight.
    template <class Each>
    void play(std::uint32_t frames, const Each& each) const {
        std::uint32_t announced = 0;
        for (std::uint32_t i = 0; i < frames; ++i) {
            for (; announced < frames && announced < i + kInFlight; ++announced) {
                initiate(announced);
            }
            each(i);
        }
    }

 private:
    BenchClip m_clip;
    BenchAsync m_async;
};

void addQuantiles(benchmark::State& state, const std::string& name, const std::vector<double>& seconds,
                  double unit) {
    state.counters[name + "_p50"] = quantile(seconds, 0.5) / unit;
    state.counters[name + "_p99"] = quantile(seconds, 0.99) / unit;
    state.counters[name + "_max"] = quantile(seconds, 1.0) / unit;
}

// All figures are quotients by one read and one decode, measured by synchronous frames in between.
void latency(benchmark::State& state, double decodesARead) {
    constexpr double kRead = 2e-3;
    constexpr std::uint32_t kJumps = 600;
    Device device(kRead, 0);
    const DecodeTime decode(kRead * decodesARead);
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    const Playing playing(importer, benchFile("calls.avi"));
    std::vector<double> single, firsts, flushes, steady;
    for ([[maybe_unused]] auto round : state) {
        const double begin = benchClock();
        for (std::uint32_t jump = 0; jump < kJumps; ++jump) {
            const double start = benchClock();
            playing.synchronousFrame(jump);
            single.push_back(benchClock() - start);
            const std::uint32_t at = jump * 17;
            for (std::uint32_t i = 0; i < kInFlight; ++i) {
                playing.initiate(at + i);
            }
            const double asked = benchClock();
            playing.frame(at);
            firsts.push_back(benchClock() - asked);
            playing.initiate(at + kInFlight);
            const double flushed = benchClock();
            playing.flush();
            flushes.push_back(benchClock() - flushed);
        }
        playing.play(kJumps, [&](std::uint32_t i) {
            const double asked = benchClock();
            playing.frame(i);
            if (i >= kInFlight) {
                steady.push_back(benchClock() - asked);
            }
        });
        state.SetIterationTime(benchClock() - begin);
    }
    const double one = quantile(single, 0.5);
    state.counters["one_ms"] = one * 1e3;
    addQuantiles(state, "one", single, one);
    addQuantiles(state, "first", firsts, one);
    addQuantiles(state, "flush", flushes, one);
    addQuantiles(state, "steady_ms", steady, 1e-3);
}

void latencyEqual(benchmark::State& state) {
    latency(state, 1);
}

void latencyFour(benchmark::State& state) {
    latency(state, 4);
}

void overtaking(benchmark::State& state) {
    constexpr std::uint32_t kFrames = 100'000;
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    const Playing playing(importer, benchFile("calls.avi"));
    std::uint32_t overtook = 0;
    for ([[maybe_unused]] auto round : state) {
        const double begin = benchClock();
        std::uint64_t before = 0;
        playing.play(kFrames, [&](std::uint32_t i) {
            const std::uint64_t serial = playing.frame(i);
            if (serial < before) {
                ++overtook;
            }
            before = std::max(before, serial);
        });
        state.SetIterationTime(benchClock() - begin);
    }
    state.counters["frames"] = kFrames;
    state.counters["overtook"] = overtook;
}

/// How frames kept up with a clock.
struct Lateness {
    std::uint32_t late = 0;
    double latest = 0;  ///< seconds
};

// The host asks for a frame at each tick and needs it by the next one. `frame(i)` waits for it.
template <class Frame>
Lateness atFixedRate(std::uint32_t frames, double tickSeconds, const Frame& frame) {
    Lateness result;
    // The pipe is full before the clip begins to run.
    const double start = benchClock() + kInFlight * tickSeconds;
    for (std::uint32_t i = 0; i < frames; ++i) {
        const double tick = start + i * tickSeconds;
        const double ahead = tick - benchClock();
        if (ahead > 0) {
            std::this_thread::sleep_for(std::chrono::duration<double>(ahead));
        }
        frame(i);
        const double behind = benchClock() - (tick + tickSeconds);
        result.late += behind > 0 ? 1 : 0;
        result.latest = std::max(result.latest, behind);
    }
    return result;
}

/// What two threads and no plug-in make of the same steps: one reads, one is as busy as a decode is, and
/// both stay at most kInFlight frames ahead of the one who takes them.
class BarePipeline {
 public:
    BarePipeline(const std::string& path, std::uint32_t frames, double decodeSeconds)
        : m_frames(frames),
          m_decodeSeconds(decodeSeconds),
          m_file(path, false),
          m_reader([this] { readAll(); }),
          m_decoder([this] { decodeAll(); }) {}
    BarePipeline(const BarePipeline&) = delete;
    BarePipeline& operator=(const BarePipeline&) = delete;
    /// All frames have to be taken before.
    ~BarePipeline() {
        m_reader.join();
        m_decoder.join();
    }

    void take(std::uint32_t number) {
        waitFor([&] { return number < m_decoded; });
        count(m_taken);
    }

 private:
    void readAll() {
        const std::vector<simhost::tool::ChunkPlace>& chunks = m_file.chunks();
        std::vector<std::byte> buffer;
        for (std::uint32_t i = 0; i < m_frames; ++i) {
            waitFor([&] { return i < m_taken + kInFlight; });
            const simhost::tool::ChunkPlace& chunk = chunks[i % chunks.size()];
            buffer.resize(chunk.size);
            m_file.read(chunk.offset, chunk.size, buffer.data());
            count(m_read);
        }
    }
    void decodeAll() {
        for (std::uint32_t i = 0; i < m_frames; ++i) {
            waitFor([&] { return i < m_read; });
            for (const double end = benchClock() + m_decodeSeconds; benchClock() < end;) {
            }
            count(m_decoded);
        }
    }
    template <class Condition>
    void waitFor(const Condition& condition) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, condition);
    }
    void count(std::uint32_t& counter) {
        {
            const std::lock_guard lock(m_mutex);
            ++counter;
        }
        m_changed.notify_all();
    }

    std::uint32_t m_frames;
    double m_decodeSeconds;
    simhost::tool::PlainFile m_file;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::uint32_t m_read = 0, m_decoded = 0, m_taken = 0;
    std::thread m_reader, m_decoder;
};

// In turns of 2,000 frames, because what else the machine does changes from one second to the next.
void fixedRate(benchmark::State& state) {
    constexpr std::uint32_t kFrames = 10'000;
    constexpr std::uint32_t kTurns = 5;
    constexpr double kTick = 2e-3;
    constexpr double kLoad = 0.9;
    const std::string path = benchFile("calls.avi");
    Device device(kTick * kLoad, 0);
    const DecodeTime decode(kTick * kLoad);
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    const Playing playing(importer, path);
    Lateness ours, bare;
    const auto add = [](Lateness& sum, const Lateness& turn) {
        sum.late += turn.late;
        sum.latest = std::max(sum.latest, turn.latest);
    };
    for ([[maybe_unused]] auto round : state) {
        const double begin = benchClock();
        for (std::uint32_t turn = 0; turn < kTurns; ++turn) {
            constexpr std::uint32_t kCount = kFrames / kTurns;
            std::uint32_t announced = 0;
            const auto announce = [&](std::uint32_t end) {
                for (; announced < std::min(kCount, end); ++announced) {
                    playing.initiate(announced);
                }
            };
            announce(kInFlight);
            add(ours, atFixedRate(kCount, kTick, [&](std::uint32_t i) {
                    playing.frame(i);
                    announce(i + 1 + kInFlight);
                }));
            BarePipeline pipeline(path, kCount, kTick * kLoad);
            add(bare, atFixedRate(kCount, kTick, [&](std::uint32_t i) { pipeline.take(i); }));
        }
        state.SetIterationTime(benchClock() - begin);
    }
    state.counters["frames"] = kFrames;
    state.counters["late"] = ours.late;
    state.counters["latest_ms"] = ours.latest * 1e3;
    state.counters["bare_late"] = bare.late;
    state.counters["bare_latest_ms"] = bare.latest * 1e3;
}

// As many frames in all, of one clip or of sixteen, each with a host thread of its own.
void clipsAtOnce(benchmark::State& state) {
    constexpr std::uint32_t kClips = 16;
    constexpr std::uint32_t kFrames = 48 * kClips;
    const std::string path = benchFile("chunks-2m.avi");
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    double readSeconds = 0;
    {
        const BenchImporter importer(plugin.entry());
        AsyncPlayback playback(importer, path);
        playback.reads(true);
        readSeconds = playback.reads(true) / playback.frames();
    }
    const DecodeTime decode(readSeconds);
    const BenchImporter importer(plugin.entry());
    std::deque<Playing> clips;
    for (std::uint32_t i = 0; i < kClips; ++i) {
        clips.emplace_back(importer, path);
    }
    const auto play = [&](std::uint32_t count) {
        const double start = benchClock();
        std::vector<std::thread> hosts;
        for (std::uint32_t c = 0; c < count; ++c) {
            hosts.emplace_back([&clip = clips[c], count] {
                clip.play(kFrames / count, [&clip](std::uint32_t i) { clip.frame(i); });
            });
        }
        for (std::thread& host : hosts) {
            host.join();
        }
        return benchClock() - start;
    };
    const Series series = alternate(
        state, [&] { return play(kClips); }, [&] { return play(1); });
    report(state, series, kFrames);
}

// Quotients turn by turn, because what else the machine does changes from one second to the next.
void againstPipeline(benchmark::State& state, double latency, double bytesPerSecond) {
    std::unique_ptr<Device> device;
    if (latency > 0) {
        device = std::make_unique<Device>(latency, bytesPerSecond);
    }
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const std::string path = benchFile("ahead.avi");
    double readSeconds = 0;
    {
        const BenchImporter importer(plugin.entry());
        AsyncPlayback playback(importer, path);
        playback.reads(true);
        readSeconds = playback.reads(true) / playback.frames();
    }
    const DecodeTime decode(readSeconds);
    const BenchImporter importer(plugin.entry());
    AsyncPlayback playback(importer, path);
    std::vector<double> longer;
    const Series series = alternate(
        state, [&] { return playback.ours(); },
        [&] {
            const double seconds = playback.pipeline(readSeconds);
            longer.push_back(seconds / std::max(playback.reads(true), readSeconds * playback.frames()));
            return seconds;
        });
    report(state, series, playback.frames());
    std::vector<double> quotients;
    for (std::size_t i = 0; i < series.ours.size(); ++i) {
        quotients.push_back(series.peer[i] / series.ours[i]);
    }
    state.counters["turn_by_turn"] = quantile(quotients, 0.5);
    state.counters["bare_times"] = quantile(longer, 0.5);
    state.counters["read_us"] = readSeconds * kMicroseconds;
}

void pipelineFromCache(benchmark::State& state) {
    againstPipeline(state, 0, 0);
}

void pipelineFromDevice(benchmark::State& state) {
    againstPipeline(state, 1e-3, 3e9);
}

void idleClips(benchmark::State& state) {
    constexpr int kClips = 1000;
    const std::string path = benchFile(scalingFile(1));
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    { BenchClip(importer, path).describe(); }  // what the first clip of a process leaves behind
    double bytes = 0;
    for ([[maybe_unused]] auto round : state) {
        std::deque<BenchClip> clips;
        const double begin = benchClock();
        const std::uint64_t before = heapBytes();
        for (int i = 0; i < kClips; ++i) {
            BenchClip& clip = clips.emplace_back(importer, path);
            clip.describe();
            clip.quiet();
        }
        bytes = static_cast<double>(heapBytes() - before) / kClips;
        state.SetIterationTime(benchClock() - begin);
    }
    state.counters["bytes"] = bytes;
    state.counters["own_bytes"] = sizeof(BenchClip);
}

}  // namespace

void addAsyncBenchmarks() {
    addBenchmark("latency_equal", latencyEqual, 1);
    addBenchmark("latency_four", latencyFour, 1);
    addBenchmark("overtaking", overtaking, 1);
    addBenchmark("fixed_rate", fixedRate, 1);
    addBenchmark("clips_at_once", clipsAtOnce);
    addBenchmark("pipeline_cache", pipelineFromCache);
    addBenchmark("pipeline_device", pipelineFromDevice, 5);
    addBenchmark("idle_clips", idleClips, 1);
}

}  // namespace orvantis::bench
