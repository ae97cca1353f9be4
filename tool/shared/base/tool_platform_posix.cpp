// The tool's operating system for native builds, in the place of tool/shared/base/tool_platform_win32.cpp.
// The log's switch and profile folder are the environment variables that the native log reads.
#include "tool/shared/base/tool_platform.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace simhost::tool {
namespace {

constexpr const char* kSwitch = "ORVANTIS_TEST_LOG_SWITCH";
constexpr const char* kProfile = "ORVANTIS_TEST_PROFILE";

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

LogSwitch::LogSwitch() {
    (void)setenv(kSwitch, "1", 1);
}

LogSwitch::~LogSwitch() {
    (void)unsetenv(kSwitch);
}

std::string logFolder() {
    const char* profile = std::getenv(kProfile);
    return profile == nullptr ? std::string() : std::string(profile) + "/orvantis/adobe";
}

}  // namespace simhost::tool
