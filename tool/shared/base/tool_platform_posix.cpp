// The tool's operating system for native builds, in the place of tool/shared/base/tool_platform_win32.cpp.
// The log's switch and profile folder are the environment variables that the native log reads.
#include "tool/shared/base/tool_platform.h"

#include <link.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <optional>

namespace simhost::tool {
namespace {

constexpr const char* kSwitch = "ORVANTIS_TEST_LOG_SWITCH";
constexpr const char* kProfile = "ORVANTIS_TEST_PROFILE";

std::optional<std::string> variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

void restore(const char* name, const std::optional<std::string>& value) {
    if (value) {
        (void)setenv(name, value->c_str(), 1);
    } else {
        (void)unsetenv(name);
    }
}

}  // namespace

std::vector<std::string> programArguments(int argc, const char* const* argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>{};
}

std::string executableFolder() {
    std::array<char, 4096> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    const std::string file(path.data(), length < 0 ? 0 : static_cast<std::size_t>(length));
    return file.substr(0, file.find_last_of('/'));
}

std::uint32_t threadNumber() {
    return static_cast<std::uint32_t>(syscall(SYS_gettid));
}

void prepareTerminal() {}

bool stderrIsTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

struct LogSwitch::State {
    std::optional<std::string> logSwitch;
    std::optional<std::string> profile;
};

LogSwitch::LogSwitch(bool on, const std::string& profileUtf8, const void* /*plugin*/)
    : m_state(std::make_unique<State>(State{variable(kSwitch), variable(kProfile)})) {
    (void)setenv(kSwitch, on ? "1" : "0", 1);
    if (!profileUtf8.empty()) {
        (void)setenv(kProfile, profileUtf8.c_str(), 1);
    }
}

LogSwitch::~LogSwitch() {
    restore(kSwitch, m_state->logSwitch);
    restore(kProfile, m_state->profile);
}

std::string logFolderBelow(const std::string& profileUtf8) {
    return profileUtf8 + "/orvantis/adobe";
}

std::string logFolder() {
    const auto profile = variable(kProfile);
    return profile ? logFolderBelow(*profile) : std::string();
}

std::string systemName() {
    utsname name{};
    return uname(&name) < 0 ? "unknown" : std::string(name.sysname) + " " + name.release + " " + name.machine;
}

std::string loadedLibrary(const std::string& name) {
    struct Search {
        const std::string& name;
        std::string found;
    } search{name, {}};
    (void)dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t /*size*/, void* data) {
            auto& wanted = *static_cast<Search*>(data);
            const std::string path = info->dlpi_name;
            if (!path.ends_with("/" + wanted.name)) {
                return 0;
            }
            wanted.found = path;
            return 1;
        },
        &search);
    return search.found;
}

std::string codecLibraryName() {
    return "liborvantis_common64.so";
}

bool openWithSystem(const std::string& pathUtf8) {
    std::string program = "xdg-open";
    std::string path = pathUtf8;
    char* const arguments[] = {program.data(), path.data(), nullptr};
    // Our own mask of signals is not for others.
    sigset_t none;
    (void)sigemptyset(&none);
    posix_spawnattr_t attributes;
    (void)posix_spawnattr_init(&attributes);
    (void)posix_spawnattr_setsigmask(&attributes, &none);
    (void)posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    pid_t child = 0;
    const int failed = posix_spawnp(&child, program.c_str(), nullptr, &attributes, arguments, environ);
    (void)posix_spawnattr_destroy(&attributes);
    int status = 0;
    return failed == 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace simhost::tool
