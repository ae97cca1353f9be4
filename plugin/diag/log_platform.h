// What the diagnostic log needs from the system, without a Windows header: the registry switch, the profile
// folder, files by native path, the console, the clock. One implementation talks to Windows, a twin beside it
// serves the native test builds. Only the log calls these; nothing here decides anything and
// nothing throws except for memory.
#pragma once

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string>

namespace orvantis::log_platform {

#ifdef _WIN32
using PathChar = wchar_t;
#else
using PathChar = char;
#endif
/// A path in the system's own form: UTF-16 on Windows.
using Path = std::basic_string<PathChar>;

/// The registry value Software\Orvantis, EnableAdobeLog of the current user: its first four bytes, whatever
/// its type. Nothing when it is missing, longer than four bytes or cannot be read.
std::optional<std::uint32_t> readSwitchValue();

/// The user's profile folder; nothing when the system does not tell it.
std::optional<Path> profileFolder();

/// Appends one folder name to `folder`. False when the result would be too long for the system; then `folder`
/// must not be used any more.
bool appendFolder(Path& folder, const char* name);

/// Creates one folder. An existing one and a failure are the same to the log: it finds out when it creates
/// its file.
void makeFolder(const Path& folder);

/// "<folder>\<baseName>_<number>.log", the number with two digits at least. `baseName` is ASCII.
Path numberedFile(const Path& folder, const char* baseName, int number);

/// fopen in text mode; null on failure. The caller closes the file.
std::FILE* openForReading(const Path& path);
std::FILE* openForWriting(const Path& path);

/// Writes `text` (NUL-terminated) to a file in text mode, so that each "\n" reaches the disk as CR LF. A
/// failed write is not reported.
void writeText(const char* text, std::FILE& file);

/// The same for a line of at most 255 bytes, past the runtime's stream and its lock, when the thread that
/// holds the lock is gone. Allocates nothing. The stream must be unbuffered.
void writeTextUnlocked(const char* text, std::FILE& file) noexcept;

/// Opens a console window with room for 500 lines of 120 columns, and writes to it.
void openConsole();
void writeConsole(const char* text) noexcept;

/// The current local time.
std::tm localTime() noexcept;

/// Seconds since 1970, UTC. Waits for nobody, unlike the conversion to local time, which has a lock.
std::int64_t utcSeconds() noexcept;

/// The system's number of the calling thread.
std::uint32_t threadId() noexcept;

/// The path of the running program (the host), in the system's narrow code page; empty when unknown.
std::string applicationPath();

}  // namespace orvantis::log_platform
