#include "tool/shared/run/result_names.h"

#include "host/result_codes.h"

namespace simhost::tool {

std::string resultText(std::int32_t result) {
    const char* name = host::findName(host::kResults, static_cast<std::uint32_t>(result));
    if (name == nullptr) {
        name = result == host::kUnhandledException ? "internal error of the plug-in" : "unknown result";
    }
    return std::string(name) + " (" + std::to_string(result) + ")";
}

}  // namespace simhost::tool
