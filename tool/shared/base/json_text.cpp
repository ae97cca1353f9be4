#include "tool/shared/base/json_text.h"

#include <nlohmann/json.hpp>

namespace simhost::tool {

std::string jsonText(const nlohmann::ordered_json& value) {
    return value.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace simhost::tool
