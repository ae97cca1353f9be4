#include "tool/log/log_printer.h"

#include <nlohmann/json.hpp>

#include "tool/shared/base/number_text.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kRed = "\x1b[31m";
constexpr const char* kYellow = "\x1b[33m";
constexpr const char* kGreen = "\x1b[32m";
constexpr const char* kFaint = "\x1b[2m";
constexpr const char* kPlain = "\x1b[0m";

const char* severityName(Severity severity) {
    switch (severity) {
        case Severity::kFailure:
            return "failure";
        case Severity::kNote:
            return "note";
        case Severity::kTable:
            return "table";
        case Severity::kRoutine:
            break;
    }
    return "routine";
}

const char* endName(LoggedCall::End end) {
    switch (end) {
        case LoggedCall::End::kAnswered:
            return "answered";
        case LoggedCall::End::kEscaped:
            return "exception";
        case LoggedCall::End::kNoAnswer:
            return "no answer";
        case LoggedCall::End::kOpen:
            break;
    }
    return "open";
}

// What follows the first line of a text stands below it.
std::string indented(const std::string& text, const std::string& indent) {
    std::string out;
    for (const char c : text) {
        out += c;
        if (c == '\n') {
            out += indent;
        }
    }
    return out;
}

Json lineJson(const ReadLine& line) {
    return {{"line", line.entry.line},
            {"text", line.entry.text},
            {"severity", severityName(line.severity)},
            {"explanation", line.explanation}};
}

std::string dumped(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string printable(const std::string& text) {
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        out += (byte < 0x20 && c != '\n') || byte == 0x7F ? '?' : c;
    }
    return out;
}

std::string LogPrinter::paint(const char* colour, const std::string& text) const {
    return m_options.colour ? colour + text + kPlain : text;
}

bool LogPrinter::shown(const LogItem& item) const noexcept {
    if (m_options.failuresOnly) {
        return isFailure(item);
    }
    const auto* line = std::get_if<ReadLine>(&item);
    return line == nullptr || line->severity != Severity::kTable || m_options.all;
}

std::string LogPrinter::text(const LogItem& item) {
    if (!shown(item)) {
        return {};
    }
    if (const auto* line = std::get_if<ReadLine>(&item)) {
        return line->entry.stamp + " [" + std::to_string(line->entry.thread) + "]\n" +
               lineText(*line, "    ");
    }
    return callText(std::get<LoggedCall>(item));
}

std::string LogPrinter::lineText(const ReadLine& line, const char* indent) {
    const bool failure = line.severity == Severity::kFailure;
    const bool note = line.severity == Severity::kNote;
    const std::string text = indented(printable(line.entry.text), std::string(indent) + "  ");
    std::string out = indent + (failure ? paint(kRed, "! " + text)
                                : note  ? paint(kYellow, "- " + text)
                                        : "  " + text);
    if (line.explanation.empty()) {
        return out + "\n";
    }
    const bool first = m_explained.insert(line.explanation).second;
    if (failure || note) {
        out += std::string("\n") + indent + "    = " + paint(failure ? kRed : kYellow, line.explanation);
    } else if (first || m_options.all) {
        out += paint(kFaint, "  = " + line.explanation);
    }
    return out + "\n";
}

std::string LogPrinter::callText(const LoggedCall& call) {
    const bool answered = !call.resultName.empty();
    std::string result =
        answered ? printable(call.resultName) + " (" + std::to_string(call.result) + ")" : endName(call.end);
    const bool refused = isRefused(call);
    if (call.failed) {
        result = paint(kRed, result + (refused ? "  FAILED" : "  with failures"));
    } else {
        result = paint(kGreen, result);
    }
    std::string out = call.stamp + " [" + std::to_string(call.thread) + "] " + printable(call.name) + " -> " +
                      result + (call.seconds > 0 ? "  after " + std::to_string(call.seconds) + " s" : "");
    if (!call.explanation.empty()) {
        out +=
            refused ? "\n    = " + paint(kRed, call.explanation) : paint(kFaint, "  = " + call.explanation);
    }
    out += "\n";
    if (m_options.failuresOnly && !call.file.empty()) {
        out += "      " + printable(call.file) + "\n";
    }
    std::uint64_t rows = 0;
    for (const ReadLine& line : call.lines) {
        if (m_options.failuresOnly && line.severity != Severity::kFailure) {
            continue;
        }
        if (line.severity == Severity::kTable && !m_options.all) {
            ++rows;
            continue;
        }
        if (rows > 0) {
            out += "      (" + counted(rows, "row", "rows") + ")\n";
            rows = 0;
        }
        out += lineText(line, "    ");
    }
    if (rows > 0) {
        out += "      (" + counted(rows, "row", "rows") + ")\n";
    }
    if (call.linesLeftOut > 0) {
        out += "      (" + counted(call.linesLeftOut, "further line", "further lines") + ")\n";
    }
    return out;
}

std::string LogPrinter::text(const LogSummary& summary) const {
    std::string out =
        counted(summary.calls, "call", "calls") + " on " +
        counted(summary.threads.size(), "thread", "threads") + ", " +
        paint(summary.failures > 0 ? kRed : kGreen, counted(summary.failures, "failure", "failures")) + ", " +
        counted(summary.notes, "note", "notes");
    if (summary.unknownLines > 0) {
        out += ", " + counted(summary.unknownLines, "line", "lines") + " that this tool does not know";
    }
    out += "\n";
    if (!summary.firstStamp.empty()) {
        out += "from " + summary.firstStamp + " to " + summary.lastStamp + "\n";
    }
    if (!summary.application.empty()) {
        out += "by " + printable(summary.application) + "\n";
    }
    if (!summary.closed) {
        out += "The log has no end: the program is still running, or it crashed or was ended.\n";
    }
    if (!summary.files.empty()) {
        out += "files:\n";
    }
    for (const auto& [name, file] : summary.files) {
        out +=
            "  " + (name.empty() ? "(others)" : printable(name)) + ": " +
            counted(file.calls, "call", "calls") +
            (file.failures > 0 ? ", " + paint(kRed, std::to_string(file.failures) + " with failures") : "") +
            "\n";
    }
    if (const auto& first = summary.firstFailure) {
        out += "first failure, line " + std::to_string(first->line) + ", " + first->stamp + ":\n  " +
               paint(kRed, indented(printable(first->what), "  ")) + "\n" +
               (first->explanation.empty() ? "" : "  = " + first->explanation + "\n");
    }
    return out + groupText(summary);
}

// What the log says many times is told once.
std::string LogPrinter::groupText(const LogSummary& summary) const {
    std::string out = summary.groups.empty() ? "" : "failures, equal ones together:\n";
    for (const auto& [first, count, kind] : summary.groups) {
        out += "  " + paint(kRed, indented(printable(first.what), "  ")) +
               (count > 1 ? " (" + std::to_string(count) + " times)" : "") + ", line " +
               std::to_string(first.line) + "\n" +
               (first.explanation.empty() ? "" : "    = " + first.explanation + "\n");
    }
    return out + (summary.ungrouped == 0 ? "" : "  and " + std::to_string(summary.ungrouped) + " others\n");
}

std::string LogPrinter::json(const LogItem& item) const {
    if (m_options.failuresOnly && !isFailure(item)) {
        return {};
    }
    if (const auto* line = std::get_if<ReadLine>(&item)) {
        Json out = {{"type", "line"}, {"time", line->entry.stamp}, {"thread", line->entry.thread}};
        out.update(lineJson(*line));
        return dumped(out);
    }
    const auto& call = std::get<LoggedCall>(item);
    Json lines = Json::array();
    for (const ReadLine& line : call.lines) {
        if (!m_options.failuresOnly || line.severity == Severity::kFailure) {
            lines.push_back(lineJson(line));
        }
    }
    const bool answered = !call.resultName.empty();
    return dumped({{"type", "call"},
                   {"line", call.line},
                   {"time", call.stamp},
                   {"thread", call.thread},
                   {"name", call.name},
                   {"selector", call.selector ? Json(*call.selector) : Json()},
                   {"file", call.file},
                   {"end", endName(call.end)},
                   {"result", answered ? Json(call.result) : Json()},
                   {"resultName", answered ? Json(call.resultName) : Json()},
                   {"seconds", call.seconds},
                   {"failed", call.failed},
                   {"explanation", call.explanation},
                   {"lines", lines},
                   {"linesLeftOut", call.linesLeftOut}});
}

std::string LogPrinter::json(const LogSummary& summary) {
    Json groups = Json::array();
    for (const auto& [failure, count, kind] : summary.groups) {
        groups.push_back({{"what", failure.what},
                          {"explanation", failure.explanation},
                          {"count", count},
                          {"firstLine", failure.line},
                          {"firstTime", failure.stamp}});
    }
    Json files = Json::array();
    for (const auto& [name, file] : summary.files) {
        files.push_back({{"path", name}, {"calls", file.calls}, {"failures", file.failures}});
    }
    Json first;
    if (summary.firstFailure) {
        first = {{"line", summary.firstFailure->line},
                 {"time", summary.firstFailure->stamp},
                 {"what", summary.firstFailure->what},
                 {"explanation", summary.firstFailure->explanation}};
    }
    return dumped({{"type", "summary"},
                   {"application", summary.application},
                   {"from", summary.firstStamp},
                   {"to", summary.lastStamp},
                   {"closed", summary.closed},
                   {"calls", summary.calls},
                   {"failedCalls", summary.failedCalls},
                   {"failures", summary.failures},
                   {"notes", summary.notes},
                   {"unknownLines", summary.unknownLines},
                   {"threads", summary.threads.size()},
                   {"files", files},
                   {"firstFailure", first},
                   {"failureGroups", groups}});
}

}  // namespace simhost::tool
