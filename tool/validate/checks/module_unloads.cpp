#include <string>

#include "tool/shared/base/crash_watch.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/stage.h"

namespace simhost::tool::validate {
namespace {

void moduleUnloads(Trial& trial) {
    Stage stage(trial);
    const void* const entry = reinterpret_cast<const void*>(stage.importer().plugin().entry());
    const std::string module = codePlace(entry).module;
    stage.end();
    if (!module.empty() && codePlace(entry).module == module) {
        trial.warn({.call = "unloading the module", .seen = "it is still loaded"});
    }
}

const Registered kModuleUnloads({"module.unloads", 4,
                                 "The module is gone once it has been shut down and unloaded.",
                                 "A module that stays, by a thread of its own or a library that holds it, "
                                 "cannot be updated while the host runs.",
                                 moduleUnloads});

}  // namespace
}  // namespace simhost::tool::validate
