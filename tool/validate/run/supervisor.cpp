#include "tool/validate/run/supervisor.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

#include "tool/shared/base/child_process.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/machine_time.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"
#include "tool/validate/run/job.h"
#include "tool/validate/run/patience.h"

namespace simhost::tool::validate {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLook{10};
// What a look may count for: a machine that slept, or was late with this process, was late with the other,
// too.
constexpr std::chrono::milliseconds kMostOfOneLook{50};
// Processor times go in steps of up to 16 ms.
constexpr std::chrono::milliseconds kSlice{100};
constexpr const char* kAborted = "the process aborted itself";  // as tool/shared/base/crash_watch says
constexpr std::size_t kMostOutput = 4000;
constexpr const char* kSessionCheck = "session.standard";
// A process has 1,088 indexes of thread-local storage, and what an importer or a library of it takes at every
// load is lost for as long as the process lives. One process loads it a few times for each check.
constexpr std::size_t kMostChecksOfOneProcess = 150;
constexpr double kStartSeconds = 60;  // a machine with much to do is slow to start a process
constexpr double kDumpSeconds = 60;   // a dump may take longer than the check was allowed to

std::string textOf(const std::string& path) {
    std::ifstream file(pathFromUtf8(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string endOf(const std::string& text) {
    if (text.size() <= kMostOutput) {
        return text;
    }
    const std::size_t line = text.find('\n', text.size() - kMostOutput);
    return line == std::string::npos ? text.substr(text.size() - kMostOutput) : text.substr(line + 1);
}

// What the process wrote down about its crash.
void readCrash(const std::string& record, std::uint32_t exitCode, CheckResult& out) {
    std::vector<std::string> lines;
    std::istringstream stream(record);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    if (lines.size() < 3) {
        out.reason = "the process ended with exit code " + std::to_string(exitCode) + " during the check";
        return;
    }
    out.reason = lines[0] + (lines[1].empty() ? "" : " in " + lines[1] + " at offset " + lines[2]);
    // How the tool itself came to make the call helps nobody, nor does its handler of aborts.
    const std::string program = thisProgramFile();
    const std::string own = program.substr(program.find_last_of("/\\") + 1) + "+";
    bool foreign = false;
    for (auto line = lines.begin() + 3; line != lines.end(); ++line) {
        const bool isOwn = line->starts_with(own);
        if (isOwn && !foreign && line == lines.begin() + 3 && out.reason.starts_with(kAborted)) {
            continue;
        }
        out.calls.push_back(*line);
        if (isOwn && foreign) {
            break;
        }
        foreign = foreign || !isOwn;
    }
}

// One process with some of the checks.
class Worker {
 public:
    Worker(const TrialSetting& setting, const std::vector<PlannedCheck>& plan,
           std::vector<std::size_t> places, const SupervisorOptions& options, std::size_t number)
        : m_places(std::move(places)),
          m_folder(options.folder + "/" + std::to_string(number)),
          m_mostBetweenLooks(options.jobs * kMostOfOneLook) {
        std::filesystem::create_directories(pathFromUtf8(m_folder + "/work"));
        Job job;
        job.setting = setting;
        job.setting.workFolder = m_folder + "/work";
        for (const std::size_t place : m_places) {
            job.checks.push_back(plan[place]);
        }
        job.results = m_folder + "/results";
        job.crash = m_folder + "/crash";
        job.dump = options.dumps.empty() ? "" : m_folder + "/dump";
        std::ofstream(pathFromUtf8(m_folder + "/job"), std::ios::binary) << jobText(job);
        try {
            m_child = std::make_unique<ChildProcess>(
                std::vector<std::string>{"validate", "--child", m_folder + "/job"}, m_folder + "/output");
        } catch (const std::runtime_error& error) {
            throw ToolError(kFailed, error.what());
        }
        m_lastLook = Clock::now();
        m_idle = idleProcessorSeconds();
    }

    // What has come since the last look; whether the process has ended.
    std::optional<std::uint32_t> look(std::vector<JobEvent>& events) {
        const auto code = m_child->waitFor(kLook);
        const Clock::time_point now = Clock::now();
        m_slice += std::min<Clock::duration>(now - std::exchange(m_lastLook, now), m_mostBetweenLooks);
        if (m_slice >= kSlice) {
            endSlice();
        }
        std::ifstream file(pathFromUtf8(m_folder + "/results"), std::ios::binary);
        file.seekg(static_cast<std::streamoff>(m_read));
        const std::string more{std::istreambuf_iterator<char>(file), {}};
        m_read += more.size();
        m_text += more;
        events = takeEvents(m_text);
        if (!events.empty()) {
            endSlice();
            m_patience.restart();
            m_starting = false;
        }
        return code;
    }

    bool isOver(double timeout) const {
        const double most =
            timeout + (m_starting ? kStartSeconds : 0.0) + (crashRecord().empty() ? 0.0 : kDumpSeconds);
        return m_patience.used() > most;
    }
    void kill() { m_child->kill(); }
    // What it has written down of its crash so far; empty while it lives.
    std::string crashRecord() const { return textOf(m_folder + "/crash"); }

    std::size_t current() const { return m_places[m_done]; }
    bool hasCurrent() const { return m_done < m_places.size(); }
    void next() { ++m_done; }
    std::vector<std::size_t> rest() const {
        return {m_places.begin() + static_cast<std::ptrdiff_t>(std::min(m_done, m_places.size())),
                m_places.end()};
    }
    const std::string& folder() const { return m_folder; }
    std::string phase;

 private:
    void endSlice() {
        TimeSlice slice;
        slice.clock = std::chrono::duration<double>(std::exchange(m_slice, {})).count();
        const double worked = m_child->worked();
        slice.worked = std::max(worked - std::exchange(m_worked, worked), 0.0);
        const std::optional<double> idle = idleProcessorSeconds();
        slice.idle = idle && m_idle ? *idle - *m_idle : slice.clock;
        m_idle = idle;
        m_patience.add(slice);
    }

    std::vector<std::size_t> m_places;  // in the plan
    std::string m_folder;
    std::unique_ptr<ChildProcess> m_child;
    Clock::duration m_mostBetweenLooks;
    Clock::time_point m_lastLook;
    Clock::duration m_slice{};     // since processor times were looked at
    double m_worked = 0;           // then
    std::optional<double> m_idle;  // then
    Patience m_patience;           // with the check that it is at
    bool m_starting = true;        // it is at none yet
    std::size_t m_done = 0;
    std::size_t m_read = 0;
    std::string m_text;  // of the results, not yet a whole line
};

class Supervisor {
 public:
    Supervisor(const TrialSetting& setting, const std::vector<PlannedCheck>& plan,
               const SupervisorOptions& options, const std::function<void(const CheckResult&)>& done)
        : m_setting(setting), m_plan(plan), m_options(options), m_done(done), m_results(plan.size()) {
        for (std::size_t i = 0; i < plan.size(); ++i) {
            m_waiting.push_back(i);
            if (m_firstPart == 0 && plan[i].id == kSessionCheck) {
                m_firstPart = i + 1;
            }
        }
    }

    std::vector<CheckResult> run() {
        while (!m_waiting.empty() || !m_workers.empty()) {
            throwIfInterrupted();
            while (!m_waiting.empty() && m_workers.size() < m_options.jobs &&
                   (m_workers.empty() || m_finished >= m_firstPart)) {
                start(takeBatch());
            }
            for (std::size_t i = 0; i < m_workers.size();) {
                if (attend(*m_workers[i])) {
                    auto rest = m_workers[i]->rest();
                    removeFolder(m_workers[i]->folder());
                    m_workers.erase(m_workers.begin() + static_cast<std::ptrdiff_t>(i));
                    m_waiting.insert(m_waiting.begin(), rest.begin(), rest.end());
                } else {
                    ++i;
                }
            }
        }
        return std::move(m_results);
    }

 private:
    // Fewer and fewer at a time, so that all processes end at about the same time.
    std::vector<std::size_t> takeBatch() {
        const std::size_t parts = m_options.jobs == 1 ? 1 : 2 * std::size_t{m_options.jobs};
        std::size_t count =
            std::clamp<std::size_t>((m_waiting.size() + parts - 1) / parts, 1, kMostChecksOfOneProcess);
        // What most checks build on comes first and alone: if it ends its process, the others shall know.
        const std::size_t before = m_waiting.front() < m_firstPart ? m_firstPart - m_waiting.front() : 0;
        count = before == 0 ? count : std::min(before, m_waiting.size());
        std::vector<std::size_t> out(m_waiting.begin(),
                                     m_waiting.begin() + static_cast<std::ptrdiff_t>(count));
        m_waiting.erase(m_waiting.begin(), m_waiting.begin() + static_cast<std::ptrdiff_t>(count));
        return out;
    }

    void start(std::vector<std::size_t> places) {
        TrialSetting setting = m_setting;
        setting.lostPhases.assign(m_lostPhases.begin(), m_lostPhases.end());
        m_workers.push_back(
            std::make_unique<Worker>(setting, m_plan, std::move(places), m_options, ++m_started));
    }

    // True once the process has ended.
    bool attend(Worker& worker) {
        std::vector<JobEvent> events;
        std::optional<std::uint32_t> code = worker.look(events);
        if (code) {
            // What it wrote between the look at its file and its end.
            std::vector<JobEvent> last;
            (void)worker.look(last);
            events.insert(events.end(), last.begin(), last.end());
        }
        for (JobEvent& event : events) {
            if (event.kind == JobEvent::Kind::kPhase) {
                worker.phase = event.phase;
            } else if (event.kind == JobEvent::Kind::kEnd && worker.hasCurrent()) {
                worker.phase.clear();
                finish(worker, std::move(event.result));
            }
        }
        if (!code && !worker.isOver(m_options.timeout)) {
            return false;
        }
        if (!code) {
            worker.kill();
        }
        if (worker.hasCurrent()) {
            lose(worker, code);
        }
        return true;
    }

    void finish(Worker& worker, CheckResult result) {
        m_results[worker.current()] = std::move(result);
        ++m_finished;
        m_done(m_results[worker.current()]);
        worker.next();
    }

    // The check that the process was at went with it, by itself or, without exit code, because it took too
    // long. A process that was still busy telling of its crash has crashed.
    void lose(Worker& worker, std::optional<std::uint32_t> exitCode) {
        CheckResult result;
        result.id = m_plan[worker.current()].id;
        result.seed = m_plan[worker.current()].seed;
        const std::string record = worker.crashRecord();
        if (!exitCode && record.empty()) {
            result.outcome = Outcome::kTimedOut;
            char text[64];
            (void)std::snprintf(text, sizeof text, "not over after %g s", m_options.timeout);
            result.reason = text;
        } else {
            result.outcome = Outcome::kCrashed;
            readCrash(record, exitCode.value_or(0), result);
            result.output = endOf(textOf(worker.folder() + "/output"));
            result.dump = keepDump(worker.folder() + "/dump", result);
        }
        if (!worker.phase.empty()) {
            result.reason += ", in the " + worker.phase;
            m_lostPhases.insert(worker.phase);
        }
        finish(worker, std::move(result));
    }

    std::string keepDump(const std::string& made, const CheckResult& result) const {
        std::error_code error;
        if (m_options.dumps.empty() || !std::filesystem::exists(pathFromUtf8(made), error)) {
            return {};
        }
        makeFolder(m_options.dumps);
        std::string kept = m_options.dumps + "/" + result.id + "-" + std::to_string(result.seed) + ".dmp";
        try {
            std::ifstream dump(pathFromUtf8(made), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(dump), {}};
            writeText(kept, bytes);
        } catch (const ToolError&) {
            return {};
        }
        return kept;
    }

    static void removeFolder(const std::string& folder) {
        std::error_code error;
        std::filesystem::remove_all(pathFromUtf8(folder), error);
    }

    const TrialSetting& m_setting;
    const std::vector<PlannedCheck>& m_plan;
    const SupervisorOptions& m_options;
    const std::function<void(const CheckResult&)>& m_done;
    std::vector<CheckResult> m_results;
    std::vector<std::size_t> m_waiting;  // places in the plan
    std::vector<std::unique_ptr<Worker>> m_workers;
    std::set<std::string> m_lostPhases;
    std::size_t m_started = 0;
    std::size_t m_finished = 0;
    std::size_t m_firstPart = 0;  // checks until behind the first standard session
};

}  // namespace

std::vector<CheckResult> superviseChecks(const TrialSetting& setting, const std::vector<PlannedCheck>& plan,
                                         const SupervisorOptions& options,
                                         const std::function<void(const CheckResult&)>& done) {
    return Supervisor(setting, plan, options, done).run();
}

}  // namespace simhost::tool::validate
