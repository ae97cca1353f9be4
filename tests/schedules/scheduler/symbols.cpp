#include "tests/schedules/scheduler/symbols.h"

#include <unistd.h>

#include <cstdio>
#include <map>

extern "C" char __executable_start;  // NOLINT: the linker's name

namespace schedules {

namespace {

std::string lineOf(std::FILE* pipe) {
    char line[1024];
    if (std::fgets(line, sizeof line, pipe) == nullptr) {
        return {};
    }
    std::string text(line);
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

std::string lookUp(std::size_t offset) {
    char program[1024];
    const ssize_t length = readlink("/proc/self/exe", program, sizeof program - 1);
    if (length <= 0) {
        return "?";
    }
    program[length] = '\0';
    char command[1200];
    // With what was inlined there: the innermost function comes first. The library's own are passed over.
    std::snprintf(command, sizeof command, "addr2line -Cfie '%s' 0x%zx 2>/dev/null", program, offset);
    std::FILE* const pipe = popen(command, "r");
    if (pipe == nullptr) {
        return "?";
    }
    std::string first;
    std::string place;
    for (;;) {
        const std::string function = lineOf(pipe);
        std::string file = lineOf(pipe);
        if (function.empty() || file.empty()) {
            break;
        }
        if (const auto blank = file.find(" ("); blank != std::string::npos) {
            file.resize(blank);
        }
        const bool foreign = file.find("/include/c++/") != std::string::npos ||
                             file.find("/schedules/seam/") != std::string::npos ||
                             file.find("/schedules/scheduler/") != std::string::npos;
        for (const char* const folder : {"/plugin/", "/tests/"}) {
            if (const auto begin = file.rfind(folder); begin != std::string::npos) {
                file.erase(0, begin + 1);
            }
        }
        const std::string text = function.substr(0, function.find('(')) + " (" + file + ")";
        if (first.empty()) {
            first = text;
        }
        if (!foreign && place.empty()) {
            place = text;
        }
    }
    pclose(pipe);
    return place.empty() ? first : place;
}

}  // namespace

std::string codePlace(const void* returnAddress) {
    static std::map<const void*, std::string> known;
    std::string& text = known[returnAddress];
    if (text.empty()) {
        // The call itself lies before the address that it returns to.
        text = lookUp(
            static_cast<std::size_t>(static_cast<const char*>(returnAddress) - &__executable_start) - 1);
    }
    return text;
}

}  // namespace schedules
