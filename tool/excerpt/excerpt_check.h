// Whether two files are the same to everything that reads their structure. Pure function; any thread.
#pragma once

#include <string>
#include <vector>

#include "tool/shared/media/avi_facts.h"

namespace simhost::tool {

/// What differs, in words; empty when nothing does.
std::vector<std::string> structureDifferences(const AviFacts& file, const AviFacts& excerpt);

}  // namespace simhost::tool
