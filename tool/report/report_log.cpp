#include "tool/report/report_log.h"

#include <algorithm>
#include <string>
#include <vector>

#include "tool/shared/base/html_text.h"

namespace simhost::tool {
namespace {

// Lines on the page; failures and notes up to twice as many.
constexpr std::size_t kMostLines = 3000;
// Different failures told ahead of the log.
constexpr std::size_t kMostFailures = 12;

// Without the addresses in it, which are others each time.
std::string withoutAddresses(const std::string& text) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        if (text.compare(at, 2, "0x") != 0) {
            out += text[at++];
            continue;
        }
        out += "0x";
        at = text.find_first_not_of("0123456789abcdefABCDEF", at + 2);
        at = std::min(at, text.size());
    }
    return out;
}

class LogText {
 public:
    void add(const LogItem& item) {
        if (const auto* line = std::get_if<ReadLine>(&item)) {
            addLine(*line, "");
            return;
        }
        const auto& call = std::get<LoggedCall>(item);
        m_failures += call.failed ? 1U : 0U;
        const std::string answer = call.resultName.empty()
                                       ? "no answer"
                                       : call.resultName + " (" + std::to_string(call.result) + ")";
        // A call may succeed all the same: the line below that failed has its own mark.
        const bool refused = call.end != LoggedCall::End::kAnswered ||
                             resultSeverity(call.name, call.result) == Severity::kFailure;
        if (refused) {
            addFailure(call.name + " → " + answer, call.explanation);
        }
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
        const std::string failures = m_failures == 0   ? "no failures"
                                     : m_failures == 1 ? "1 call with failures"
                                                       : std::to_string(m_failures) + " calls with failures";
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
    void addFailure(const std::string& text, const std::string& explanation) {
        const std::string kind = withoutAddresses(text);
        const auto same = [&kind](const Failure& f) { return f.kind == kind; };
        if (const auto known = std::find_if(m_list.begin(), m_list.end(), same); known != m_list.end()) {
            ++known->count;
        } else if (m_list.size() < kMostFailures) {
            m_list.push_back({kind, text, explanation, 1});
        }
    }
    std::string failureList() const {
        if (m_list.empty()) {
            return {};
        }
        std::string out = "<ul class=\"notes\">";
        for (const Failure& failure : m_list) {
            out += "<li class=\"bad\">" + htmlEscaped(failure.text) +
                   (failure.count > 1 ? " (" + std::to_string(failure.count) + " times)" : "") +
                   (failure.explanation.empty() ? "" : "<br>" + htmlEscaped(failure.explanation)) + "</li>";
        }
        return out + "</ul>";
    }
    void addLine(const ReadLine& line, const char* indent) {
        const bool bad = line.severity == Severity::kFailure;
        if (bad) {
            addFailure(line.entry.text, line.explanation);
        }
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

    struct Failure {
        std::string kind;
        std::string text;
        std::string explanation;
        std::size_t count;
    };

    std::string m_text;
    std::vector<Failure> m_list;
    std::size_t m_lines = 0;
    std::size_t m_leftOut = 0;
    std::size_t m_failures = 0;
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
