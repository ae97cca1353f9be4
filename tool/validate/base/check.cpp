#include "tool/validate/base/check.h"

#include <algorithm>
#include <iterator>
#include <tuple>

namespace simhost::tool::validate {
namespace {

// The order in which a host comes to use a plug-in: what fails first explains what fails later.
constexpr std::string_view kGroups[] = {"module",  "selectors", "session", "files", "records",
                                        "suites",  "memory",    "frames",  "sound", "async",
                                        "threads", "hosts",     "cost"};

std::size_t groupPlace(const Check& check) {
    return static_cast<std::size_t>(std::find(std::begin(kGroups), std::end(kGroups), checkGroup(check)) -
                                    std::begin(kGroups));
}

struct CheckList {
    std::vector<Check> checks;
    bool sorted = false;
};

CheckList& checkList() {
    static CheckList all;
    return all;
}

}  // namespace

std::string_view checkGroup(const Check& check) noexcept {
    return std::string_view(check.id).substr(0, check.id.find('.'));
}

Registered::Registered(Check check) {
    checkList().checks.push_back(std::move(check));
    checkList().sorted = false;
}

const std::vector<Check>& allChecks() {
    CheckList& all = checkList();
    if (!all.sorted) {
        std::sort(all.checks.begin(), all.checks.end(), [](const Check& a, const Check& b) {
            return std::tuple(groupPlace(a), a.level, std::string_view(a.id)) <
                   std::tuple(groupPlace(b), b.level, std::string_view(b.id));
        });
        all.sorted = true;
    }
    return all.checks;
}

const Check* findCheck(std::string_view id) {
    const auto& all = allChecks();
    const auto found =
        std::find_if(all.begin(), all.end(), [id](const Check& check) { return check.id == id; });
    return found == all.end() ? nullptr : &*found;
}

}  // namespace simhost::tool::validate
