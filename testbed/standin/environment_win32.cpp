#include "standin/environment.h"

#include <windows.h>

#include "standin/wide_text.h"

namespace orvantis::standin {

std::string readEnvironment(const char* name) {
    const std::wstring wideName = wideFromUtf8(name);
    std::wstring value;
    // The size can change between the question and the reading, so ask until the buffer holds it.
    for (DWORD needed = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0); needed > value.size();
         needed = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()))) {
        value.resize(needed);
    }
    return utf8FromWide(value.c_str());
}

}  // namespace orvantis::standin
