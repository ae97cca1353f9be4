// Names for places in the program's code, from its debug information.
#pragma once

#include <string>

namespace schedules {

/// "function (file:line)" of a return address. Takes a while: runs addr2line.
std::string codePlace(const void* returnAddress);

}  // namespace schedules
