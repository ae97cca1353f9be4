// What a search has found, in words and as JSON. Pure functions; any thread.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tool/rescue/clip_scan.h"
#include "tool/rescue/index_check.h"

namespace simhost::tool {

/// Lines about the headers, each stream, and damage.
std::string foundText(const ClipScan& scan, const IndexCheck& check);
/// A sentence: whether a rescue would gain something, and what.
std::string verdictText(const IndexCheck& check);
nlohmann::ordered_json foundJson(const ClipScan& scan, const IndexCheck& check);
/// "a chunk of stream 0 ('00dc') that the end of the file cuts off"
std::string stretchText(const Stretch& stretch);

}  // namespace simhost::tool
