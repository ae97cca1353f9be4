// See environment.h.

#include <cstdlib>

#include "tests/support/environment.h"

namespace orvantis::test {

void setEnvironment(const std::string& name, const std::string& value) {
    (void)::setenv(name.c_str(), value.c_str(), 1);
}

void unsetEnvironment(const std::string& name) {
    (void)::unsetenv(name.c_str());
}

std::optional<std::string> getEnvironment(const std::string& name) {
    const char* const value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace orvantis::test
