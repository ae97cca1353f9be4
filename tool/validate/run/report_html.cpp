#include "tool/shared/base/html_text.h"
#include "tool/shared/base/page_style.h"
#include "tool/validate/run/report.h"

namespace simhost::tool::validate {
namespace {

// Other pages have numbers and names in their tables, which stay in one line.
constexpr const char* kSentencesWrap = "\ntd[data-name=Rule]{white-space:normal}\n";

std::string fact(const char* name, const std::string& value) {
    return value.empty() ? std::string()
                         : std::string("<div><dt>") + name + "</dt><dd>" + htmlEscaped(value) + "</dd></div>";
}

std::string findingList(const std::string& facts) {
    return facts.empty() ? std::string() : "<dl class=\"facts\">" + facts + "</dl>\n";
}

std::string badSection(const Validation& validation, const CheckResult& result) {
    const Check* check = findCheck(result.id);
    const bool bad = isBad(result.outcome);
    std::string out = "<section><h2>" + htmlEscaped(result.id) + "</h2>\n<ul class=\"notes\"><li" +
                      (bad ? std::string(" class=\"bad\"") : std::string()) + ">" +
                      outcomeName(result.outcome) +
                      (check == nullptr ? "" : ": " + htmlEscaped(check->rule)) + "</li></ul>\n";
    if (check != nullptr) {
        out += "<p class=\"soft\">" + htmlEscaped(check->reason) + "</p>\n";
    }
    for (const Finding& finding : result.findings) {
        out += findingList(fact("Call", finding.call) + fact("Field", finding.field) +
                           fact("Clip", finding.clip) + fact("Seen", finding.seen));
    }
    out += findingList(fact("How", result.reason) + fact("Dump", result.dump));
    if (!result.calls.empty()) {
        out += "<h3>Calls that led there</h3><pre tabindex=\"0\">";
        for (const std::string& call : result.calls) {
            out += htmlEscaped(call) + "\n";
        }
        out += "</pre>\n";
    }
    if (!result.output.empty()) {
        out += "<pre tabindex=\"0\">" + htmlEscaped(result.output) + "</pre>\n";
    }
    return out + "<h3>To do it again</h3><pre tabindex=\"0\">" + htmlEscaped(againText(validation, result)) +
           "</pre></section>\n";
}

std::string checkTable(const Validation& validation) {
    std::string rows;
    for (const CheckResult& result : validation.results) {
        const Check* check = findCheck(result.id);
        rows += "<tr><th scope=\"row\" data-name=\"Check\">" + htmlEscaped(result.id) + "</th><td class=\"" +
                (isBad(result.outcome) ? "odd" : "") + "\" data-name=\"Outcome\">" +
                outcomeName(result.outcome) + "</td><td data-name=\"Rule\">" +
                htmlEscaped(result.outcome == Outcome::kSkipped ? result.reason
                            : check == nullptr                  ? std::string()
                                                                : check->rule) +
                "</td></tr>\n";
    }
    return "<section><h2>Checks</h2><div class=\"scroll\" tabindex=\"0\" role=\"region\" "
           "aria-label=\"Checks\">"
           "<table class=\"streams\"><caption>Checks</caption><thead><tr><th scope=\"col\">Check</th><th "
           "scope=\"col\">Outcome</th><th scope=\"col\">Rule, or why it was "
           "skipped</th></tr></thead><tbody>\n" +
           rows + "</tbody></table></div></section>\n";
}

}  // namespace

std::string htmlReport(const Validation& validation) {
    const OutcomeCounts counts = countOutcomes(validation.results);
    const std::string name = htmlEscaped(validation.plugin.substr(validation.plugin.find_last_of("/\\") + 1));
    std::string clips;
    for (const std::string& clip : validation.clips) {
        clips += (clips.empty() ? "" : ", ") + clip;
    }
    std::string out =
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
        "<meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
        "'unsafe-inline'\"><title>" +
        name + "</title><style>" + kPageStyle + kSentencesWrap + "</style></head><body><main>\n<h1>" + name +
        "</h1><p class=\"path\">" + htmlEscaped(validation.plugin) +
        "</p>\n<ul class=\"notes\"><li class=\"" + (counts.success() ? "good" : "bad") + "\">" +
        htmlEscaped(summaryText(counts)) + "</li></ul>\n";
    for (const CheckResult& result : validation.results) {
        if (isBad(result.outcome) || result.outcome == Outcome::kWarning) {
            out += badSection(validation, result);
        }
    }
    out += checkTable(validation);
    return out + "<section><h2>How this page was made</h2>\n" +
           findingList(fact("Level", std::to_string(validation.level)) +
                       fact("Seed", std::to_string(validation.seed)) +
                       fact("Clips", clips.empty() ? "of the tool's own making" : clips) +
                       fact("Versions", validation.versions)) +
           "</section>\n</main></body></html>\n";
}

}  // namespace simhost::tool::validate
