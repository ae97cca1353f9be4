// Shows what was read from the plug-in's log, as text for people or as JSON. Not thread-safe.
#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "tool/shared/logs/log_calls.h"

namespace simhost::tool {

struct LogPrintOptions {
    bool colour = false;
    bool all = false;           ///< also the rows of tables, and every explanation each time
    bool failuresOnly = false;  ///< items without a failure are left out, and of the others all but failures
};

class LogPrinter {
 public:
    explicit LogPrinter(LogPrintOptions options) : m_options(options) {}

    /// Empty when the item is left out. Lines are explained the first time that they occur, failures always.
    std::string text(const LogItem& item);
    std::string text(const LogSummary& summary) const;

    /// One JSON object on one line, without line end. Empty when the item is left out.
    std::string json(const LogItem& item) const;
    static std::string json(const LogSummary& summary);

 private:
    std::string lineText(const ReadLine& line, const char* indent);
    std::string callText(const LoggedCall& call);
    std::string groupText(const LogSummary& summary) const;
    std::string paint(const char* colour, const std::string& text) const;
    bool shown(const LogItem& item) const noexcept;

    LogPrintOptions m_options;
    std::set<std::string> m_explained;
};

/// The text without characters that a terminal would obey.
std::string printable(const std::string& text);

}  // namespace simhost::tool
