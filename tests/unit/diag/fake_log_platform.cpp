// See fake_log_platform.h. Takes the place of diag/log_platform_*.cpp in its test program.

#include "tests/unit/diag/fake_log_platform.h"

#include <string>

namespace orvantis {

namespace test {

FakeLogPlatform& fakeLogPlatform() {
    // Never destroyed: the log is used until the very end of the process.
    static FakeLogPlatform& platform = *new FakeLogPlatform;
    return platform;
}

}  // namespace test

namespace log_platform {

namespace {

// The paths of this system are ASCII.
Path pathOf(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string textOf(const Path& path) {
    std::string text;
    for (const PathChar c : path) {
        text += static_cast<char>(c);
    }
    return text;
}

void record(const std::string& call) {
    test::fakeLogPlatform().calls.push_back(call);
}

int numberOf(const Path& path) {
    const std::string text = textOf(path);
    const std::size_t start = text.rfind('#') + 1;
    return std::stoi(text.substr(start));
}

// Real streams for the log to hold; what it writes does not go there.
std::FILE* anyStream() {
#ifdef _WIN32
    return std::fopen("NUL", "w");
#else
    return std::fopen("/dev/null", "w");
#endif
}

}  // namespace

std::optional<std::uint32_t> readSwitchValue() {
    record("switch");
    return test::fakeLogPlatform().switchValue;
}

std::optional<Path> profileFolder() {
    record("profile");
    return test::fakeLogPlatform().hasProfile ? std::optional<Path>(pathOf("home")) : std::nullopt;
}

bool appendFolder(Path& folder, const char* name) {
    record(std::string("append ") + name);
    if (test::fakeLogPlatform().foldersThatFit == 0) {
        return false;
    }
    --test::fakeLogPlatform().foldersThatFit;
    folder += pathOf(std::string("/") + name);
    return true;
}

void makeFolder(const Path& folder) {
    record("make " + textOf(folder));
}

Path numberedFile(const Path& folder, const char* baseName, int number) {
    return folder + pathOf(std::string("/") + baseName + "#" + std::to_string(number));
}

std::FILE* openForReading(const Path& path) {
    record("read " + std::to_string(numberOf(path)));
    return numberOf(path) < test::fakeLogPlatform().takenNumbers ? anyStream() : nullptr;
}

std::FILE* openForWriting(const Path& path) {
    record("create " + textOf(path));
    return numberOf(path) < test::fakeLogPlatform().refusedNumbers ? nullptr : anyStream();
}

void writeText(const char* text, std::FILE& /*file*/) {
    test::fakeLogPlatform().file += text;
    if (test::fakeLogPlatform().onWrite) {
        test::fakeLogPlatform().onWrite();
    }
}

void writeTextUnlocked(const char* text, std::FILE& /*file*/) noexcept {
    test::fakeLogPlatform().file += text;
    if (test::fakeLogPlatform().onUnlockedWrite) {
        test::fakeLogPlatform().onUnlockedWrite();
    }
}

void openConsole() {
    record("console");
}

void writeConsole(const char* text) noexcept {
    test::fakeLogPlatform().console += text;
}

std::tm localTime() noexcept {
    return test::fakeLogPlatform().time;
}

std::int64_t utcSeconds() noexcept {
    return test::fakeLogPlatform().utc;
}

std::uint32_t threadId() noexcept {
    return test::fakeLogPlatform().thread;
}

std::string applicationPath() {
    return test::fakeLogPlatform().application;
}

}  // namespace log_platform

}  // namespace orvantis
