// Opening the log file and writing lines. See diagnostic_log.h.

#include "diag/diagnostic_log.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>

namespace orvantis {

namespace {

constexpr int kNumbers = 1000;

// Room in a line's buffer beside the message. The header "[YYYY-mm-dd HH:MM:SS] [<thread>] " takes at most 36
// of it, the line end and the NUL 2.
constexpr std::size_t kSpare = 128;

// Calendar and clock of a time as seconds since 1970, and back; no time zone is asked for.
std::int64_t secondsOf(const std::tm& time) noexcept {
    using namespace std::chrono;
    const sys_days day = year{time.tm_year + 1900} / (time.tm_mon + 1) / time.tm_mday;
    return duration_cast<seconds>(day.time_since_epoch() + hours{time.tm_hour} + minutes{time.tm_min})
               .count() +
           time.tm_sec;
}

std::tm timeOf(std::int64_t secondsSince1970) noexcept {
    using namespace std::chrono;
    const sys_seconds moment{seconds{secondsSince1970}};
    const auto day = floor<days>(moment);
    const year_month_day date{day};
    const hh_mm_ss clock{moment - day};
    std::tm time{};
    time.tm_year = static_cast<int>(date.year()) - 1900;
    time.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    time.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    time.tm_hour = static_cast<int>(clock.hours().count());
    time.tm_min = static_cast<int>(clock.minutes().count());
    time.tm_sec = static_cast<int>(clock.seconds().count());
    return time;
}

}  // namespace

FilePtr createNumberedFile(const log_platform::Path& folder, const char* baseName) {
    FilePtr file;
    for (int number = 0; file == nullptr && number < kNumbers; ++number) {
        const log_platform::Path path = log_platform::numberedFile(folder, baseName, number);
        // A file that can be read is somebody's log. Two processes can still pass this test at once; the host
        // starts its processes one after the other.
        if (const FilePtr taken{log_platform::openForReading(path)}; taken != nullptr) {
            continue;
        }
        file.reset(log_platform::openForWriting(path));
    }
    return file;
}

DiagnosticLog::DiagnosticLog(const std::string& name, bool console) {
    const std::tm now = log_platform::localTime();
    m_localOffset = secondsOf(now) - log_platform::utcSeconds();
    std::array<char, 64> stamp{};
    (void)std::strftime(stamp.data(), stamp.size(), "%Y%m%d_%H%M%S", &now);
    std::array<char, 128> baseName{};
    (void)std::snprintf(baseName.data(), baseName.size(), "%s_%s", name.c_str(), stamp.data());

    std::optional<log_platform::Path> folder = log_platform::profileFolder();
    if (!folder) {
        return;
    }
    for (const char* part : {"orvantis", "adobe"}) {
        if (!log_platform::appendFolder(*folder, part)) {
            return;
        }
        log_platform::makeFolder(*folder);
    }
    m_file = createNumberedFile(*folder, baseName.data());
    if (m_file != nullptr) {
        // Each line must be on the disk when the host crashes right after it.
        (void)std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
    }

    m_console = console;
    if (m_console) {
        log_platform::openConsole();
    }

    writeLine("Log opened");
    writeLine("Application: %s", log_platform::applicationPath().c_str());
}

void DiagnosticLog::write(const char* format, std::va_list arguments) {
    const std::lock_guard lock(m_mutex);
    const std::tm now = log_platform::localTime();
    std::array<char, 64> time{};
    (void)std::strftime(time.data(), time.size(), "%Y-%m-%d %H:%M:%S", &now);
    const std::string thread = std::to_string(log_platform::threadId());

    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);

    // Behind the line as much again: what bounds the formatting below does not count the header.
    std::string text((length < 0 ? 0 : static_cast<std::size_t>(length)) + 2 * kSpare, '\0');
    const int header = std::snprintf(text.data(), text.size(), "[%s] [%s] ", time.data(), thread.c_str());
    const std::size_t start = header < 0 ? 0 : static_cast<std::size_t>(header);
    // The room is that for the measured length. An argument that another thread changes meanwhile can make
    // the message longer, which is then cut, or shorter, or impossible to format.
    int formatted = length;
    if (length >= 0) {
        formatted = std::vsnprintf(text.data() + start, static_cast<std::size_t>(length) + kSpare + 1, format,
                                   arguments);
    }
    // A message that cannot be formatted leaves a line with the header alone, whose blank the line end takes.
    const std::size_t end = formatted < 0 ? (start == 0 ? 0 : start - 1)
                                          : start + static_cast<std::size_t>(std::min(length, formatted));
    text[end] = '\n';
    text[end + 1] = '\0';

    if (m_console) {
        log_platform::writeConsole(text.c_str());
    }
    if (m_file != nullptr) {
        log_platform::writeText(text.c_str(), *m_file);
    }
}

void DiagnosticLog::writeLast(const char* message) noexcept {
    const std::tm now = timeOf(log_platform::utcSeconds() + m_localOffset);
    std::array<char, kSpare> text{};
    (void)std::snprintf(text.data(), text.size(), "[%04d-%02d-%02d %02d:%02d:%02d] [%u] %.64s\n",
                        now.tm_year + 1900, now.tm_mon + 1, now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec,
                        static_cast<unsigned>(log_platform::threadId()), message);
    if (m_console) {
        log_platform::writeConsole(text.data());
    }
    if (m_file != nullptr) {
        log_platform::writeTextUnlocked(text.data(), *m_file);
    }
}

void DiagnosticLog::writeLine(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    try {
        write(format, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
}

}  // namespace orvantis
