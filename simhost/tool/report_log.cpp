#include "simhost/tool/report_log.h"

#include "simhost/tool/html_text.h"

namespace simhost::tool {
namespace {

// Lines on the page; failures and notes up to twice as many.
constexpr std::size_t kMostLines = 3000;

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
        put(call.failed, "<b>" + htmlEscaped(call.stamp + " " + call.name) + "</b> → " +
                             marked(call.failed ? "bad" : "", htmlEscaped(answer)) +
                             meaning(call.explanation));
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
        return "<section><details" + std::string(m_failures > 0 ? " open" : "") +
               "><summary>Diagnostic log of this run, " + failures + "</summary><pre>" + m_text +
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
