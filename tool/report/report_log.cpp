#include "tool/report/report_log.h"

#include <algorithm>
#include <string>

#include "tool/shared/base/html_text.h"
#include "tool/shared/base/number_text.h"

namespace simhost::tool {
namespace {

// Lines on the page; failures and notes up to twice as many.
constexpr std::size_t kMostLines = 3000;
// Different failures told ahead of the log.
constexpr std::size_t kMostFailures = 12;

class LogText {
 public:
    void add(const LogItem& item) {
        m_summary.add(item);
        if (const auto* line = std::get_if<ReadLine>(&item)) {
            addLine(*line, "");
            return;
        }
        const auto& call = std::get<LoggedCall>(item);
        const std::string answer = call.resultName.empty()
                                       ? "no answer"
                                       : call.resultName + " (" + std::to_string(call.result) + ")";
        // A call may succeed all the same: the line below that failed has its own mark.
        const bool refused = isRefused(call);
        put(call.failed, "<b>" + htmlEscaped(call.stamp + " " + call.name) + "</b> → " +
                             marked(refused ? "bad" : "", htmlEscaped(answer)) + meaning(call.explanation));
        for (const ReadLine& line : call.lines) {
            if (line.severity != Severity::kTable) {
                addLine(line, "    ");
            }
        }
    }

    std::string section() const {
        if (m_text.empty()) {
            return {};
        }
        const std::string failures = m_summary.failedCalls == 0
                                         ? "no failures"
                                         : counted(m_summary.failedCalls, "call", "calls") + " with failures";
        return "<section><h2>Diagnostic log of this run, " + failures + "</h2>" + failureList() +
               "<details><summary>The whole log</summary><pre tabindex=\"0\" role=\"region\" "
               "aria-label=\"The whole log\">" +
               m_text +
               (m_leftOut == 0 ? ""
                               : "<i>" + std::to_string(m_leftOut) + " further lines are left out</i>\n") +
               "</pre></details></section>\n";
    }

 private:
    static std::string marked(const char* mark, const std::string& html) {
        return *mark == '\0' ? html : "<span class=\"" + std::string(mark) + "\">" + html + "</span>";
    }
    static std::string meaning(const std::string& text) {
        return text.empty() ? "" : "  <i>" + htmlEscaped(text) + "</i>";
    }
    // What the log says many times is told once.
    std::string failureList() const {
        const auto& groups = m_summary.groups;
        if (groups.empty()) {
            return {};
        }
        std::string out = "<ul class=\"notes\">";
        const std::size_t told = std::min(groups.size(), kMostFailures);
        for (std::size_t i = 0; i < told; ++i) {
            const auto& [first, count, kind] = groups[i];
            out += "<li class=\"bad\">" + htmlEscaped(first.what) +
                   (count > 1 ? " (" + std::to_string(count) + " times)" : "") +
                   (first.explanation.empty() ? "" : "<br>" + htmlEscaped(first.explanation)) + "</li>";
        }
        if (groups.size() > told) {
            out += "<li>Failures of " + std::to_string(groups.size() - told) +
                   (m_summary.ungrouped > 0 ? " and more" : "") + " further kinds are in the log below.</li>";
        }
        return out + "</ul>";
    }
    void addLine(const ReadLine& line, const char* indent) {
        const bool bad = line.severity == Severity::kFailure;
        const bool note = line.severity == Severity::kNote;
        put(bad || note, indent +
                             marked(bad    ? "bad"
                                    : note ? "warn"
                                           : "",
                                    htmlEscaped(line.entry.text)) +
                             (bad || note ? meaning(line.explanation) : ""));
    }
    void put(bool always, const std::string& html) {
        if (m_lines >= kMostLines && (!always || m_lines >= 2 * kMostLines)) {
            ++m_leftOut;
            return;
        }
        ++m_lines;
        m_text += html + "\n";
    }

    std::string m_text;
    LogSummary m_summary;
    std::size_t m_lines = 0;
    std::size_t m_leftOut = 0;
};

}  // namespace

std::string logSection(std::span<const LogItem> items) {
    LogText text;
    for (const LogItem& item : items) {
        text.add(item);
    }
    return text.section();
}

}  // namespace simhost::tool
