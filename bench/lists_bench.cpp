// What the compact chunk lists cost while a clip is used, against a plug-in of the same sources with plain
// lists of whole entries: frames, sound, and random positions.
#include <random>
#include <vector>

#include "avi/chunk_list_builder.h"
#include "bench/bench_files.h"
#include "bench/series.h"
#include "simhost/plugin.h"
#include "tests/unit/avi/plain_chunk_list.h"
#include "tool/bench/bench_workloads.h"

namespace orvantis::bench {

namespace {

using simhost::tool::AudioReading;
using simhost::tool::BenchImporter;
using simhost::tool::FrameCalls;

constexpr std::uint32_t kFrames = 100'000;
constexpr const char* kCompact = "ImporterOrvantisWithLog.prm";  // built in the same way
constexpr const char* kPlain = "ImporterOrvantisPlainLists.prm";

template <typename Reading>
struct Opened {
    explicit Opened(const char* module)
        : plugin(modulePath(module)),
          importer(plugin.entry()),
          reading(importer, benchFile(scalingFile(kFrames))) {}

    simhost::Plugin plugin;
    BenchImporter importer;
    Reading reading;
};

void listFrameCall(benchmark::State& state) {
    Opened<FrameCalls> compact(kCompact);
    Opened<FrameCalls> plain(kPlain);
    const Series series = alternate(
        state, [&] { return compact.reading.ours(); }, [&] { return plain.reading.ours(); });
    report(state, series, compact.reading.calls());
}

void listSecondOfSound(benchmark::State& state) {
    Opened<AudioReading> compact(kCompact);
    Opened<AudioReading> plain(kPlain);
    const Series series = alternate(
        state, [&] { return compact.reading.ours(); }, [&] { return plain.reading.ours(); });
    constexpr double kSeconds = kFrames / 100.0;  // the clip's frame rate
    report(state, series, kSeconds);
}

template <typename Builder>
auto listOfAMillion() {
    std::minstd_rand random(5);
    Builder builder;
    for (std::uint64_t i = 0; i < 1'000'000; ++i) {
        builder.add(i / 250'000 * 1'000'000'000, static_cast<std::uint32_t>(i % 250'000 * 3984),
                    static_cast<std::uint32_t>(1000 + random() % 1000), true);
    }
    return builder.finish();
}

template <typename List>
double timeLookups(const List& list, const std::vector<std::uint64_t>& positions) {
    std::uint64_t sum = 0;
    const double start = simhost::tool::benchClock();
    for (const std::uint64_t position : positions) {
        sum += (*list.findByPosition(position)).offset;
    }
    benchmark::DoNotOptimize(sum);
    return simhost::tool::benchClock() - start;
}

void listRandomPosition(benchmark::State& state) {
    const ChunkList compact = listOfAMillion<ChunkListBuilder>();
    const PlainChunkList plain = listOfAMillion<PlainChunkListBuilder>();
    std::mt19937_64 random(6);
    std::vector<std::uint64_t> positions(100'000);
    for (std::uint64_t& position : positions) {
        position = random() % plain.totalBytes();
    }
    const Series series = alternate(
        state, [&] { return timeLookups(compact, positions); },
        [&] { return timeLookups(plain, positions); });
    report(state, series, static_cast<double>(positions.size()));
}

}  // namespace

void addListBenchmarks() {
    addBenchmark("list_frame_call", listFrameCall, 15);
    addBenchmark("list_second_of_sound", listSecondOfSound, 15);
    addBenchmark("list_random_position", listRandomPosition, 15);
}

}  // namespace orvantis::bench
