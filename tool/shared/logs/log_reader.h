// The lines of the plug-in's diagnostic log, from text in pieces of any size. Knows the form of a line and of
// a log's file name, nothing of what lines mean. Not thread-safe; touches no file.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace simhost::tool {

/// "[2026-11-15 22:10:09] [5312] Log opened", and the headless lines behind it that belong to it: some
/// messages have several lines.
struct LogEntry {
    std::uint64_t line = 0;    ///< number of its first line in the file, from 1
    std::string stamp;         ///< "2026-11-15 22:10:09", local time of the machine that wrote it
    std::int64_t seconds = 0;  ///< the stamp as seconds from a fixed day, for differences
    std::uint32_t thread = 0;
    std::string text;  ///< lines joined by "\n", without one at the end
};

/// One line with its header, without line end. Nothing when there is no well-formed header.
std::optional<LogEntry> parseLogLine(std::string_view line);

class LogReader {
 public:
    /// What one entry keeps of its text; the rest of a longer one is dropped.
    static constexpr std::size_t kMostText = 64 * 1024;

    void feed(std::string_view bytes);
    /// The next entry that cannot grow any more: one behind which another has begun.
    std::optional<LogEntry> next();
    /// Takes the entry at the end as whole too: the file has ended, or nobody has written for a while.
    /// An unfinished line waits for its end unless `lastLine`.
    void flush(bool lastLine);

    std::uint64_t lines() const noexcept { return m_lines; }
    /// Lines that belong to no entry: not the plug-in's log.
    std::uint64_t foreignLines() const noexcept { return m_foreignLines; }

 private:
    void takeLine();

    std::string m_line;  // begun, not ended
    std::optional<LogEntry> m_open;
    std::deque<LogEntry> m_ready;
    std::uint64_t m_lines = 0;
    std::uint64_t m_foreignLines = 0;
};

/// True for "orvantis_pr_importer_20261115_221009_00.log".
bool isLogName(std::string_view name);
/// The log that was begun last among file names, empty when none is a log's. Names of one second are told
/// apart by their number.
std::string newestLogName(std::span<const std::string> names);

}  // namespace simhost::tool
