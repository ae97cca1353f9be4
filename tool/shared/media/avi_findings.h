// The sentences about what is unusual in an AVI file. Pure function; any thread.
#pragma once

#include <string>
#include <vector>

#include "tool/shared/media/avi_facts.h"

namespace simhost::tool {

/// What is unusual about a file and what it leads to, in sentences for the user.
struct AviFinding {
    bool bad = false;    ///< pictures or sound cannot be had
    std::string text;    ///<
    std::string advice;  ///< what to do; empty when nothing is to be done
};
std::vector<AviFinding> aviFindings(const AviFacts& facts);

}  // namespace simhost::tool
