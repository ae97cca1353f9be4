// What the log costs while it is off: the plug-in against one built without a single call of the log.
#include <iterator>
#include <vector>

#include "bench/series.h"
#include "simhost/plugin.h"
#include "simhost/tool/bench_workloads.h"

namespace orvantis::bench {

namespace {

using simhost::tool::BenchImporter;
using simhost::tool::FrameCalls;

// Differences of a few nanoseconds are also made by where a module happens to lie in memory. A second copy of
// the plug-in tells how large those are: all three take turns.
void logOff(benchmark::State& state) {
    const simhost::Plugin with(modulePath("ImporterOrvantis.prm"));
    const simhost::Plugin copy(modulePath("ImporterOrvantisCopy.prm"));
    const simhost::Plugin without(modulePath("ImporterOrvantisWithoutLog.prm"));
    const BenchImporter importerWith(with.entry());
    const BenchImporter importerCopy(copy.entry());
    const BenchImporter importerWithout(without.entry());
    const std::string path = benchFile("calls.avi");
    FrameCalls ours(importerWith, path);
    FrameCalls twin(importerCopy, path);
    FrameCalls peer(importerWithout, path);
    // Whoever comes first in a round finds the caches differently: the order goes round.
    FrameCalls* const runners[] = {&ours, &twin, &peer};
    for (FrameCalls* runner : runners) runner->ours();
    Series series;
    std::vector<double> differences;
    std::vector<double> noise;
    std::size_t first = 0;
    for ([[maybe_unused]] auto round : state) {
        double seconds[std::size(runners)] = {};
        for (std::size_t i = 0; i < std::size(runners); ++i) {
            const std::size_t which = (first + i) % std::size(runners);
            seconds[which] = runners[which]->ours();
        }
        ++first;
        series.ours.push_back(seconds[0]);
        series.peer.push_back(seconds[2]);
        differences.push_back(seconds[0] / seconds[2] - 1);
        noise.push_back(seconds[0] / seconds[1] - 1);
        state.SetIterationTime(seconds[0]);
    }
    report(state, series, ours.calls());
    state.counters["difference"] = quantile(differences, 0.5);
    state.counters["difference_q1"] = quantile(differences, 0.25);
    state.counters["difference_q3"] = quantile(differences, 0.75);
    state.counters["noise"] = quantile(noise, 0.5);
    state.counters["noise_q1"] = quantile(noise, 0.25);
    state.counters["noise_q3"] = quantile(noise, 0.75);
}

}  // namespace

void addLogBenchmarks() {
    addBenchmark("log_off", logOff, 41);
}

}  // namespace orvantis::bench
