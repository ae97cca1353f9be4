// Puts the lines of the plug-in's log together to the host's calls: selector, what happened, answer, and how
// long it took. Lines of several threads may be mixed. Pure data in, pure data out; not thread-safe.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tool/shared/logs/log_explanations.h"
#include "tool/shared/logs/log_reader.h"

namespace simhost::tool {

/// The line that stands ahead of every call.
inline constexpr std::string_view kCallSeparator = "----------------------";

/// A line with its meaning.
struct ReadLine {
    LogEntry entry;
    Severity severity = Severity::kRoutine;
    std::string explanation;  ///< empty for a line that the plug-in does not write
};

struct LoggedCall {
    enum class End {
        kAnswered,  ///< with the result below
        kEscaped,   ///< an exception left the plug-in's code: the host got 99
        kNoAnswer,  ///< the thread's next call came without an answer to this one
        kOpen,      ///< the log ends first
    };
    /// Lines kept; a call with more keeps their beginning, and the failures.
    static constexpr std::size_t kMostLines = 2000;

    std::uint64_t line = 0;  ///< number of the selector's line
    std::string stamp;
    std::uint32_t thread = 0;
    std::string name;                      ///< "imGetInfo8", "OnGetFrame"
    std::optional<std::int32_t> selector;  ///< none for calls of the background importer
    std::string file;                      ///< the file that the call is about, if a line tells it
    std::vector<ReadLine> lines;           ///< between the selector and the answer
    std::size_t linesLeftOut = 0;
    End end = End::kOpen;
    std::string resultName;
    std::int32_t result = 0;
    std::int64_t seconds = 0;  ///< from the selector to the answer; the log knows whole seconds only
    std::string explanation;   ///< of the answer
    bool failed = false;       ///< by its answer, for want of one, or by one of its lines
};

/// A call, or a line outside of all calls.
using LogItem = std::variant<LoggedCall, ReadLine>;

class CallPairing {
 public:
    /// What `entry` completes, in order: nothing, a line, a call.
    std::vector<LogItem> add(LogEntry entry);
    /// The calls that have got no answer, in the order of their beginning.
    std::vector<LogItem> finish();

 private:
    struct Thread {
        bool separated = false;  // its last line was the separator
        std::optional<LoggedCall> call;
        std::int64_t began = 0;
    };
    bool begins(Thread& thread, const LogEntry& entry, std::vector<LogItem>& out);
    static bool ends(Thread& thread, const LogEntry& entry);

    std::map<std::uint32_t, Thread> m_threads;
};

/// What a log says on the whole.
class LogSummary {
 public:
    struct File {
        std::uint64_t calls = 0;
        std::uint64_t failures = 0;
    };
    struct Failure {
        std::uint64_t line = 0;
        std::string stamp;
        std::string what;         ///< the line, or the call with its answer
        std::string explanation;  ///<
    };
    /// Failures of one wording, whatever addresses stand in it.
    struct FailureGroup {
        Failure first;
        std::uint64_t count = 0;
        std::string kind;  ///< the wording without them
    };
    /// More wordings than this are counted only.
    static constexpr std::size_t kMostGroups = 100;
    /// More names than this are counted under "".
    static constexpr std::size_t kMostFiles = 10'000;

    void add(const LogItem& item);

    std::string application;
    std::string firstStamp;
    std::string lastStamp;
    std::uint64_t calls = 0;
    std::uint64_t failedCalls = 0;
    std::uint64_t failures = 0;  ///< failed calls, and failures outside of all calls
    std::uint64_t notes = 0;
    std::uint64_t unknownLines = 0;
    std::set<std::uint32_t> threads;
    std::map<std::string, File> files;
    std::optional<Failure> firstFailure;
    std::vector<FailureGroup> groups;  ///< lines that are failures, and answers; in the order of the firsts
    std::uint64_t ungrouped = 0;
    bool closed = false;  ///< the log has its last line

 private:
    void addLine(const ReadLine& line, bool outside);
    void addCall(const LoggedCall& call);
    void addStamp(const std::string& stamp);
    void group(std::uint64_t line, const std::string& stamp, const std::string& what,
               const std::string& explanation);
    void fail(std::uint64_t line, const std::string& stamp, std::string what, std::string explanation);
};

/// True when the call's own answer, or the want of one, is a failure.
bool isRefused(const LoggedCall& call) noexcept;

/// True when the item, or a line of the call, is a failure.
bool isFailure(const LogItem& item) noexcept;

}  // namespace simhost::tool
