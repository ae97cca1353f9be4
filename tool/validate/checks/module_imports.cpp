#include <string>

#include "tool/shared/base/library_search.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/module_file.h"

namespace simhost::tool::validate {
namespace {

void moduleImports(Trial& trial) {
    for (const std::string& name : moduleFile(trial).imports) {
        const std::string reason = whyNotLoadable(name, trial.setting().libraryFolder);
        if (!reason.empty()) {
            trial.fail(
                {.call = "loading the libraries that the module imports", .field = name, .seen = reason});
        }
    }
}

const Registered kModuleImports({"module.imports", 1, "Every library that the module needs can be loaded.",
                                 "A library that is missing on a user's machine keeps the plug-in from "
                                 "loading, and the system does not say which.",
                                 moduleImports});

}  // namespace
}  // namespace simhost::tool::validate
