// Sound: requests of one second against plain reads and one copy, and the de-interleaving of float samples
// against one copy.
#include <cstring>

#include "audio/deinterleave.h"
#include "bench/series.h"
#include "simhost/plugin.h"
#include "tool/bench/bench_workloads.h"

namespace orvantis::bench {

namespace {

using simhost::tool::AudioReading;
using simhost::tool::BenchImporter;

void importAudio(benchmark::State& state, const std::string& name) {
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    AudioReading reading(importer, benchFile(name));
    const Series series = alternate(
        state, [&] { return reading.ours(); }, [&] { return reading.limit(); });
    report(state, series, static_cast<double>(reading.bytes()) / (1 << 20));
}

void importStereo16(benchmark::State& state) {
    importAudio(state, "sound-16x2.avi");
}

void importFloat8(benchmark::State& state) {
    importAudio(state, "sound-float-8.avi");
}

void deinterleave(benchmark::State& state, std::uint32_t channels) {
    constexpr std::size_t kFrames = 48000;
    constexpr int kRepeats = 20;
    const std::vector<float> source(kFrames * channels, 0.5F);
    std::vector<float> destination(kFrames * channels, 0.0F);
    std::vector<float*> buffers;
    for (std::uint32_t c = 0; c < channels; ++c) {
        buffers.push_back(destination.data() + kFrames * c);
    }
    const auto* const bytes = reinterpret_cast<const std::byte*>(source.data());
    const auto timed = [&](const auto& work) {
        const double start = simhost::tool::benchClock();
        for (int i = 0; i < kRepeats; ++i) {
            work();
            benchmark::DoNotOptimize(destination.data());
            benchmark::ClobberMemory();
        }
        return simhost::tool::benchClock() - start;
    };
    const Series series = alternate(
        state, [&] { return timed([&] { deinterleaveFloat(bytes, buffers.data(), channels, kFrames); }); },
        [&] {
            return timed([&] { std::memcpy(destination.data(), bytes, source.size() * sizeof(float)); });
        });
    const double mebibytes = static_cast<double>(source.size() * sizeof(float)) * kRepeats / (1 << 20);
    report(state, series, mebibytes);
}

void deinterleave2(benchmark::State& state) {
    deinterleave(state, 2);
}

void deinterleave8(benchmark::State& state) {
    deinterleave(state, 8);
}

}  // namespace

void addAudioBenchmarks() {
    addBenchmark("audio_16x2", importStereo16, 15);
    addBenchmark("audio_float_8", importFloat8, 15);
    addBenchmark("deinterleave_2", deinterleave2, 31);
    addBenchmark("deinterleave_8", deinterleave8, 31);
}

}  // namespace orvantis::bench
