#include <stdexcept>

#include "simhost/plugin.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/trial.h"

namespace simhost::tool::validate {
namespace {

void moduleLoads(Trial& trial) {
    try {
        const Plugin plugin(trial.setting().plugin, trial.setting().libraryFolder);
    } catch (const std::runtime_error& error) {
        trial.fail({.call = "loading the module", .seen = error.what()});
    }
}

const Registered kModuleLoads(
    {"module.loads", 1, "The module loads and exports xImportEntry.",
     "The host drops a module that it cannot load or enter, without a word to the user.", moduleLoads});

}  // namespace
}  // namespace simhost::tool::validate
