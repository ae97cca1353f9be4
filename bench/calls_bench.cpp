// What counting a host call on an importer costs: entering and leaving, without anything between.
#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

#include "bench/series.h"
#include "importer/importer_calls.h"
#include "tool/bench/bench_workloads.h"

namespace orvantis::bench {

namespace {

constexpr int kCalls = 200'000;
constexpr int kRounds = 15;

/// Importers as the host holds them, none with a file.
class Importers {
 public:
    explicit Importers(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            m_importers.push_back(publishImporter(std::make_unique<OrvantisImporter>(nullptr)));
        }
    }
    Importers(const Importers&) = delete;
    Importers& operator=(const Importers&) = delete;
    ~Importers() {
        for (OrvantisImporter* const importer : m_importers) {
            closeImporter(importer);
        }
    }

    /// Calls on every `step`-th importer in turn, from the one numbered `first` on. Seconds.
    double call(std::size_t first, std::size_t step) const {
        const double start = simhost::tool::benchClock();
        std::size_t next = first;
        for (int i = 0; i < kCalls; ++i) {
            const ImporterCall call(m_importers[next]);
            benchmark::DoNotOptimize(&call.importer());
            next += step;
            if (next >= m_importers.size()) {
                next = first;
            }
        }
        return simhost::tool::benchClock() - start;
    }

 private:
    std::vector<OrvantisImporter*> m_importers;
};

/// Nanoseconds a call, the median of all rounds.
template <class Round>
double nanoseconds(benchmark::State& state, Round round) {
    round();
    std::vector<double> seconds;
    for (int i = 0; i < kRounds; ++i) {
        seconds.push_back(round());
    }
    state.SetIterationTime(seconds.back());
    return quantile(seconds, 0.5) / kCalls * 1e9;
}

void countedCall(benchmark::State& state) {
    const Importers one(1);
    const Importers many(1000);
    const Importers two(2);
    for ([[maybe_unused]] auto all : state) {
        state.counters["one_ns"] = nanoseconds(state, [&] { return one.call(0, 1); });
        state.counters["thousand_ns"] = nanoseconds(state, [&] { return many.call(0, 1); });
        // Each thread with a file of its own, as clips on different tracks are played.
        state.counters["threads_ns"] = nanoseconds(state, [&] {
            double other = 0;
            std::thread thread([&] { other = two.call(1, 2); });
            const double own = two.call(0, 2);
            thread.join();
            return std::max(own, other);
        });
    }
}

}  // namespace

void addCallBenchmarks() {
    addBenchmark("counted_call", countedCall, 1);
}

}  // namespace orvantis::bench
