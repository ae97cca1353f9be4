// What the log costs while it is off: the plug-in against one built without a single call of the log.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "bench/series.h"
#include "simhost/plugin.h"
#include "tests/support/temp_folder.h"
#include "tool/bench/bench_workloads.h"

namespace orvantis::bench {

namespace {

using simhost::tool::BenchImporter;
using simhost::tool::FrameCalls;

// Differences of a few nanoseconds are also made by where a module and its memory happen to lie. Several
// copies of each plug-in, loaded side by side, tell how large those are.
constexpr std::size_t kCopies = 4;
constexpr int kRounds = 201;

/// One loaded copy of a plug-in, a clip opened through it, and the times of its rounds.
class Runner {
 public:
    explicit Runner(const std::filesystem::path& module)
        : m_plugin(module.string()),
          m_importer(m_plugin.entry()),
          m_calls(m_importer, benchFile("calls.avi")) {}

    double run() { return m_calls.ours(); }
    void measure() { m_seconds.push_back(run()); }
    double last() const { return m_seconds.back(); }
    double median() const { return quantile(m_seconds, 0.5); }
    std::uint32_t calls() const noexcept { return m_calls.calls(); }

 private:
    simhost::Plugin m_plugin;
    BenchImporter m_importer;
    FrameCalls m_calls;
    std::vector<double> m_seconds;
};

using Runners = std::vector<std::unique_ptr<Runner>>;

/// Median of the copies' medians, seconds.
double typical(std::span<const std::unique_ptr<Runner>> copies) {
    std::vector<double> medians;
    for (const auto& copy : copies) {
        medians.push_back(copy->median());
    }
    return quantile(medians, 0.5);
}

/// By what part the slowest copy takes longer than the fastest.
double spreadOf(std::span<const std::unique_ptr<Runner>> copies) {
    const auto [fastest, slowest] = std::minmax_element(
        copies.begin(), copies.end(), [](const auto& a, const auto& b) { return a->median() < b->median(); });
    return (*slowest)->median() / (*fastest)->median() - 1;
}

void logOff(benchmark::State& state) {
    const test::TempFolder folder;
    Runners runners;  // the copies with the log, then those without
    for (const char* module : {"ImporterOrvantisWithLog", "ImporterOrvantisWithoutLog"}) {
        for (std::size_t i = 0; i < kCopies; ++i) {
            // The system loads one file only once.
            const auto copy = folder / (module + std::to_string(i) + ".prm");
            std::filesystem::copy_file(modulePath(std::string(module) + ".prm"), copy);
            runners.push_back(std::make_unique<Runner>(copy));
            (void)runners.back()->run();
        }
    }
    // Whoever comes first in a round finds the caches differently: the order goes round, and with and without
    // take turns.
    std::size_t first = 0;
    for ([[maybe_unused]] auto round : state) {
        for (std::size_t i = 0; i < runners.size(); ++i) {
            const std::size_t turn = (first + i) % runners.size();
            Runner& runner = *runners[turn % 2 * kCopies + turn / 2];
            runner.measure();
        }
        ++first;
        state.SetIterationTime(runners.front()->last());
    }
    const std::span<const std::unique_ptr<Runner>> all(runners);
    const auto with = all.first(kCopies);
    const auto without = all.last(kCopies);
    const double calls = runners.front()->calls();
    state.counters["with_ns"] = typical(with) / calls * 1e9;
    state.counters["without_ns"] = typical(without) / calls * 1e9;
    state.counters["difference"] = typical(with) / typical(without) - 1;
    state.counters["noise"] = std::max(spreadOf(with), spreadOf(without));
}

}  // namespace

void addLogBenchmarks() {
    addBenchmark("log_off", logOff, kRounds);
}

}  // namespace orvantis::bench
