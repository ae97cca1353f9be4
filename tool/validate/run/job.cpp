#include "tool/validate/run/job.h"

#include <nlohmann/json.hpp>

#include "tool/shared/base/tool_error.h"

namespace simhost::tool::validate {
namespace {

using Json = nlohmann::ordered_json;

std::string line(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Finding findingFrom(const Json& value) {
    Finding out;
    out.warning = value.value("warning", false);
    out.call = value.value("call", "");
    out.field = value.value("field", "");
    out.clip = value.value("clip", "");
    out.seen = value.value("seen", "");
    return out;
}

JobEvent eventFrom(const Json& value) {
    JobEvent out;
    if (value.contains("phase")) {
        out.kind = JobEvent::Kind::kPhase;
        out.phase = value.at("phase");
        return out;
    }
    if (value.contains("begin")) {
        return out;
    }
    out.kind = JobEvent::Kind::kEnd;
    out.result.id = value.at("id");
    out.result.seed = value.at("seed");
    out.result.outcome = outcomeFromName(value.at("outcome").get<std::string>());
    out.result.seconds = value.at("seconds");
    out.result.reason = value.at("reason");
    for (const Json& finding : value.at("findings")) {
        out.result.findings.push_back(findingFrom(finding));
    }
    return out;
}

}  // namespace

Json findingJson(const Finding& finding) {
    Json out = {{"warning", finding.warning}, {"call", finding.call}};
    if (!finding.field.empty()) {
        out["field"] = finding.field;
    }
    if (!finding.clip.empty()) {
        out["clip"] = finding.clip;
    }
    out["seen"] = finding.seen;
    return out;
}

std::string jobText(const Job& job) {
    Json clips = Json::array();
    for (const ClipFile& clip : job.setting.clips) {
        clips.push_back({{"path", clip.path}, {"made", clip.made}});
    }
    Json checks = Json::array();
    for (const PlannedCheck& check : job.checks) {
        checks.push_back({{"id", check.id}, {"seed", check.seed}});
    }
    return line({{"plugin", job.setting.plugin},
                 {"libraryFolder", job.setting.libraryFolder},
                 {"workFolder", job.setting.workFolder},
                 {"clips", clips},
                 {"lostPhases", job.setting.lostPhases},
                 {"checks", checks},
                 {"results", job.results},
                 {"crash", job.crash},
                 {"dump", job.dump}});
}

Job parseJob(const std::string& text) {
    try {
        const Json value = Json::parse(text);
        Job out;
        out.setting.plugin = value.at("plugin");
        out.setting.libraryFolder = value.at("libraryFolder");
        out.setting.workFolder = value.at("workFolder");
        for (const Json& clip : value.at("clips")) {
            out.setting.clips.push_back({clip.at("path"), clip.at("made")});
        }
        out.setting.lostPhases = value.at("lostPhases").get<std::vector<std::string>>();
        for (const Json& check : value.at("checks")) {
            out.checks.push_back({check.at("id"), check.at("seed")});
        }
        out.results = value.at("results");
        out.crash = value.at("crash");
        out.dump = value.at("dump");
        return out;
    } catch (const Json::exception&) {
        throw ToolError(kUsage, "this is no job of checks");
    }
}

std::string eventLine(const JobEvent& event) {
    switch (event.kind) {
        case JobEvent::Kind::kBegin:
            return "{\"begin\":true}\n";
        case JobEvent::Kind::kPhase:
            return line({{"phase", event.phase}}) + "\n";
        case JobEvent::Kind::kEnd:
            break;
    }
    const CheckResult& result = event.result;
    Json findings = Json::array();
    for (const Finding& finding : result.findings) {
        findings.push_back(findingJson(finding));
    }
    return line({{"id", result.id},
                 {"seed", result.seed},
                 {"outcome", outcomeName(result.outcome)},
                 {"seconds", result.seconds},
                 {"reason", result.reason},
                 {"findings", findings}}) +
           "\n";
}

std::vector<JobEvent> takeEvents(std::string& text) {
    std::vector<JobEvent> out;
    std::size_t at = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', at)) {
        out.push_back(eventFrom(Json::parse(text.substr(at, end - at))));
        at = end + 1;
    }
    text.erase(0, at);
    return out;
}

}  // namespace simhost::tool::validate
