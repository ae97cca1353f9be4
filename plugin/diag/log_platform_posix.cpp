// The native twin of diag/log_platform_win32.cpp, for test builds only. The environment stands in for the
// registry and the profile:
//   ORVANTIS_TEST_LOG_SWITCH   the switch's value, decimal or 0x...; absent: the registry value is missing
//   ORVANTIS_TEST_PROFILE      the profile folder; absent: the system does not tell it
//   ORVANTIS_TEST_CONSOLE      a file that stands in for the console window; absent: console output is
//   dropped
// Files get the bytes that a Windows text file would get, so log readers see no difference.

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "diag/log_platform.h"

namespace orvantis::log_platform {

std::optional<std::uint32_t> readSwitchValue() {
    const char* value = std::getenv("ORVANTIS_TEST_LOG_SWITCH");
    if (value == nullptr || *value == '\0') {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(std::strtoul(value, nullptr, 0));
}

std::optional<Path> profileFolder() {
    const char* folder = std::getenv("ORVANTIS_TEST_PROFILE");
    if (folder == nullptr || *folder == '\0') {
        return std::nullopt;
    }
    return Path(folder);
}

bool appendFolder(Path& folder, const char* name) {
    constexpr std::size_t kLongestPath = 259;  // the bound of the Windows function
    const Path joined = folder + "/" + name;
    if (joined.size() > kLongestPath) {
        return false;
    }
    folder = joined;
    return true;
}

void makeFolder(const Path& folder) {
    (void)::mkdir(folder.c_str(), 0777);
}

Path numberedFile(const Path& folder, const char* baseName, int number) {
    std::array<char, 16> digits{};
    (void)std::snprintf(digits.data(), digits.size(), "%02d", number);
    return folder + "/" + baseName + "_" + digits.data() + ".log";
}

std::FILE* openForReading(const Path& path) {
    return std::fopen(path.c_str(), "r");
}

std::FILE* openForWriting(const Path& path) {
    return std::fopen(path.c_str(), "w");
}

void writeText(const char* text, std::FILE& file) {
    std::string bytes;
    for (; *text != '\0'; ++text) {
        if (*text == '\n') {
            bytes += '\r';
        }
        bytes += *text;
    }
    (void)std::fwrite(bytes.data(), 1, bytes.size(), &file);
}

void writeTextUnlocked(const char* text, std::FILE& file) noexcept {
    std::array<char, 512> bytes{};  // each byte of the line twice, at worst
    std::size_t count = 0;
    for (; *text != '\0' && count + 2 <= bytes.size(); ++text) {
        if (*text == '\n') {
            bytes[count++] = '\r';
        }
        bytes[count++] = *text;
    }
    const ssize_t written = ::write(::fileno(&file), bytes.data(), count);
    static_cast<void>(written);
}

void openConsole() {}

void writeConsole(const char* text) noexcept {
    const char* path = std::getenv("ORVANTIS_TEST_CONSOLE");
    if (path == nullptr) {
        return;
    }
    if (std::FILE* const file = std::fopen(path, "a"); file != nullptr) {
        (void)std::fputs(text, file);
        (void)std::fclose(file);
    }
}

std::tm localTime() noexcept {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    (void)::localtime_r(&now, &local);
    return local;
}

std::int64_t utcSeconds() noexcept {
    return std::time(nullptr);
}

std::uint32_t threadId() noexcept {
    return static_cast<std::uint32_t>(::gettid());
}

std::string applicationPath() {
    std::array<char, 4096> path{};
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size() - 1);
    return length < 0 ? std::string() : std::string(path.data(), static_cast<std::size_t>(length));
}

}  // namespace orvantis::log_platform
