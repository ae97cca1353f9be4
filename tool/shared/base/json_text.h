// JSON as the tool writes it. Pure functions; any thread.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace simhost::tool {

/// Indented, with a line end. Bytes that are no UTF-8, as paths may have them, become U+FFFD.
std::string jsonText(const nlohmann::ordered_json& value);

}  // namespace simhost::tool
