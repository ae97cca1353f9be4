// importer_host bench: times a plug-in on one clip, next to what the machine could do at best.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool/bench/bench_workloads.h"
#include "tool/commands.h"
#include "tool/shared/base/hosted_run.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::json;

struct BenchOptions {
    std::string file;
    std::string what = "all";
    std::string json;
    int runs = 7;
    double decodeMicroseconds = 0;
};

double quantile(std::vector<double> values, double part) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(std::lround(part * static_cast<double>(values.size() - 1)))];
}

// Runs both in turns, after a first round that is not counted.
Json alternate(int runs, double units, const std::function<double()>& ours,
               const std::function<double()>& limit) {
    std::vector<double> mine;
    std::vector<double> best;
    std::vector<double> quotients;
    for (int i = 0; i <= runs; ++i) {
        const double first = ours();
        const double second = limit();
        if (i == 0) continue;
        mine.push_back(first);
        best.push_back(second);
        quotients.push_back(second / first);
    }
    constexpr double kMicroseconds = 1e6;
    return {{"ours_us", quantile(mine, 0.5) * kMicroseconds / units},
            {"limit_us", quantile(best, 0.5) * kMicroseconds / units},
            {"ratio", quantile(best, 0.5) / quantile(mine, 0.5)},
            {"ratio_q1", quantile(quotients, 0.25)},
            {"ratio_q3", quantile(quotients, 0.75)},
            {"runs", runs}};
}

void print(const char* what, const char* unit, const Json& figures) {
    std::printf("%-34s %10.2f us %s, at best %10.2f us: ratio %.3f (%.3f to %.3f)\n", what,
                figures["ours_us"].get<double>(), unit, figures["limit_us"].get<double>(),
                figures["ratio"].get<double>(), figures["ratio_q1"].get<double>(),
                figures["ratio_q3"].get<double>());
}

class Bench {
 public:
    Bench(const BenchImporter& importer, const BenchOptions& options)
        : m_importer(importer), m_options(options) {}

    void run() {
        if (wanted("open")) open();
        if (wanted("frames")) frames();
        if (wanted("calls")) calls();
        if (wanted("audio")) audio();
        if (wanted("async")) async();
    }
    const Json& figures() const noexcept { return m_figures; }

 private:
    bool wanted(const char* what) const { return m_options.what == "all" || m_options.what == what; }

    void open() {
        std::vector<double> times;
        times.reserve(static_cast<std::size_t>(m_options.runs));
        for (int i = 0; i < m_options.runs; ++i) times.push_back(timeOpening(m_importer, m_options.file));
        m_figures["open"] = {{"ours_us", quantile(times, 0.5) * 1e6}};
        std::printf("%-34s %10.2f us\n", "open and describe", quantile(times, 0.5) * 1e6);
    }

    void frames() {
        FrameReading reading(m_importer, m_options.file);
        m_figures["frames"] = alternate(
            m_options.runs, reading.frames(), [&] { return reading.ours(); },
            [&] { return reading.limit(); });
        print("frames against plain reads", "a frame", m_figures["frames"]);
    }

    void calls() {
        FrameCalls calling(m_importer, m_options.file);
        m_figures["calls"] = alternate(
            m_options.runs, calling.calls(), [&] { return calling.ours(); }, [&] { return calling.limit(); });
        print("calls against reads and host calls", "a call", m_figures["calls"]);
    }

    void audio() {
        if (m_options.what == "all" && PlainFile(m_options.file, true).chunks().empty()) return;
        AudioReading reading(m_importer, m_options.file);
        const double mebibytes = static_cast<double>(reading.bytes()) / (1 << 20);
        m_figures["audio"] = alternate(
            m_options.runs, mebibytes, [&] { return reading.ours(); }, [&] { return reading.limit(); });
        print("sound against reads and one copy", "a MiB", m_figures["audio"]);
    }

    void async() {
        AsyncPlayback playback(m_importer, m_options.file);
        const double decodes = m_options.decodeMicroseconds * 1e-6 * playback.frames();
        m_figures["async"] = alternate(
            m_options.runs, playback.frames(), [&] { return playback.ours(); },
            [&] { return std::max(playback.reads(true), decodes); });
        print("ahead against the longer step", "a frame", m_figures["async"]);
        m_figures["async_bare"] = alternate(
            m_options.runs, playback.frames(), [&] { return playback.ours(); },
            [&] { return playback.pipeline(m_options.decodeMicroseconds * 1e-6); });
        print("ahead against a bare pipeline", "a frame", m_figures["async_bare"]);
    }

    const BenchImporter& m_importer;
    const BenchOptions& m_options;
    Json m_figures = Json::object();
};

int runBench(const GlobalOptions& global, const BenchOptions& options) {
    // No HostedRun: its host watches the plug-in, which is to be timed.
    const std::unique_ptr<Plugin> plugin = loadPlugin(global);
    Json figures;
    {
        const BenchImporter importer(plugin->entry());
        Bench bench(importer, options);
        bench.run();
        figures = bench.figures();
    }
    if (!options.json.empty()) {
        const std::string text = figures.dump(2) + "\n";
        writeFile(options.json, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    }
    return kSuccess;
}

}  // namespace

Command addBenchCommand(CLI::App& app) {
    auto options = std::make_shared<BenchOptions>();
    CLI::App* parser =
        app.add_subcommand("bench", "Time the plug-in on a clip, next to what the machine could do at best");
    parser->add_option("FILE", options->file, "AVI file")->required();
    parser->add_option("--what", options->what, "open, frames, calls, audio, async or all")
        ->capture_default_str()
        ->check(CLI::IsMember({"open", "frames", "calls", "audio", "async", "all"}));
    parser->add_option("--runs", options->runs, "Rounds that are counted")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000));
    parser->add_option("--decode-us", options->decodeMicroseconds,
                       "How long the codec takes for a frame, for async");
    parser->add_option("--json", options->json, "Write the figures to this file too");
    return {parser, [options](const GlobalOptions& global) { return runBench(global, *options); }};
}

}  // namespace simhost::tool
