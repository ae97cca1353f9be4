#include <windows.h>

#include <cstdint>

#include "tool/shared/base/machine_time.h"

namespace simhost::tool {

std::optional<double> idleProcessorSeconds() {
    FILETIME idle{};
    FILETIME kernel{};
    FILETIME user{};
    if (GetSystemTimes(&idle, &kernel, &user) == FALSE) {
        return std::nullopt;
    }
    const std::uint64_t steps = (std::uint64_t{idle.dwHighDateTime} << 32) | idle.dwLowDateTime;
    return static_cast<double>(steps) * 1e-7;
}

}  // namespace simhost::tool
