// Opening the log file and writing lines. See diagnostic_log.h.

#include "diag/diagnostic_log.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace orvantis {

namespace {

constexpr int kNumbers = 1000;

// Room in a line's buffer beside the message. The header "[YYYY-mm-dd HH:MM:SS] [<thread>] " takes at most 36
// of it, the line end and the NUL 2.
constexpr std::size_t kSpare = 128;

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
    const std::tm now = log_platform::localTime();
    std::array<char, 64> time{};
    (void)std::strftime(time.data(), time.size(), "%Y-%m-%d %H:%M:%S", &now);
    std::array<char, kSpare> text{};
    (void)std::snprintf(text.data(), text.size(), "[%s] [%u] %.64s\n", time.data(),
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
