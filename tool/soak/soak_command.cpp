// soak: an endurance run. Plays with several files at random for minutes and watches handles, memory, and
// what the plug-in holds of its host and of the codec library.
#include <CLI/CLI.hpp>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <forward_list>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tool/commands.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/process_usage.h"
#include "tool/shared/base/temporary_path.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/soak/session_command.h"
#include "tool/soak/soak_codec_account.h"
#include "tool/soak/soak_plot.h"
#include "tool/soak/soak_run.h"
#include "tool/soak/soak_samples.h"

namespace simhost::tool {
namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::ordered_json;
using Seconds = std::chrono::duration<double>;

struct SoakOptions {
    std::vector<std::string> files;
    double minutes = 1.0;
    double interval = 0.0;
    std::size_t samples = 0;
    std::uint32_t clips = 4;
    std::uint32_t pause = 0;
    std::uint64_t seed = 1;
    std::string plot;
    std::string output;
    std::FILE* text = stdout;  ///< for what is told in words
    std::string lose;          // for the tests of this command
    SessionWords sessions;     ///< instead of minutes
};

constexpr double kSamplesWanted = 60.0;
constexpr double kShortestInterval = 0.2;
constexpr std::size_t kLostBytes = std::size_t{1} << 20;

// A fault of the program itself, asked for so that a test can see it noticed.
void lose(const std::string& what, const HostedRun& hosted, std::uint64_t newFrames) {
    if (what == "handle") {
        for (int i = 0; i < 4; ++i) {
            loseHandle();
        }
    } else if (what == "memory") {
        // Kept in reach, so that a leak checker leaves the finding to the rule.
        static std::vector<std::vector<unsigned char>> kept;
        kept.emplace_back(kLostBytes, static_cast<unsigned char>(1));
    } else if (what == "frame") {
        // 64 bytes for each frame, with the pointer to the next.
        static std::forward_list<std::array<unsigned char, 64 - sizeof(void*)>> kept;
        for (std::uint64_t i = 0; i < newFrames; ++i) {
            kept.emplace_front();
        }
    } else if (what == "block") {
        (void)hosted.importer().host().stdParms().piSuites->memFuncs->newPtr(16);
    }
}

class SoakSession {
 public:
    SoakSession(const SoakOptions& options, CodecAccount& codec, SoakTally& tally)
        : m_options(options), m_codec(codec), m_tally(tally) {}

    int run(HostedRun& hosted) {
        std::vector<SoakFile> files;
        bool playable = false;
        for (const std::string& path : m_options.files) {
            std::error_code error;
            const auto absolute = std::filesystem::absolute(pathFromUtf8(path), error);
            files.push_back(describeSoakFile(hosted.importer(), error ? path : pathToUtf8(absolute)));
            playable = playable || files.back().playable;
            if (!files.back().playable) {
                (void)std::fprintf(stderr, "importer_host: '%s' is refused, which is played with, too\n",
                                   path.c_str());
            }
        }
        if (!playable) {
            throw refusedClip(m_options.files.front(), host::imBadFile);
        }
        (void)std::fprintf(m_options.text, "seed %llu, %s at once, %s, %.2f minutes\n%s",
                           static_cast<unsigned long long>(m_options.seed),
                           counted(m_options.clips, "clip", "clips").c_str(),
                           counted(files.size(), "file", "files").c_str(), m_options.minutes,
                           soakTableHead().c_str());
        const double interval = m_options.interval > 0
                                    ? m_options.interval
                                    : std::max(kShortestInterval, m_options.minutes * 60 / kSamplesWanted);
        const auto ticks = [](double seconds) {
            return std::chrono::duration_cast<Clock::duration>(Seconds(seconds));
        };
        const auto start = Clock::now();
        const auto end = start + ticks(m_options.minutes * 60);
        SoakWork work{m_options.clips, m_options.seed, std::chrono::milliseconds(m_options.pause)};
        // A busy machine gives fewer samples in the time than the rule needs.
        for (auto now = start; now < end || m_samples.size() < m_options.samples; now = Clock::now()) {
            throwIfInterrupted();
            const auto next = now + ticks(interval);
            const auto until = now < end ? std::min(next, end) : next;
            ProcessUsage busy;
            soakRound(
                hosted.importer(), files, work, until, [&busy] { busy = processUsage(); }, m_tally);
            lose(m_options.lose, hosted, m_tally.frames - (m_samples.empty() ? 0 : m_samples.back().frames));
            addSample(hosted.host(), Seconds(Clock::now() - start).count(), busy);
            work.seed += work.clips;
        }
        return kSuccess;
    }

    const std::vector<SoakSample>& samples() const noexcept { return m_samples; }

 private:
    void addSample(const Host& host, double seconds, const ProcessUsage& busy) {
        m_codec.update();
        const HostBalance balance = host.balance();
        const ProcessUsage usage = processUsage();
        SoakSample sample;
        sample.seconds = seconds;
        sample.handles = usage.handles;
        sample.privateBytes = usage.privateBytes;
        sample.workingSet = usage.workingSet;
        sample.heapBytes = usage.heapBytes;
        sample.busyHandles = busy.handles;
        sample.busyBytes = busy.privateBytes;
        sample.hostObjects = balance.frames + balance.deliveredFrames + balance.blocks;
        for (const auto& [suite, count] : balance.suites) {
            sample.hostSuites += static_cast<std::uint64_t>(count);
        }
        sample.codecSessions = m_codec.sessions() + m_codec.initialisations();
        sample.opens = m_tally.opens;
        sample.frames = m_tally.frames;
        sample.sampleFrames = m_tally.sampleFrames;
        m_samples.push_back(sample);
        (void)std::fprintf(m_options.text, "%s", soakTableRow(sample).c_str());
        (void)std::fflush(m_options.text);
    }

    const SoakOptions& m_options;
    CodecAccount& m_codec;
    SoakTally& m_tally;
    std::vector<SoakSample> m_samples;
};

Json toJson(const Growth& growth) {
    return {{"judged", growth.judged},
            {"before", growth.before},
            {"after", growth.after},
            {"limit", growth.limit},
            {"grows", growth.grows}};
}

Json toJson(const std::vector<SoakSample>& samples) {
    Json out = Json::array();
    for (const SoakSample& sample : samples) {
        out.push_back({{"seconds", sample.seconds},
                       {"handles", sample.handles},
                       {"handlesAtWork", sample.busyHandles},
                       {"privateBytes", sample.privateBytes},
                       {"privateBytesAtWork", sample.busyBytes},
                       {"workingSet", sample.workingSet},
                       {"heapBytes", sample.heapBytes},
                       {"hostObjects", sample.hostObjects},
                       {"hostSuites", sample.hostSuites},
                       {"codecSessions", sample.codecSessions},
                       {"opens", sample.opens},
                       {"frames", sample.frames},
                       {"sampleFrames", sample.sampleFrames}});
    }
    return out;
}

int runSoak(const GlobalOptions& global, SoakOptions options) {
    if (options.sessions.asked()) {
        return runSessionWords(global, options.sessions, options.seed, options.output);
    }
    if (options.files.empty()) {
        throw ToolError(kUsage, "name the files to play, or ask for random sessions",
                        "\"importer_host help soak\" tells more");
    }
    for (const std::string& file : options.files) {
        requireClipFile(file);
    }
    checkOutput(options.plot);
    checkOutput(options.output);
    options.text = global.json && options.output.empty() ? stderr : stdout;
    std::FILE* const text = options.text;
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    const TemporaryPath calls(
        pathToUtf8(folder / ("importer_host-soak-" + std::to_string(processNumber()) + ".txt")));
    CodecAccount codec(calls.path());
    setProcessEnvironment("ORVANTIS_STANDIN_LOG", codec.path());
    HostOptions watching;
    watching.keepTrace = false;  // would grow
    SoakTally tally;
    SoakSession session(options, codec, tally);
    int code = runHosted(
        global, [&session](HostedRun& hosted) { return session.run(hosted); }, watching);
    codec.update();
    if (session.samples().empty() || code == kInterrupted) {
        return code;
    }

    const SoakVerdict verdict = judgeSamples(session.samples());
    const std::vector<std::string> messages = tally.messages();
    const bool balanced = code == kSuccess && codec.isBalanced();
    (void)std::fprintf(
        text,
        "%llu clips opened, %llu refused, %llu asynchronous importers, %llu frames, %llu sample frames, "
        "%llu wrong answers\n",
        static_cast<unsigned long long>(tally.opens), static_cast<unsigned long long>(tally.refusals),
        static_cast<unsigned long long>(tally.asyncImporters), static_cast<unsigned long long>(tally.frames),
        static_cast<unsigned long long>(tally.sampleFrames), static_cast<unsigned long long>(tally.wrong));
    for (const std::string& message : messages) {
        (void)std::fprintf(text, "wrong: %s\n", message.c_str());
    }
    if (codec.known()) {
        (void)std::fprintf(
            text,
            "codec library: %llu calls, %llu failed, at the end %lld initialisations and %lld sessions "
            "open\n",
            static_cast<unsigned long long>(codec.calls()),
            static_cast<unsigned long long>(codec.failedCalls()),
            static_cast<long long>(codec.initialisations()), static_cast<long long>(codec.sessions()));
    } else {
        (void)std::fprintf(text, "codec library: tells nothing of its calls\n");
    }
    (void)std::fprintf(text, "%s", verdictText(verdict).c_str());
    const bool good = balanced && verdict.good() && tally.wrong == 0;
    const bool judged = verdict.judged();
    (void)std::fprintf(text, "%s\n",
                       !good    ? "not good"
                       : judged ? "nothing is held, nothing grows"
                                : "nothing is held; too short to see growth: --minutes gives it longer");

    if (!options.plot.empty()) {
        char title[120];
        (void)std::snprintf(title, sizeof title, "%.1f minutes, %llu clips opened, %llu frames",
                            session.samples().back().seconds / 60,
                            static_cast<unsigned long long>(tally.opens),
                            static_cast<unsigned long long>(tally.frames));
        writeText(options.plot, soakPlot(title, session.samples()));
    }
    if (global.json) {
        const Json out = {{"seed", options.seed},
                          {"clips", options.clips},
                          {"good", good},
                          {"wrongAnswers", messages},
                          {"hostBalanced", code == kSuccess},
                          {"codec",
                           {{"known", codec.known()},
                            {"calls", codec.calls()},
                            {"initialisations", codec.initialisations()},
                            {"sessions", codec.sessions()}}},
                          {"handles", toJson(verdict.handles)},
                          {"heapBytes", toJson(verdict.heap)},
                          {"privateBytes", toJson(verdict.memory)},
                          {"samples", toJson(session.samples())}};
        writeAnswer(options.output, jsonText(out));
    }
    return good ? kSuccess : code == kSuccess ? kBrokenRule : code;
}

void addSessionOptions(CLI::App& parser, SessionWords& words) {
    parser
        .add_option(
            "--sessions", words.sessions,
            "Instead: so many short random sessions of a host, with faults, damaged files and threads")
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1} << 40));
    parser.add_option("--first", words.first, "Number of the first session")->capture_default_str();
    parser.add_option("--session", words.session, "The session of this number alone, with its log");
    parser
        .add_option("--jobs", words.jobs,
                    "Processes at a time for sessions (default: one for each processor, at most 4)")
        ->check(CLI::Range(1, 64));
    parser.add_option("--timeout", words.timeout, "Seconds that a session may take")
        ->capture_default_str()
        ->check(CLI::Range(0.1, 86400.0));
    parser.add_option("--child", words.child)->group("");
    parser.add_option("--sabotage", words.sabotage)->group("");
}

}  // namespace

Command addSoakCommand(CLI::App& app) {
    auto options = std::make_shared<SoakOptions>();
    CLI::App* parser = app.add_subcommand(
        "soak", "Play with several clips at random for minutes and watch handles, memory and balance");
    parser->add_option(
        "FILE", options->files,
        "AVI files; one that is refused is tried again and again. None with --sessions, which has "
        "files of its own");
    parser->add_option("--minutes", options->minutes, "How long; fractions are fine")
        ->capture_default_str()
        ->check(CLI::Range(0.01, 10000.0));
    parser->add_option("--interval", options->interval, "Seconds between two samples (default: 60 samples)")
        ->check(CLI::Range(0.1, 3600.0));
    parser
        ->add_option("--samples", options->samples,
                     "Go on after the minutes until there are that many samples")
        ->check(CLI::Range(0, 100000));
    parser->add_option("--clips", options->clips, "Clips open at once")
        ->capture_default_str()
        ->check(CLI::Range(1, 64));
    parser->add_option("--pause", options->pause, "Milliseconds between two actions on a clip")
        ->capture_default_str()
        ->check(CLI::Range(0, 10000));
    parser->add_option("--seed", options->seed, "Seed of the random actions")->capture_default_str();
    parser->add_option("--plot", options->plot, "Draw the course as SVG");
    parser->add_option("--out", options->output, "File for the JSON object (default: the standard output)");
    parser->add_option("--lose", options->lose)
        ->group("")
        ->check(CLI::IsMember({"handle", "memory", "block", "frame"}));
    addSessionOptions(*parser, options->sessions);
    return {parser, [options](const GlobalOptions& global) { return runSoak(global, *options); }, {}};
}

}  // namespace simhost::tool
