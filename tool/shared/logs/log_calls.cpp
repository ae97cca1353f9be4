#include "tool/shared/logs/log_calls.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace simhost::tool {
namespace {

// Takes "[name] (number)" from the front of `text`.
struct NamedCode {
    std::string_view name;
    std::int32_t code = 0;
};

std::optional<NamedCode> takeNamedCode(std::string_view& text) {
    if (text.empty() || text.front() != '[') {
        return std::nullopt;
    }
    const std::size_t close = text.find("] (");
    if (close == std::string_view::npos) {
        return std::nullopt;
    }
    NamedCode out;
    out.name = text.substr(1, close - 1);
    const char* const end = text.data() + text.size();
    const auto [after, error] = std::from_chars(text.data() + close + 3, end, out.code);
    if (error != std::errc() || after == end || *after != ')') {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(after - text.data()) + 1);
    return out;
}

ReadLine readLine(LogEntry entry) {
    ReadLine line;
    if (const LineExplanation* row = explainLine(entry.text)) {
        line.severity = row->severity;
        line.explanation = row->text;
    }
    line.entry = std::move(entry);
    return line;
}

// The path in "Open: '…', stream: 0" and "m_filePathUtf8: '…'".
std::string_view fileOf(std::string_view text) {
    for (const std::string_view prefix : {"Open: '", "m_filePathUtf8: '"}) {
        if (text.starts_with(prefix)) {
            text.remove_prefix(prefix.size());
            return text.substr(0, text.rfind('\''));
        }
    }
    return {};
}

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

void addLine(LoggedCall& call, LogEntry entry) {
    ReadLine line = readLine(std::move(entry));
    const bool failure = line.severity == Severity::kFailure;
    if (failure) {
        call.failed = true;
    }
    if (const std::string_view file = fileOf(line.entry.text); !file.empty()) {
        call.file = file;
    }
    if (call.lines.size() < LoggedCall::kMostLines ||
        (failure && call.lines.size() < 2 * LoggedCall::kMostLines)) {
        call.lines.push_back(std::move(line));
    } else {
        ++call.linesLeftOut;
    }
}

void answer(LoggedCall& call, std::string_view name, std::int32_t result) {
    call.end = LoggedCall::End::kAnswered;
    call.resultName = name;
    call.result = result;
    call.explanation = explainResult(call.name, result);
    if (resultSeverity(call.name, result) == Severity::kFailure) {
        call.failed = true;
    }
}

}  // namespace

std::vector<LogItem> CallPairing::add(LogEntry entry) {
    std::vector<LogItem> out;
    Thread& thread = m_threads[entry.thread];
    if (entry.text == kCallSeparator) {
        thread.separated = true;
        return out;
    }
    if (begins(thread, entry, out)) {
        return out;
    }
    if (!thread.call) {
        out.emplace_back(readLine(std::move(entry)));
        return out;
    }
    const std::int64_t seconds = std::max<std::int64_t>(entry.seconds - thread.began, 0);
    if (!ends(thread, entry)) {
        addLine(*thread.call, std::move(entry));
        if (thread.call->end != LoggedCall::End::kEscaped) {
            return out;
        }
    }
    thread.call->seconds = seconds;
    out.emplace_back(std::move(*thread.call));
    thread.call.reset();
    return out;
}

// The line behind a separator: "[imGetInfo8] (37)", "[OnGetFrame]".
bool CallPairing::begins(Thread& thread, const LogEntry& entry, std::vector<LogItem>& out) {
    if (!std::exchange(thread.separated, false)) {
        return false;
    }
    LoggedCall call;
    std::string_view rest = entry.text;
    if (const auto named = takeNamedCode(rest); named && rest.empty()) {
        call.name = named->name;
        call.selector = named->code;
    } else if (entry.text.size() > 2 && entry.text.front() == '[' && entry.text.back() == ']') {
        call.name = entry.text.substr(1, entry.text.size() - 2);
    } else {
        return false;
    }
    if (thread.call) {
        thread.call->end = LoggedCall::End::kNoAnswer;
        thread.call->explanation = "this call never came back";
        thread.call->failed = true;
        out.emplace_back(std::move(*thread.call));
    }
    call.line = entry.line;
    call.stamp = entry.stamp;
    call.thread = entry.thread;
    thread.began = entry.seconds;
    thread.call = std::move(call);
    return true;
}

// "    [imNoErr] (0)"; "    OnFlush: [aiNoError] (0)"; "    OnGetFrame: [aiNoError] (0), [imNoErr] (0)"; and,
// as a line of the call that stays one, the line of an escaped exception.
bool CallPairing::ends(Thread& thread, const LogEntry& entry) {
    LoggedCall& call = *thread.call;
    std::string_view text = entry.text;
    if (text.starts_with("FATAL: Unhandled exception during ") ||
        text.starts_with("xAsyncImportEntry: FATAL: ")) {
        call.end = LoggedCall::End::kEscaped;
        call.resultName = "????";
        call.result = 99;
        call.explanation = explainResult(call.name, call.result);
        call.failed = true;
        return false;
    }
    if (!text.starts_with("    ")) {
        return false;
    }
    text.remove_prefix(4);
    const std::string async = call.name + ": ";
    if (!call.selector && text.starts_with(async)) {
        text.remove_prefix(async.size());
        auto named = takeNamedCode(text);
        if (named && text.starts_with(", ")) {
            text.remove_prefix(2);
            named = takeNamedCode(text);
        }
        if (named && text.empty()) {
            answer(call, named->name, named->code);
            return true;
        }
        return false;
    }
    const auto named = takeNamedCode(text);
    if (!call.selector || !named || !text.empty()) {
        return false;
    }
    answer(call, named->name, named->code);
    return true;
}

std::vector<LogItem> CallPairing::finish() {
    std::vector<LogItem> out;
    for (auto& [id, thread] : m_threads) {
        if (thread.call) {
            thread.call->failed = true;
            thread.call->explanation =
                "the log ends inside this call: it is still running, or the program crashed or was ended";
            out.emplace_back(std::move(*thread.call));
            thread.call.reset();
        }
    }
    std::sort(out.begin(), out.end(), [](const LogItem& a, const LogItem& b) {
        return std::get<LoggedCall>(a).line < std::get<LoggedCall>(b).line;
    });
    return out;
}

bool isFailure(const LogItem& item) noexcept {
    if (const auto* line = std::get_if<ReadLine>(&item)) {
        return line->severity == Severity::kFailure;
    }
    return std::get<LoggedCall>(item).failed;
}

bool isRefused(const LoggedCall& call) noexcept {
    return call.end != LoggedCall::End::kAnswered ||
           resultSeverity(call.name, call.result) == Severity::kFailure;
}

void LogSummary::add(const LogItem& item) {
    if (const auto* line = std::get_if<ReadLine>(&item)) {
        addLine(*line, true);
    } else {
        addCall(std::get<LoggedCall>(item));
    }
}

void LogSummary::addStamp(const std::string& stamp) {
    if (firstStamp.empty() || stamp < firstStamp) {
        firstStamp = stamp;
    }
    lastStamp = std::max(lastStamp, stamp);
}

void LogSummary::addLine(const ReadLine& line, bool outside) {
    constexpr std::string_view kApplication = "Application: ";
    threads.insert(line.entry.thread);
    addStamp(line.entry.stamp);
    notes += line.severity == Severity::kNote ? 1U : 0U;
    unknownLines += line.explanation.empty() ? 1U : 0U;
    if (line.entry.text.starts_with(kApplication)) {
        application = line.entry.text.substr(kApplication.size());
    }
    closed = outside && line.entry.text == "Log closed";
    if (line.severity == Severity::kFailure) {
        failures += outside ? 1U : 0U;
        group(line.entry.line, line.entry.stamp, line.entry.text, line.explanation);
        fail(line.entry.line, line.entry.stamp, line.entry.text, line.explanation);
    }
}

void LogSummary::addCall(const LoggedCall& call) {
    ++calls;
    threads.insert(call.thread);
    addStamp(call.stamp);
    for (const ReadLine& line : call.lines) {
        addLine(line, false);
    }
    closed = false;
    if (call.failed) {
        ++failedCalls;
        ++failures;
        const std::string answered = call.resultName.empty()
                                         ? "no answer"
                                         : call.resultName + " (" + std::to_string(call.result) + ")";
        if (isRefused(call)) {
            group(call.line, call.stamp, call.name + ": " + answered, call.explanation);
        }
        fail(call.line, call.stamp, call.name + ": " + answered, call.explanation);
    }
    if (!call.file.empty()) {
        const bool room = files.size() < kMostFiles || files.contains(call.file);
        File& file = files[room ? call.file : std::string()];
        ++file.calls;
        file.failures += call.failed ? 1U : 0U;
    }
}

// A call's own lines come first and tell more than its answer; other threads' calls end in any order.
void LogSummary::fail(std::uint64_t line, const std::string& stamp, std::string what,
                      std::string explanation) {
    if (!firstFailure) {
        firstFailure = Failure{line, stamp, std::move(what), std::move(explanation)};
    }
}

void LogSummary::group(std::uint64_t line, const std::string& stamp, const std::string& what,
                       const std::string& explanation) {
    const std::string kind = withoutAddresses(what);
    const auto known =
        std::find_if(groups.begin(), groups.end(), [&kind](const FailureGroup& g) { return g.kind == kind; });
    if (known != groups.end()) {
        ++known->count;
    } else if (groups.size() < kMostGroups) {
        groups.push_back({{line, stamp, what, explanation}, 1, kind});
    } else {
        ++ungrouped;
    }
}

}  // namespace simhost::tool
