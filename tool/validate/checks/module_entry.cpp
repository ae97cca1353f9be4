#include <algorithm>
#include <string>
#include <vector>

#include "tool/validate/base/check.h"
#include "tool/validate/base/module_file.h"

namespace simhost::tool::validate {
namespace {

// A library may export thousands of names, and what is told is for people.
constexpr std::size_t kMostNamesTold = 10;
constexpr std::size_t kMostOfName = 80;

std::string exportList(const std::vector<std::string>& names) {
    if (names.empty()) {
        return "it exports nothing";
    }
    std::string out;
    const std::size_t told = std::min(names.size(), kMostNamesTold);
    for (std::size_t i = 0; i < told; ++i) {
        const std::string& name = names[i];
        out +=
            (i == 0 ? "" : ", ") + (name.size() <= kMostOfName ? name : name.substr(0, kMostOfName) + "...");
    }
    return told == names.size() ? out : out + " and " + std::to_string(names.size() - told) + " more";
}

void moduleEntry(Trial& trial) {
    const PeFile file = moduleFile(trial);
    if (std::find(file.exports.begin(), file.exports.end(), "xImportEntry") == file.exports.end()) {
        trial.fail({.call = "reading the module's exports", .seen = exportList(file.exports)});
    }
}

const Registered kModuleEntry({"module.entry", 1,
                               "The module exports the function xImportEntry under exactly this name.",
                               "By it alone the host calls the importer.", moduleEntry});

}  // namespace
}  // namespace simhost::tool::validate
