// The native twin of tool/shared/base/soak_usage_win32.cpp: descriptors instead of handles.
#include "tool/shared/base/soak_usage.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace simhost::tool {
namespace {

std::uint64_t countDescriptors() {
    std::error_code error;
    std::uint64_t count = 0;
    for (std::filesystem::directory_iterator it("/proc/self/fd", error), end; !error && it != end;
         it.increment(error)) {
        ++count;
    }
    return count;
}

}  // namespace

ProcessUsage processUsage() {
    ProcessUsage out;
    out.handles = countDescriptors();
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        const auto kibibytesOf = [&line](std::string_view name) {
            return std::strtoull(line.c_str() + name.size(), nullptr, 10) * 1024;
        };
        if (line.starts_with("RssAnon:")) {
            out.privateBytes = kibibytesOf("RssAnon:");
        } else if (line.starts_with("VmRSS:")) {
            out.workingSet = kibibytesOf("VmRSS:");
        }
    }
    return out;
}

void setProcessEnvironment(const std::string& name, const std::string& valueUtf8) {
    (void)setenv(name.c_str(), valueUtf8.c_str(), 1);
}

std::uint32_t processNumber() noexcept {
    return static_cast<std::uint32_t>(getpid());
}

void loseHandle() {
    (void)open("/dev/null", O_RDONLY | O_CLOEXEC);
}

}  // namespace simhost::tool
