#include "tool/shared/base/failure.h"
#include "tool/shared/base/json_text.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace simhost::tool {

nlohmann::ordered_json failureJson(const ToolError& error) {
    return {{"kind", error.kind()},
            {"message", error.what()},
            {"advice", error.advice()},
            {"exitCode", static_cast<int>(error.code())}};
}

int tellFailure(const ToolError& error, bool json) {
    (void)std::fprintf(stderr, "importer_host: %s\n", error.what());
    if (!error.advice().empty()) {
        (void)std::fprintf(stderr, "  -> %s\n", error.advice().c_str());
    }
    if (json) {
        const nlohmann::ordered_json out = {{"error", failureJson(error)}};
        (void)std::fputs(jsonText(out).c_str(), stdout);
    }
    return error.code();
}

}  // namespace simhost::tool
