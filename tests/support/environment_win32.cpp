// See environment.h. Both the process's block (for children and other modules) and this runtime's copy are
// set.

#include <windows.h>

#include <cstdlib>

#include "tests/support/environment.h"

namespace orvantis::test {

void setEnvironment(const std::string& name, const std::string& value) {
    (void)SetEnvironmentVariableA(name.c_str(), value.c_str());
    (void)_putenv_s(name.c_str(), value.c_str());
}

void unsetEnvironment(const std::string& name) {
    (void)_putenv_s(name.c_str(), "");
    (void)SetEnvironmentVariableA(name.c_str(), nullptr);
}

std::optional<std::string> getEnvironment(const std::string& name) {
    std::string value(32767, '\0');  // the system's limit
    SetLastError(ERROR_SUCCESS);
    const DWORD length =
        GetEnvironmentVariableA(name.c_str(), value.data(), static_cast<DWORD>(value.size()));
    if (length == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
        return std::nullopt;
    }
    value.resize(length);
    return value;
}

}  // namespace orvantis::test
