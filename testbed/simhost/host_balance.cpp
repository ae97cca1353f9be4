#include "simhost/host_balance.h"

namespace simhost {

std::vector<Violation> HostBalance::violations() const {
    std::vector<Violation> out;
    for (const auto& [suite, count] : suites) {
        out.push_back(
            {Rule::kSuitesReturned, "", "'" + suite + "' held " + std::to_string(count) + " times"});
    }
    if (frames != 0) {
        out.push_back(
            {Rule::kFramesReturned, "",
             std::to_string(frames) + " frames not disposed of, " + std::to_string(frameBytes) + " bytes"});
    }
    if (blocks != 0) {
        out.push_back(
            {Rule::kMemoryReturned, "",
             std::to_string(blocks) + " memory blocks not freed, " + std::to_string(blockBytes) + " bytes"});
    }
    return out;
}

std::string HostBalance::report() const {
    std::string out;
    for (const Violation& violation : violations()) {
        out += violation.text() + "\n";
    }
    return out;
}

}  // namespace simhost
