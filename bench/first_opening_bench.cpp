// Opening clips into memory that the process has not touched before, as a host does that opens a clip for the
// first time. This is where the cost of each frame has to stay the same however many there are: in memory
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

// What a clip costs beyond one of a single frame, for each frame. All lengths take turns.
void openAsFramesGrow(benchmark::State& state) {
    const simhost::Plugin plugin(modulePath("ImporterOrvantis.prm"));
    const BenchImporter importer(plugin.entry());
    const std::string shortest = benchFile(scalingFile(1));
    std::vector<std::vector<double>> costs(std::size(kScalingFrames));
    std::vector<double> fixed;
    for ([[maybe_unused]] auto round : state) {
        double total = 0;
        const double one = timeFirstOpening(importer, shortest);
        fixed.push_back(one);
        for (std::size_t i = 0; i < costs.size(); ++i) {
            const double seconds = timeFirstOpening(importer, benchFile(scalingFile(kScalingFrames[i])));
            costs[i].push_back((seconds - one) * 1e9 / kScalingFrames[i]);
            total += seconds;
        }
        state.SetIterationTime(total);
    }
    double least = 0;
    double most = 0;
    for (std::size_t i = 0; i < costs.size(); ++i) {
        const double median = quantile(costs[i], 0.5);
        least = i == 0 ? median : std::min(least, median);
        most = i == 0 ? median : std::max(most, median);
        const std::string length = std::to_string(kScalingFrames[i]);
        state.counters["ns_per_frame_" + length] = median;
        state.counters["q1_" + length] = quantile(costs[i], 0.25);
        state.counters["q3_" + length] = quantile(costs[i], 0.75);
    }
    state.counters["fixed_us"] = quantile(fixed, 0.5) * 1e6;
    state.counters["times"] = most / least;
    state.counters["runs"] = static_cast<double>(fixed.size());
}

}  // namespace

void addFirstOpeningBenchmarks() {
    addBenchmark("open_growth", openAsFramesGrow);
}

}  // namespace orvantis::bench
