#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/module_file.h"

namespace simhost::tool::validate {
namespace {

void moduleMachine(Trial& trial) {
    const PeFile file = moduleFile(trial);
    if (!file.isLibrary || !file.is64Bit || file.machine != PeFile::kMachineX64) {
        trial.fail({.call = "reading the module's headers",
                    .seen = std::string(file.isLibrary ? "a library" : "no library") + " of " +
                            (file.is64Bit ? "64" : "32") + " bits for machine " +
                            std::to_string(file.machine)});
    }
}

const Registered kModuleMachine({"module.machine", 1, "The module is a library for 64-bit Windows on x64.",
                                 "The host is a 64-bit program and loads no other.", moduleMachine});

}  // namespace
}  // namespace simhost::tool::validate
