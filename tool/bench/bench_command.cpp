// importer_host bench: times a plug-in on one clip, next to what the machine could do at best.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "host/result_codes.h"
#include "tool/bench/bench_clip.h"
#include "tool/bench/bench_workloads.h"
#include "tool/commands.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::ordered_json;

struct BenchOptions {
    std::string file;
    std::string what = "all";
    std::string output;
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
        throwIfInterrupted();
        const double first = ours();
        const double second = limit();
        if (i == 0) {
            continue;
        }
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

void print(std::FILE* text, const char* what, const char* unit, const Json& figures) {
    (void)std::fprintf(text, "%-34s %10.2f us %s, at best %10.2f us: ratio %.3f (%.3f to %.3f)\n", what,
                       figures["ours_us"].get<double>(), unit, figures["limit_us"].get<double>(),
                       figures["ratio"].get<double>(), figures["ratio_q1"].get<double>(),
                       figures["ratio_q3"].get<double>());
}

class Bench {
 public:
    /// `text` is for the figures in words.
    Bench(const BenchImporter& importer, const BenchOptions& options, std::FILE* text)
        : m_importer(importer), m_options(options), m_text(text) {}

    void run() {
        if (wanted("open")) {
            open();
        }
        if (wanted("frames")) {
            frames();
        }
        if (wanted("calls")) {
            calls();
        }
        if (wanted("audio")) {
            audio();
        }
        if (wanted("async")) {
            async();
        }
    }
    const Json& figures() const noexcept { return m_figures; }

 private:
    bool wanted(const char* what) const { return m_options.what == "all" || m_options.what == what; }

    void open() {
        std::vector<double> times;
        times.reserve(static_cast<std::size_t>(m_options.runs));
        for (int i = 0; i < m_options.runs; ++i) {
            times.push_back(timeOpening(m_importer, m_options.file));
        }
        m_figures["open"] = {{"ours_us", quantile(times, 0.5) * 1e6}};
        (void)std::fprintf(m_text, "%-34s %10.2f us\n", "open and describe", quantile(times, 0.5) * 1e6);
    }

    void frames() {
        FrameReading reading(m_importer, m_options.file);
        m_figures["frames"] = alternate(
            m_options.runs, reading.frames(), [&] { return reading.ours(); },
            [&] { return reading.limit(); });
        print(m_text, "frames against plain reads", "a frame", m_figures["frames"]);
    }

    void calls() {
        FrameCalls calling(m_importer, m_options.file);
        m_figures["calls"] = alternate(
            m_options.runs, calling.calls(), [&] { return calling.ours(); }, [&] { return calling.limit(); });
        print(m_text, "calls against reads and host calls", "a call", m_figures["calls"]);
    }

    void audio() {
        if (m_options.what == "all" && PlainFile(m_options.file, true).chunks().empty()) {
            return;
        }
        AudioReading reading(m_importer, m_options.file);
        const double mebibytes = static_cast<double>(reading.bytes()) / (1 << 20);
        m_figures["audio"] = alternate(
            m_options.runs, mebibytes, [&] { return reading.ours(); }, [&] { return reading.limit(); });
        print(m_text, "sound against reads and one copy", "a MiB", m_figures["audio"]);
    }

    void async() {
        AsyncPlayback playback(m_importer, m_options.file);
        const double decodes = m_options.decodeMicroseconds * 1e-6 * playback.frames();
        m_figures["async"] = alternate(
            m_options.runs, playback.frames(), [&] { return playback.ours(); },
            [&] { return std::max(playback.reads(true), decodes); });
        print(m_text, "ahead against the longer step", "a frame", m_figures["async"]);
        m_figures["async_bare"] = alternate(
            m_options.runs, playback.frames(), [&] { return playback.ours(); },
            [&] { return playback.pipeline(m_options.decodeMicroseconds * 1e-6); });
        print(m_text, "ahead against a bare pipeline", "a frame", m_figures["async_bare"]);
    }

    const BenchImporter& m_importer;
    const BenchOptions& m_options;
    std::FILE* m_text;
    Json m_figures = Json::object();
};

// A measurement of calls that fail says nothing. Only opening can be timed of a file that is refused, too.
void requireDescribable(const BenchImporter& importer, const BenchOptions& options) {
    const std::int32_t result = BenchClip(importer, options.file).tryDescribe();
    if (options.what != "open" && result != host::imNoErr && result != host::imIterateStreams) {
        throw refusedClip(options.file, result);
    }
    if (result != host::imNoErr && result != host::imIterateStreams) {
        (void)std::fprintf(stderr,
                           "importer_host: the plug-in refuses '%s': what is timed is how long that takes\n",
                           options.file.c_str());
    }
}

int runBench(const GlobalOptions& global, const BenchOptions& options) {
    requireClipFile(options.file);
    checkOutput(options.output);
    // No HostedRun: its host watches the plug-in, which is to be timed.
    const std::unique_ptr<Plugin> plugin = loadPlugin(global);
    Json figures;
    {
        std::optional<LogSwitch> logOff(std::in_place, false);
        const BenchImporter importer(plugin->entry());
        logOff.reset();
        requireDescribable(importer, options);
        Bench bench(importer, options, global.json && options.output.empty() ? stderr : stdout);
        bench.run();
        figures = bench.figures();
    }
    if (global.json) {
        writeAnswer(options.output, jsonText(figures));
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
    parser->add_option("--out", options->output, "File for the JSON object (default: the standard output)");
    return {parser,
            [options](const GlobalOptions& global) { return runBench(global, *options); },
            {.profile = false, .log = false, .progress = false}};
}

}  // namespace simhost::tool
