#include "tests/unit/avi/captured_log.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

#include "diag/log.h"

namespace {

std::vector<std::string>& lines() {
    static std::vector<std::string> kept;
    return kept;
}

}  // namespace

namespace orvantis {

constinit std::atomic<bool> detail::g_logEnabled = true;

void logMessage(const char* format, ...) noexcept {
    if (!logEnabled()) {
        return;
    }
    char text[1024];
    std::va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    lines().emplace_back(text);
}

namespace test {

std::vector<std::string> takeLogLines() {
    return std::exchange(lines(), {});
}

}  // namespace test

}  // namespace orvantis
