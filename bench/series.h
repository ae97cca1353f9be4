// Pairs of measurements, ours and what it is compared with, taken in turns so that whatever else the machine
// does meets both. The figure is the quotient of the medians; the quartiles of the pairs' quotients tell how
// far it can be trusted.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

namespace orvantis::bench {

inline constexpr int kRuns = 7;

/// Of an unsorted list that is not empty; `part` 0.5 is the median.
double quantile(std::vector<double> values, double part);

struct Series {
    std::vector<double> ours;  ///< seconds
    std::vector<double> peer;  ///< seconds

    double oursMedian() const { return quantile(ours, 0.5); }
    double peerMedian() const { return quantile(peer, 0.5); }
};

/// Runs `ours` and `peer` in turns within the state's iterations. Each returns seconds. A first round is not
/// counted.
Series alternate(benchmark::State& state, const std::function<double()>& ours,
                 const std::function<double()>& peer);

/// Puts the medians (nanoseconds for each of `units`), the quotient peer / ours and its quartiles into the
/// state's counters.
void report(benchmark::State& state, const Series& series, double units);

/// Registers a benchmark of kRuns rounds.
void addBenchmark(const std::string& name, void (*function)(benchmark::State&), int rounds = kRuns);

/// Path of a clip, see bench_files.h.
std::string benchFile(const std::string& name);
/// Path of a built module.
std::string modulePath(const std::string& name);

// One registration for each source file.
void addOpeningBenchmarks();
void addFrameBenchmarks();
void addAudioBenchmarks();
void addCallBenchmarks();
void addAsyncBenchmarks();
void addListBenchmarks();
void addLogBenchmarks();
void addFirstOpeningBenchmarks();

}  // namespace orvantis::bench
