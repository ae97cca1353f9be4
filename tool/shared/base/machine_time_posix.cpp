// Processors' idle time for native builds, in the place of tool/shared/base/machine_time_win32.cpp.
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <string>

#include "tool/shared/base/machine_time.h"

namespace simhost::tool {

std::optional<double> idleProcessorSeconds() {
    std::ifstream file("/proc/stat");
    std::string name;
    std::uint64_t user = 0;
    std::uint64_t nice = 0;
    std::uint64_t system = 0;
    std::uint64_t idle = 0;
    std::uint64_t waiting = 0;  // for a disk: the processor is free meanwhile
    if (!(file >> name >> user >> nice >> system >> idle >> waiting)) {
        return std::nullopt;
    }
    return static_cast<double>(idle + waiting) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

}  // namespace simhost::tool
