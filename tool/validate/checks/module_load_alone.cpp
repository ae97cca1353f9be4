#include <memory>

#include "tool/validate/base/check.h"
#include "tool/validate/base/stage.h"

namespace simhost::tool::validate {
namespace {

void moduleLoadAlone(Trial& trial) {
    for (int round = 0; round < 3; ++round) {
        const Host host;
        const std::unique_ptr<Plugin> plugin = loadForTrial(trial);
        plugin->unload();
        if (host.totalCalls() != 0) {
            trial.fail({.call = "loading the module", .seen = "it called the host before imInit"});
        }
    }
}

const Registered kModuleLoadAlone({"module.load-alone", 3,
                                   "The module can be loaded and unloaded without a call.",
                                   "The host does so when it only looks whether a module is an importer.",
                                   moduleLoadAlone});

}  // namespace
}  // namespace simhost::tool::validate
