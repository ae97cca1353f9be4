#include "tool/soak/session_run.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <fstream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>

#include "tool/shared/base/child_process.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLook{20};
constexpr double kStartSeconds = 60;  // a machine with much to do is slow to start a process

std::string textOf(const std::string& path) {
    std::ifstream file(pathFromUtf8(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Range {
    std::uint64_t first;
    std::uint64_t count;
};

// One process with a group of sessions.
class Worker {
 public:
    Worker(const GlobalOptions& global, const SessionRunOptions& options, Range range)
        : m_range(range), m_folder(makeTemporaryFolder()), m_changed(Clock::now()) {
        std::vector<std::string> arguments = {"soak",
                                              "--sessions",
                                              std::to_string(range.count),
                                              "--first",
                                              std::to_string(range.first),
                                              "--seed",
                                              std::to_string(options.work.seed),
                                              "--child",
                                              m_folder.path(),
                                              "--plugin",
                                              pluginFile(global)};
        if (!global.codecFolder.empty()) {
            arguments.insert(arguments.end(), {"--codec-folder", global.codecFolder});
        }
        if (!options.work.sabotage.empty()) {
            arguments.insert(arguments.end(), {"--sabotage", options.work.sabotage});
        }
        try {
            m_child = std::make_unique<ChildProcess>(arguments, m_folder.path() + "/output");
        } catch (const std::runtime_error& error) {
            throw ToolError(kFailed, error.what());
        }
    }

    const Range& range() const { return m_range; }
    std::string file(const char* name) const { return m_folder.path() + "/" + name; }
    std::optional<std::uint32_t> wait(std::chrono::milliseconds patience) {
        return m_child->waitFor(patience);
    }
    void kill() { m_child->kill(); }

    // The session under way, the first before any has begun.
    std::uint64_t at() {
        const std::string text = textOf(file(kGroupAt));
        if (!text.empty() && text != m_at) {
            m_at = text;
            m_changed = Clock::now();
        }
        return m_at.empty() ? m_range.first : std::stoull(m_at);
    }
    bool begun() const { return !m_at.empty(); }
    double secondsAtIt() const { return std::chrono::duration<double>(Clock::now() - m_changed).count(); }

    // What it has told since the last look.
    std::vector<WrongSession> news() {
        std::ifstream stream(pathFromUtf8(file(kGroupWrong)), std::ios::binary);
        stream.seekg(static_cast<std::streamoff>(m_read));
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        std::vector<WrongSession> out;
        std::size_t line = 0;
        for (std::size_t end = 0; (end = text.find('\n', line)) != std::string::npos; line = end + 1) {
            const auto json = nlohmann::json::parse(text.substr(line, end - line));
            out.push_back({json["session"], json["what"]});
        }
        m_read += line;
        return out;
    }

 private:
    Range m_range;
    TemporaryPath m_folder;
    std::unique_ptr<ChildProcess> m_child;  // ends before its folder goes
    Clock::time_point m_changed;
    std::string m_at;
    std::size_t m_read = 0;
};

std::string crashReason(const std::string& record, std::uint32_t exitCode) {
    if (record.empty()) {
        return "the process ended with exit code " + std::to_string(exitCode);
    }
    std::string out = "crash: " + record;
    std::replace(out.begin(), out.end(), '\n', ' ');
    return out;
}

class Run {
 public:
    Run(const GlobalOptions& global, const SessionRunOptions& options,
        const std::function<void(const WrongSession&)>& wrong, const std::function<void(std::uint64_t)>& done)
        : m_global(global), m_options(options), m_wrong(wrong), m_done(done) {
        // Groups begin at the multiples of their size, whatever part of all sessions is asked for.
        const std::uint64_t end = options.work.first + options.work.count;
        for (std::uint64_t at = options.work.first; at < end;) {
            const std::uint64_t next = std::min(end, (at / kSessionGroup + 1) * kSessionGroup);
            m_waiting.push_back({at, next - at});
            at = next;
        }
    }

    SessionReport run() {
        while (!m_waiting.empty() || !m_workers.empty()) {
            throwIfInterrupted();
            if (m_wrongSessions.size() >= m_options.mostWrong) {
                m_waiting.clear();
            }
            while (!m_waiting.empty() && m_workers.size() < m_options.jobs) {
                m_workers.push_back(std::make_unique<Worker>(m_global, m_options, m_waiting.front()));
                m_waiting.pop_front();
            }
            std::erase_if(m_workers,
                          [this](const std::unique_ptr<Worker>& worker) { return attend(*worker); });
        }
        return std::move(m_report);
    }

 private:
    void note(WrongSession session) {
        m_wrong(session);
        m_wrongSessions.insert(session.number);
        m_report.wrong.push_back(std::move(session));
    }

    // True once the process has ended.
    bool attend(Worker& worker) {
        const auto code = worker.wait(kLook);
        const std::uint64_t at = worker.at();
        for (WrongSession& session : worker.news()) {
            note(std::move(session));
        }
        if (code) {
            const std::string report = textOf(worker.file(kGroupReport));
            if (*code == kSuccess && !report.empty()) {
                finish(worker, report);
            } else if (!worker.begun()) {
                throw ToolError(kNoPlugin, "sessions cannot be begun: " + textOf(worker.file("output")));
            } else {
                note({at, crashReason(textOf(worker.file(kGroupCrash)), *code)});
                goOnBehind(worker, at);
            }
            return true;
        }
        if (worker.secondsAtIt() > m_options.timeout + (worker.begun() ? 0.0 : kStartSeconds)) {
            worker.kill();
            char text[64];
            (void)std::snprintf(text, sizeof text, "not over after %g s", m_options.timeout);
            note({at, text});
            goOnBehind(worker, at);
            return true;
        }
        return false;
    }

    void finish(const Worker& worker, const std::string& text) {
        const auto json = nlohmann::json::parse(text);
        SessionCounts counts;
        for (const NamedCount& count : kSessionCounts) {
            counts.*count.member = json[count.name];
        }
        m_report.counts.add(counts);
        m_report.seconds += json["seconds"].get<double>();
        m_done(worker.range().count);
    }

    // The sessions before it are counted, what they have done is not known any more.
    void goOnBehind(const Worker& worker, std::uint64_t at) {
        const std::uint64_t end = worker.range().first + worker.range().count;
        const std::uint64_t over = at + 1 - worker.range().first;
        m_report.counts.sessions += over;
        m_done(over);
        if (at + 1 < end) {
            m_waiting.push_front({at + 1, end - at - 1});
        }
    }

    const GlobalOptions& m_global;
    const SessionRunOptions& m_options;
    const std::function<void(const WrongSession&)>& m_wrong;
    const std::function<void(std::uint64_t)>& m_done;
    std::deque<Range> m_waiting;
    std::vector<std::unique_ptr<Worker>> m_workers;
    std::set<std::uint64_t> m_wrongSessions;
    SessionReport m_report;
};

}  // namespace

SessionReport runSessions(const GlobalOptions& global, const SessionRunOptions& options,
                          const std::function<void(const WrongSession&)>& wrong,
                          const std::function<void(std::uint64_t)>& done) {
    return Run(global, options, wrong, done).run();
}

}  // namespace simhost::tool
