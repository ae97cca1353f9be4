#include "bench/series.h"

#include <algorithm>
#include <cstdlib>

namespace orvantis::bench {

double quantile(std::vector<double> values, double part) {
    std::sort(values.begin(), values.end());
    const double place = part * static_cast<double>(values.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const std::size_t above = std::min(below + 1, values.size() - 1);
    return values[below] + (place - static_cast<double>(below)) * (values[above] - values[below]);
}

Series alternate(benchmark::State& state, const std::function<double()>& ours,
                 const std::function<double()>& peer) {
    ours();
    peer();
    Series series;
    for ([[maybe_unused]] auto round : state) {
        series.ours.push_back(ours());
        series.peer.push_back(peer());
        state.SetIterationTime(series.ours.back());
    }
    return series;
}

void report(benchmark::State& state, const Series& series, double units) {
    constexpr double kNanoseconds = 1e9;
    std::vector<double> quotients;
    for (std::size_t i = 0; i < series.ours.size(); ++i) {
        quotients.push_back(series.peer[i] / series.ours[i]);
    }
    state.counters["ours_ns"] = series.oursMedian() * kNanoseconds / units;
    state.counters["peer_ns"] = series.peerMedian() * kNanoseconds / units;
    state.counters["ratio"] = series.peerMedian() / series.oursMedian();
    state.counters["ratio_q1"] = quantile(quotients, 0.25);
    state.counters["ratio_q3"] = quantile(quotients, 0.75);
    state.counters["runs"] = static_cast<double>(series.ours.size());
}

void addBenchmark(const std::string& name, void (*function)(benchmark::State&), int rounds) {
    benchmark::RegisterBenchmark(name.c_str(), function)
        ->Iterations(rounds)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

std::string benchFile(const std::string& name) {
    const char* const folder = std::getenv("ORVANTIS_BENCH_FILES");
    return std::string(folder != nullptr ? folder : ".") + "/" + name;
}

std::string modulePath(const std::string& name) {
    return std::string(ORVANTIS_BENCH_MODULES) + "/" + name;
}

}  // namespace orvantis::bench
