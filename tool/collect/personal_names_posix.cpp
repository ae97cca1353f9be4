#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "tool/collect/personal_names.h"

namespace simhost::tool {

PersonalNames personalNames() {
    PersonalNames out;
    const auto add = [](std::vector<std::string>& to, const char* text) {
        if (text != nullptr && *text != '\0') {
            to.emplace_back(text);
        }
    };
    if (const passwd* entry = ::getpwuid(::getuid())) {
        add(out.users, entry->pw_name);
        add(out.homes, entry->pw_dir);
    }
    add(out.users, std::getenv("USER"));
    add(out.users, std::getenv("LOGNAME"));
    add(out.homes, std::getenv("HOME"));
    for (std::size_t i = 0, count = out.homes.size(); i < count; ++i) {
        std::error_code error;
        const std::string whole = std::filesystem::canonical(out.homes[i], error).string();
        if (!error) {
            out.homes.push_back(whole);
        }
    }
    return out;
}

}  // namespace simhost::tool
