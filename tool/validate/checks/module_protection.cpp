#include <cstdint>
#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/module_file.h"

namespace simhost::tool::validate {
namespace {

void moduleProtection(Trial& trial) {
    const PeFile file = moduleFile(trial);
    const auto require = [&](std::uint16_t flag, const char* name) {
        if ((file.protections & flag) == 0) {
            trial.warn({.call = "reading the module's headers",
                        .field = "DllCharacteristics",
                        .seen = std::string(name) + " is not set"});
        }
    };
    require(PeFile::kRandomBase, "DYNAMIC_BASE (0x0040)");
    require(PeFile::kNoExecute, "NX_COMPAT (0x0100)");
    require(PeFile::kHighEntropy, "HIGH_ENTROPY_VA (0x0020)");
}

const Registered kModuleProtection(
    {"module.protection", 3,
     "The module lets the system place it at random and keeps its data from being executed.",
     "A single module without it makes the whole host an easier target for damaged files.",
     moduleProtection});

}  // namespace
}  // namespace simhost::tool::validate
