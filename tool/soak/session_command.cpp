#include "tool/soak/session_command.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <thread>

#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/soak/session_run.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;

Json toJson(const SessionRunOptions& options, const SessionReport& report, double elapsed) {
    Json wrong = Json::array();
    for (const WrongSession& session : report.wrong) {
        wrong.push_back({{"session", session.number}, {"what", session.what}});
    }
    Json counts;
    for (const NamedCount& count : kSessionCounts) {
        counts[count.name] = report.counts.*count.member;
    }
    return {{"seed", options.work.seed},
            {"first", options.work.first},
            {"jobs", options.jobs},
            {"good", report.wrong.empty()},
            {"counts", counts},
            {"seconds", elapsed},
            {"processSeconds", report.seconds},
            {"wrong", wrong}};
}

int playAlone(const GlobalOptions& global, const SessionWork& work) {
    std::string log;
    const bool good = playOne(global, work, log);
    (void)std::fputs(log.c_str(), stdout);
    return good ? kSuccess : kBrokenRule;
}

}  // namespace

int runSessionWords(const GlobalOptions& global, const SessionWords& words, std::uint64_t seed,
                    const std::string& output) {
    SessionRunOptions options;
    options.work = {seed, words.first, words.sessions, words.sabotage};
    if (!words.child.empty()) {
        playGroup(global, options.work, words.child);
        return kSuccess;
    }
    if (words.session) {
        options.work.first = *words.session;
        return playAlone(global, options.work);
    }
    checkOutput(output);
    options.jobs = words.jobs != 0 ? words.jobs : std::clamp(std::thread::hardware_concurrency(), 1u, 4u);
    options.timeout = words.timeout;
    std::FILE* const text = global.json && output.empty() ? stderr : stdout;
    const auto begin = Clock::now();
    SessionReport report;
    {
        Progress progress(global.progress || stderrIsTerminal(), "sessions", words.sessions);
        report = runSessions(
            global, options,
            [&](const WrongSession& session) {
                (void)std::fprintf(text, "session %llu: %s\n",
                                   static_cast<unsigned long long>(session.number), session.what.c_str());
                (void)std::fflush(text);
            },
            [&](std::uint64_t count) { progress.advance(count); });
    }
    const double elapsed = std::chrono::duration<double>(Clock::now() - begin).count();
    const SessionCounts& counts = report.counts;
    (void)std::fprintf(
        text,
        "seed %llu: %llu sessions from %llu on, %llu of them with a damaged file and %llu with several "
        "threads\n"
        "%llu calls, %llu refused; %llu frames, %llu of them asynchronous; %llu sample frames; %llu faults "
        "struck\n"
        "%.1f s in %s, %.1f s of their time, %.3f ms a session\n",
        static_cast<unsigned long long>(seed), static_cast<unsigned long long>(counts.sessions),
        static_cast<unsigned long long>(words.first), static_cast<unsigned long long>(counts.damaged),
        static_cast<unsigned long long>(counts.threaded), static_cast<unsigned long long>(counts.calls),
        static_cast<unsigned long long>(counts.refused), static_cast<unsigned long long>(counts.frames),
        static_cast<unsigned long long>(counts.asyncFrames),
        static_cast<unsigned long long>(counts.sampleFrames), static_cast<unsigned long long>(counts.faults),
        elapsed, counted(options.jobs, "process", "processes").c_str(), report.seconds,
        counts.sessions == 0 ? 0.0 : 1000 * report.seconds / static_cast<double>(counts.sessions));
    if (report.wrong.empty()) {
        (void)std::fprintf(text, "nothing is wrong\n");
    } else {
        (void)std::fprintf(text, "wrong; again one by one: importer_host soak --seed %llu --session %llu\n",
                           static_cast<unsigned long long>(seed),
                           static_cast<unsigned long long>(report.wrong.front().number));
    }
    if (global.json) {
        writeAnswer(output, jsonText(toJson(options, report, elapsed)));
    }
    return report.wrong.empty() ? kSuccess : kBrokenRule;
}

}  // namespace simhost::tool
