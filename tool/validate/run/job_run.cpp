// The child's side of a job: one check after the other, each told of before it begins and when it is over.
#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tool/shared/base/child_process.h"
#include "tool/shared/base/crash_watch.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"
#include "tool/validate/base/check.h"
#include "tool/validate/run/job.h"

namespace simhost::tool::validate {
namespace {

// Each line is with the system before the plug-in is called again, so that a crash loses none.
class EventFile {
 public:
    explicit EventFile(const std::string& path) : m_stream(pathFromUtf8(path), std::ios::binary) {
        if (!m_stream) {
            throw ToolError(kNoOutput, "cannot write '" + path + "'");
        }
    }
    void add(const JobEvent& event) { m_stream << eventLine(event) << std::flush; }

 private:
    std::ofstream m_stream;
};

CheckResult runCheck(const TrialSetting& setting, const PlannedCheck& planned) {
    CheckResult out;
    out.id = planned.id;
    out.seed = planned.seed;
    Trial trial(setting, planned.id, planned.seed);
    const Check* check = findCheck(planned.id);
    if (check == nullptr) {
        throw ToolError(kUsage, "there is no check '" + planned.id + "'");
    }
    try {
        check->body(trial);
    } catch (const Skipped& skipped) {
        out.outcome = Outcome::kSkipped;
        out.reason = skipped.what();
    } catch (const std::exception& error) {
        trial.fail({false, "", "", "",
                    std::string("an exception came out of the plug-in or of the check: ") + error.what()});
    }
    out.findings = trial.findings();
    if (!out.findings.empty()) {
        const bool onlyWarnings =
            std::all_of(out.findings.begin(), out.findings.end(), [](const Finding& f) { return f.warning; });
        out.outcome = onlyWarnings ? Outcome::kWarning : Outcome::kFailed;
        out.reason.clear();
    }
    return out;
}

}  // namespace

int runJob(const std::string& jobFile) {
    endWithParent();
    std::ifstream file(pathFromUtf8(jobFile), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    Job job = parseJob(text);
    watchForCrashes(job.crash, job.dump);
    EventFile events(job.results);
    job.setting.atPhase = [&](const std::string& name) { events.add({JobEvent::Kind::kPhase, name, {}}); };
    for (const PlannedCheck& planned : job.checks) {
        events.add({JobEvent::Kind::kBegin, {}, {}});
        const auto begin = std::chrono::steady_clock::now();
        CheckResult result = runCheck(job.setting, planned);
        result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        events.add({JobEvent::Kind::kEnd, {}, result});
    }
    return kSuccess;
}

}  // namespace simhost::tool::validate
