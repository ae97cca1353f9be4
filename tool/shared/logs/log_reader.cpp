#include "tool/shared/logs/log_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <tuple>
#include <utility>

namespace simhost::tool {
namespace {

constexpr std::string_view kStampForm = "dddd-dd-dd dd:dd:dd";  // d: any digit
constexpr std::string_view kNameStampForm = "dddddddd_dddddd";
constexpr std::string_view kNamePrefix = "orvantis_pr_importer_";
constexpr std::string_view kNameSuffix = ".log";

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool hasForm(std::string_view text, std::string_view form) {
    return text.size() == form.size() &&
           std::equal(text.begin(), text.end(), form.begin(),
                      [](char c, char wanted) { return wanted == 'd' ? isDigit(c) : c == wanted; });
}

std::int64_t number(std::string_view digits) {
    std::int64_t value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

// Days of the proleptic Gregorian calendar from 1 March of year 0.
std::int64_t daysOf(std::int64_t year, std::int64_t month, std::int64_t day) {
    const std::int64_t y = month <= 2 ? year - 1 : year;
    const std::int64_t monthFromMarch = (month + 9) % 12;
    return y * 365 + y / 4 - y / 100 + y / 400 + (monthFromMarch * 153 + 2) / 5 + day - 1;
}

std::int64_t secondsOf(std::string_view stamp) {
    const std::int64_t days =
        daysOf(number(stamp.substr(0, 4)), number(stamp.substr(5, 2)), number(stamp.substr(8, 2)));
    return ((days * 24 + number(stamp.substr(11, 2))) * 60 + number(stamp.substr(14, 2))) * 60 +
           number(stamp.substr(17, 2));
}

// What sorts logs by age: the stamp, then the number, whose digits may be two or three.
std::optional<std::pair<std::string_view, std::int64_t>> ageOf(std::string_view name) {
    if (!name.starts_with(kNamePrefix) || !name.ends_with(kNameSuffix)) {
        return std::nullopt;
    }
    name.remove_prefix(kNamePrefix.size());
    if (name.size() < kNameStampForm.size() + 1 + 2 + kNameSuffix.size()) {
        return std::nullopt;
    }
    name.remove_suffix(kNameSuffix.size());
    const std::string_view stamp = name.substr(0, kNameStampForm.size());
    const std::string_view digits = name.substr(kNameStampForm.size() + 1);
    if (!hasForm(stamp, kNameStampForm) || name[kNameStampForm.size()] != '_' || digits.size() > 3 ||
        !std::all_of(digits.begin(), digits.end(), isDigit)) {
        return std::nullopt;
    }
    return std::pair{stamp, number(digits)};
}

}  // namespace

std::optional<LogEntry> parseLogLine(std::string_view line) {
    // "[" stamp "] [" thread "] " text
    constexpr std::size_t kThreadAt = 1 + kStampForm.size() + 3;
    if (line.size() < kThreadAt || line[0] != '[' || line.substr(1 + kStampForm.size(), 3) != "] [") {
        return std::nullopt;
    }
    LogEntry entry;
    const std::string_view stamp = line.substr(1, kStampForm.size());
    if (!hasForm(stamp, kStampForm)) {
        return std::nullopt;
    }
    const char* const end = line.data() + line.size();
    const auto [after, error] = std::from_chars(line.data() + kThreadAt, end, entry.thread);
    if (error != std::errc() || after == end || *after != ']') {
        return std::nullopt;
    }
    // An empty message leaves the header's blank, which a careless editor may have removed.
    std::string_view rest = line.substr(static_cast<std::size_t>(after - line.data()) + 1);
    if (!rest.empty() && rest.front() == ' ') {
        rest.remove_prefix(1);
    }
    entry.stamp = stamp;
    entry.seconds = secondsOf(stamp);
    entry.text = rest;
    return entry;
}

void LogReader::feed(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        const std::string_view piece = bytes.substr(0, end);
        // The header comes on top; a few bytes more or less do not matter.
        m_line.append(piece.substr(0, kMostText - std::min(kMostText, m_line.size())));
        if (end == std::string_view::npos) {
            return;
        }
        takeLine();
        bytes.remove_prefix(end + 1);
    }
}

void LogReader::takeLine() {
    ++m_lines;
    if (!m_line.empty() && m_line.back() == '\r') {
        m_line.pop_back();
    }
    if (auto entry = parseLogLine(m_line)) {
        flush(false);
        entry->line = m_lines;
        m_open = std::move(entry);
    } else if (m_open) {
        const std::size_t room = kMostText - std::min(kMostText, m_open->text.size());
        m_open->text += ("\n" + m_line).substr(0, room);
    } else {
        ++m_foreignLines;
    }
    m_line.clear();
}

std::optional<LogEntry> LogReader::next() {
    if (m_ready.empty()) {
        return std::nullopt;
    }
    LogEntry entry = std::move(m_ready.front());
    m_ready.pop_front();
    return entry;
}

void LogReader::flush(bool lastLine) {
    if (lastLine && !m_line.empty()) {
        takeLine();
    }
    if (m_open) {
        while (m_open->text.ends_with('\n')) {
            m_open->text.pop_back();
        }
        m_ready.push_back(std::move(*m_open));
        m_open.reset();
    }
}

bool isLogName(std::string_view name) {
    return ageOf(name).has_value();
}

std::string newestLogName(std::span<const std::string> names) {
    std::string_view newest;
    for (const std::string& name : names) {
        const auto age = ageOf(name);
        if (age && (newest.empty() || *ageOf(newest) < *age)) {
            newest = name;
        }
    }
    return std::string(newest);
}

}  // namespace simhost::tool
