#include <cstdio>

#include "tool/shared/base/html_text.h"
#include "tool/validate/run/report.h"

namespace simhost::tool::validate {
namespace {

// What XML 1.0 has no place for is replaced together with what HTML has none for.
std::string attribute(const char* name, const std::string& value) {
    return std::string(" ") + name + "=\"" + htmlEscaped(value) + "\"";
}

std::string secondsText(double seconds) {
    char text[32];
    (void)std::snprintf(text, sizeof text, "%.3f", seconds);
    return text;
}

std::string firstSeen(const CheckResult& result) {
    return result.findings.empty() ? result.reason : result.findings.front().seen;
}

std::string junitCase(const Validation& validation, const CheckResult& result) {
    const std::size_t dot = result.id.find('.');
    std::string out =
        "    <testcase" + attribute("classname", result.id.substr(0, dot)) +
        attribute("name",
                  result.id.substr(dot + 1) +
                      (result.seed == validation.seed ? "" : ", seed " + std::to_string(result.seed))) +
        attribute("time", secondsText(result.seconds)) + ">";
    switch (result.outcome) {
        case Outcome::kPassed:
            break;
        case Outcome::kSkipped:
            out += "<skipped" + attribute("message", result.reason) + "/>";
            break;
        case Outcome::kWarning:
            out += "<system-out>" + htmlEscaped(resultText(validation, result)) + "</system-out>";
            break;
        case Outcome::kFailed:
            out += "<failure" + attribute("message", firstSeen(result)) + ">" +
                   htmlEscaped(resultText(validation, result)) + "</failure>";
            break;
        case Outcome::kCrashed:
        case Outcome::kTimedOut:
            out += "<error" + attribute("type", outcomeName(result.outcome)) +
                   attribute("message", result.reason) + ">" + htmlEscaped(resultText(validation, result)) +
                   "</error>";
    }
    return out + "</testcase>\n";
}

}  // namespace

std::string junitReport(const Validation& validation) {
    const OutcomeCounts counts = countOutcomes(validation.results);
    double seconds = 0;
    std::string cases;
    for (const CheckResult& result : validation.results) {
        seconds += result.seconds;
        cases += junitCase(validation, result);
    }
    const std::string numbers =
        attribute("tests", std::to_string(counts.all())) +
        attribute("failures", std::to_string(counts.of(Outcome::kFailed))) +
        attribute("errors", std::to_string(counts.of(Outcome::kCrashed) + counts.of(Outcome::kTimedOut))) +
        attribute("skipped", std::to_string(counts.of(Outcome::kSkipped))) +
        attribute("time", secondsText(seconds));
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + numbers + ">\n  <testsuite" +
           attribute("name", "importer_host validate " + validation.plugin) + numbers + ">\n" + cases +
           "  </testsuite>\n</testsuites>\n";
}

}  // namespace simhost::tool::validate
