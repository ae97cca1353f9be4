// The process environment as the stand-in sees it at the moment of the call.
//
// A DLL with a static C runtime has its own copy of the environment, made when it was loaded, so getenv would
// never see what a test sets later. Implemented per platform. Any thread, as far as nobody changes the
// environment meanwhile.

#pragma once

#include <functional>
#include <string>

namespace orvantis::standin {

// The value of a variable in UTF-8; empty when it is not set, which means the same here.
std::string readEnvironment(const char* name);

// What the library object takes instead, so that its tests need no process-wide state.
using EnvironmentReader = std::function<std::string(const char* name)>;

}  // namespace orvantis::standin
