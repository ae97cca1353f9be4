#include <algorithm>
#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/module_file.h"

namespace simhost::tool::validate {
namespace {

void moduleEntry(Trial& trial) {
    const PeFile file = moduleFile(trial);
    if (std::find(file.exports.begin(), file.exports.end(), "xImportEntry") == file.exports.end()) {
        std::string names;
        for (const std::string& name : file.exports) {
            names += (names.empty() ? "" : ", ") + name;
        }
        trial.fail(
            {.call = "reading the module's exports", .seen = names.empty() ? "it exports nothing" : names});
    }
}

const Registered kModuleEntry({"module.entry", 1,
                               "The module exports the function xImportEntry under exactly this name.",
                               "By it alone the host calls the importer.", moduleEntry});

}  // namespace
}  // namespace simhost::tool::validate
