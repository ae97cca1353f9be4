// What the log costs while it is off: the plug-in against one built without a single call of the log.
#include "bench/series.h"
#include "simhost/plugin.h"
#include "simhost/tool/bench_workloads.h"

namespace orvantis::bench {

namespace {

using simhost::tool::BenchImporter;
using simhost::tool::FrameCalls;

void logOff(benchmark::State& state) {
    const simhost::Plugin with(modulePath("ImporterOrvantis.prm"));
    const simhost::Plugin without(modulePath("ImporterOrvantisWithoutLog.prm"));
    const BenchImporter importerWith(with.entry());
    const BenchImporter importerWithout(without.entry());
    const std::string path = benchFile("calls.avi");
    FrameCalls ours(importerWith, path);
    FrameCalls peer(importerWithout, path);
    const Series series = alternate(
        state, [&] { return ours.ours(); }, [&] { return peer.ours(); });
    report(state, series, ours.calls());
    std::vector<double> differences;
    for (std::size_t i = 0; i < series.ours.size(); ++i) {
        differences.push_back((series.ours[i] - series.peer[i]) / series.peer[i]);
    }
    state.counters["difference"] = quantile(differences, 0.5);
    state.counters["difference_q1"] = quantile(differences, 0.25);
    state.counters["difference_q3"] = quantile(differences, 0.75);
}

}  // namespace

void addLogBenchmarks() {
    addBenchmark("log_off", logOff, 41);
}

}  // namespace orvantis::bench
