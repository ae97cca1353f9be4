// Opening clips into memory that the process has not touched before, as a host does that opens a clip for the
// first time. This is where each further frame has to cost the same however many there are: in memory
// that the allocator kept from the last opening a short clip would be measured inside the processor's caches.
#include <algorithm>
#include <vector>

#include "bench/allocation_count.h"
#include "bench/bench_files.h"
#include "bench/series.h"
#include "simhost/plugin.h"
#include "tool/bench/bench_workloads.h"

namespace orvantis::bench {

namespace {

using simhost::tool::BenchImporter;
using simhost::tool::timeOpening;

// An untimed opening goes ahead, so that each clip finds the plug-in's code and its own index as warm as
// every other does.
double timeFirstOpening(const BenchImporter& importer, const std::string& path) {
    (void)timeOpening(importer, path);
    return timeOpening(importer, path);
}

// What each further frame costs: by how much the longer of two clips takes longer, for each frame that it has
// more. On a straight line that is the same everywhere. All lengths take turns.
void openAsFramesGrow(benchmark::State& state) {
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    constexpr std::size_t kLengths = std::size(kScalingFrames);
    std::vector<double> times[kLengths];
    std::vector<double> slopes[kLengths - 1];
    for ([[maybe_unused]] auto round : state) {
        double total = 0;
        for (std::size_t i = 0; i < kLengths; ++i) {
            times[i].push_back(timeFirstOpening(importer, benchFile(scalingFile(kScalingFrames[i]))));
            total += times[i].back();
        }
        for (std::size_t i = 0; i + 1 < kLengths; ++i) {
            const double frames = kScalingFrames[i + 1] - kScalingFrames[i];
            slopes[i].push_back((times[i + 1].back() - times[i].back()) * 1e9 / frames);
        }
        state.SetIterationTime(total);
    }
    for (std::size_t i = 0; i < kLengths; ++i) {
        state.counters["us_" + std::to_string(kScalingFrames[i])] = quantile(times[i], 0.5) * 1e6;
    }
    double least = 0;
    double most = 0;
    for (std::size_t i = 0; i + 1 < kLengths; ++i) {
        const double median = quantile(slopes[i], 0.5);
        least = i == 0 ? median : std::min(least, median);
        most = i == 0 ? median : std::max(most, median);
        const std::string length = std::to_string(kScalingFrames[i + 1]);
        state.counters["ns_per_frame_to_" + length] = median;
    }
    state.counters["times"] = most / least;
    state.counters["runs"] = static_cast<double>(times[0].size());
}

}  // namespace

void addFirstOpeningBenchmarks() {
    addBenchmark("open_growth", openAsFramesGrow);
}

}  // namespace orvantis::bench
