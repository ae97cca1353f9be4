// Opening and describing clips: against the peer, the memory that an index takes, and what the refusal of a
// foreign clip reads.
#include <algorithm>
#include <vector>

#include "bench/allocation_count.h"
#include "bench/bench_files.h"
#include "bench/peer.h"
#include "bench/series.h"
#include "host/result_codes.h"
#include "simhost/plugin.h"
#include "tests/support/file_hooks.h"
#include "tool/bench/bench_workloads.h"

namespace orvantis::bench {

namespace {

using simhost::tool::BenchClip;
using simhost::tool::BenchImporter;
using simhost::tool::timeOpening;

constexpr std::uint32_t kMillion = 1'000'000;
constexpr double kStreams = 2;  // of each indexed clip

void openAgainstPeer(benchmark::State& state, const std::string& name) {
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    const std::string path = benchFile(name);
    const Series series = alternate(
        state, [&] { return timeOpening(importer, path); }, [&] { return timePeerOpening(path, kMillion); });
    report(state, series, 1);
}

void openOpenDml(benchmark::State& state) {
    openAgainstPeer(state, scalingFile(kMillion));
}

void openIdx1(benchmark::State& state) {
    openAgainstPeer(state, "idx1-1000000.avi");
}

double bytesOfOpenClip(const BenchImporter& importer, const std::string& path) {
    const std::uint64_t before = heapBytes();
    BenchClip clip(importer, path);
    clip.describe();
    return static_cast<double>(heapBytes() - before);
}

// What an open clip of a million frames takes beyond one of a single frame, for each chunk.
void indexMemory(benchmark::State& state, const std::string& name, const std::string& shortName) {
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    std::vector<double> bytes;
    for ([[maybe_unused]] auto round : state) {
        const double start = simhost::tool::benchClock();
        bytes.push_back(bytesOfOpenClip(importer, benchFile(name)) -
                        bytesOfOpenClip(importer, benchFile(shortName)));
        state.SetIterationTime(simhost::tool::benchClock() - start);
    }
    state.counters["bytes_per_chunk"] = quantile(bytes, 0.5) / ((kMillion - 1) * kStreams);
    state.counters["runs"] = static_cast<double>(bytes.size());
}

void openDmlMemory(benchmark::State& state) {
    indexMemory(state, scalingFile(kMillion), scalingFile(1));
}

void idx1Memory(benchmark::State& state) {
    indexMemory(state, "idx1-1000000.avi", "idx1-1.avi");
}

// Opening, describing, being refused and closing, counted in operations of the system.
void refuseForeign(benchmark::State& state) {
    test::InstalledFileHooks hooks;
    test::FileHooks& counts = *hooks;
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    std::vector<double> seconds;
    std::uint64_t reads = 0;
    std::uint64_t bytes = 0;
    for ([[maybe_unused]] auto round : state) {
        const std::uint64_t readsBefore = counts.reads.count;
        const std::uint64_t bytesBefore = counts.bytesRead;
        const double start = simhost::tool::benchClock();
        {
            BenchClip clip(importer, benchFile("foreign-1000000.avi"));
            if (clip.tryDescribe() != host::imBadFile) {
                state.SkipWithError("the clip was not refused");
            }
        }
        seconds.push_back(simhost::tool::benchClock() - start);
        state.SetIterationTime(seconds.back());
        reads = std::max(reads, counts.reads.count - readsBefore);
        bytes = std::max(bytes, counts.bytesRead - bytesBefore);
    }
    state.counters["ours_ns"] = quantile(seconds, 0.5) * 1e9;
    state.counters["reads"] = static_cast<double>(reads);
    state.counters["bytes"] = static_cast<double>(bytes);
    state.counters["runs"] = static_cast<double>(seconds.size());
}

}  // namespace

void addOpeningBenchmarks() {
    addBenchmark("open_opendml", openOpenDml);
    addBenchmark("open_idx1", openIdx1);
    addBenchmark("refuse_foreign", refuseForeign, 21);
    addBenchmark("memory_opendml", openDmlMemory, 5);
    addBenchmark("memory_idx1", idx1Memory, 5);
}

}  // namespace orvantis::bench
