// The native twin of standin/environment_win32.cpp.

#include <cstdlib>

#include "standin/environment.h"

namespace orvantis::standin {

std::string readEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

}  // namespace orvantis::standin
