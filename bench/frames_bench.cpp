// Frames: file to codec input against plain reads, the cost of a call, and playback ahead of need.
#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/allocation_count.h"
#include "bench/series.h"
#include "simhost/plugin.h"
#include "tests/support/environment.h"
#include "tool/bench/bench_workloads.h"

namespace orvantis::bench {

namespace {

using simhost::tool::AsyncPlayback;
using simhost::tool::BenchImporter;
using simhost::tool::FrameCalls;
using simhost::tool::FrameReading;

constexpr const char* kDelayVariable = "ORVANTIS_STANDIN_DELAY_US";

void readFrames(benchmark::State& state) {
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    FrameReading reading(importer, benchFile("chunks-2m.avi"));
    const Series series = alternate(
        state, [&] { return reading.ours(); }, [&] { return reading.limit(); });
    report(state, series, reading.frames());
}

void callFrames(benchmark::State& state) {
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    FrameCalls calls(importer, benchFile("calls.avi"));
    std::uint64_t allocations = 0;
    std::uint64_t rounds = 0;
    const auto ours = [&] {
        const std::uint64_t before = allocationCount();
        const double seconds = calls.ours();
        if (rounds++ != 0) {
            allocations += allocationCount() - before;  // the first round fills the buffers
        }
        return seconds;
    };
    const Series series = alternate(state, ours, [&] { return calls.limit(); });
    report(state, series, calls.calls());
    std::vector<double> beyond;
    for (std::size_t i = 0; i < series.ours.size(); ++i) {
        beyond.push_back((series.ours[i] - series.peer[i]) * 1e9 / calls.calls());
    }
    state.counters["beyond_ns"] = quantile(beyond, 0.5);
    state.counters["beyond_q1"] = quantile(beyond, 0.25);
    state.counters["beyond_q3"] = quantile(beyond, 0.75);
    state.counters["allocations"] = static_cast<double>(allocations);
}

// The decode of a frame is made as long as its read is, measured just before.
void playAhead(benchmark::State& state) {
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const std::string path = benchFile("ahead.avi");
    double readSeconds = 0;
    {
        const BenchImporter importer(plugin.entry());
        AsyncPlayback playback(importer, path);
        std::vector<double> reads;
        for (int i = 0; i < 3; ++i) {
            reads.push_back(playback.reads(true));
        }
        readSeconds = quantile(reads, 0.5) / playback.frames();
    }
    const long delay = std::lround(readSeconds * 1e6);
    test::setEnvironment(kDelayVariable, std::to_string(delay));
    {
        const BenchImporter importer(plugin.entry());
        AsyncPlayback playback(importer, path);
        const double decodes = static_cast<double>(delay) * 1e-6 * playback.frames();
        const Series series = alternate(
            state, [&] { return playback.ours(); }, [&] { return std::max(playback.reads(true), decodes); });
        report(state, series, playback.frames());
        state.counters["decode_us"] = static_cast<double>(delay);
        state.counters["times"] = series.oursMedian() / series.peerMedian();
    }
    test::unsetEnvironment(kDelayVariable);
}

}  // namespace

void addFrameBenchmarks() {
    addBenchmark("read_frames", readFrames, 15);
    addBenchmark("frame_call", callFrames, 15);
    addBenchmark("play_ahead", playAhead);
}

}  // namespace orvantis::bench
