#include <nlohmann/json.hpp>

#include "tool/shared/base/json_text.h"
#include "tool/validate/run/job.h"
#include "tool/validate/run/report.h"

namespace simhost::tool::validate {
namespace {

using JsonReport = nlohmann::ordered_json;

JsonReport checkJson(const Check& check) {
    return {{"id", check.id}, {"level", check.level}, {"rule", check.rule}, {"reason", check.reason}};
}

JsonReport resultJson(const Validation& validation, const CheckResult& result) {
    JsonReport out = {{"id", result.id}, {"outcome", outcomeName(result.outcome)}, {"seed", result.seed}};
    if (const Check* check = findCheck(result.id)) {
        out.update(checkJson(*check));
    }
    out["seconds"] = result.seconds;
    const auto add = [&out](const char* name, const std::string& text) {
        if (!text.empty()) {
            out[name] = text;
        }
    };
    add(result.outcome == Outcome::kSkipped ? "skipped" : "how", result.reason);
    if (!result.calls.empty()) {
        out["calls"] = result.calls;
    }
    add("output", result.output);
    add("dump", result.dump);
    JsonReport findings = JsonReport::array();
    for (const Finding& finding : result.findings) {
        findings.push_back(findingJson(finding));
    }
    out["findings"] = findings;
    if (isBad(result.outcome) || result.outcome == Outcome::kWarning) {
        out["again"] = againText(validation, result);
    }
    return out;
}

}  // namespace

std::string jsonReport(const Validation& validation) {
    const OutcomeCounts counts = countOutcomes(validation.results);
    JsonReport numbers;
    for (const Outcome outcome : kOutcomes) {
        numbers[outcomeName(outcome)] = counts.of(outcome);
    }
    JsonReport checks = JsonReport::array();
    for (const CheckResult& result : validation.results) {
        checks.push_back(resultJson(validation, result));
    }
    return jsonText({{"result", counts.success() ? "success" : "failure"},
                     {"plugin", validation.plugin},
                     {"clips", validation.clips},
                     {"level", validation.level},
                     {"seed", validation.seed},
                     {"versions", validation.versions},
                     {"counts", numbers},
                     {"checks", checks}});
}

std::string listJson(const std::vector<Check>& checks) {
    JsonReport list = JsonReport::array();
    for (const Check& check : checks) {
        list.push_back(checkJson(check));
    }
    return jsonText({{"checks", list}});
}

}  // namespace simhost::tool::validate
