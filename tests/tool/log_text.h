// A log as the plug-in writes it: stamps of one day, threads, Windows line ends.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/shared/logs/log_calls.h"
#include "tool/shared/logs/log_reader.h"

namespace simhost::tool {

/// "22:10:09 5312 text" becomes "[2026-11-15 22:10:09] [5312] text\r\n", line for line.
inline std::string logText(std::string_view lines) {
    std::string out;
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size());
        const std::string_view line = lines.substr(0, end);
        const std::size_t blank = line.find(' ', 9);
        out += "[2026-11-15 " + std::string(line.substr(0, 8)) + "] [" +
               std::string(line.substr(9, blank - 9)) + "] " +
               (blank == std::string_view::npos ? "" : std::string(line.substr(blank + 1))) + "\r\n";
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    return out;
}

inline std::vector<LogEntry> entriesOf(std::string_view text) {
    LogReader reader;
    reader.feed(text);
    reader.flush(true);
    std::vector<LogEntry> out;
    while (auto entry = reader.next()) {
        out.push_back(*entry);
    }
    return out;
}

inline std::vector<LogItem> itemsOf(std::string_view text) {
    CallPairing pairing;
    std::vector<LogItem> out;
    for (LogEntry& entry : entriesOf(text)) {
        for (LogItem& item : pairing.add(std::move(entry))) {
            out.push_back(std::move(item));
        }
    }
    for (LogItem& item : pairing.finish()) {
        out.push_back(std::move(item));
    }
    return out;
}

/// The only call of a log.
inline LoggedCall callOf(std::string_view lines) {
    const std::vector<LogItem> items = itemsOf(logText(lines));
    return items.size() == 1 && std::holds_alternative<LoggedCall>(items[0]) ? std::get<LoggedCall>(items[0])
                                                                             : LoggedCall{};
}

}  // namespace simhost::tool
