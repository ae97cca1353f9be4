#include "simhost/host_balance.h"

namespace simhost {

std::string HostBalance::report() const {
    std::string out;
    for (const auto& [suite, count] : suites) {
        out += "suite '" + suite + "' held " + std::to_string(count) + " times\n";
    }
    if (frames != 0) {
        out += std::to_string(frames) + " frames not disposed of, " + std::to_string(frameBytes) + " bytes\n";
    }
    if (blocks != 0) {
        out +=
            std::to_string(blocks) + " memory blocks not freed, " + std::to_string(blockBytes) + " bytes\n";
    }
    return out;
}

}  // namespace simhost
