#include "tool/validate/base/check.h"
#include "tool/validate/base/module_file.h"

namespace simhost::tool::validate {
namespace {

void moduleResource(Trial& trial) {
    const PeFile file = moduleFile(trial);
    if (file.importerResource.size() < 4) {
        trial.fail({.call = "reading the module's resources",
                    .field = "IMPT 1000",
                    .seen = file.importerResource.empty() ? "there is none"
                                                          : "it is shorter than its four characters"});
    }
}

const Registered kModuleResource(
    {"module.resource", 2, "The module holds a resource of type IMPT with the number 1000.",
     "By it the host tells importers from other plug-ins when it looks through its folders.",
     moduleResource});

}  // namespace
}  // namespace simhost::tool::validate
