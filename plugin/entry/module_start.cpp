// What runs when the host loads the plug-in: the log is set up, silently, and arranges its own end. Nothing
// here can fail, wait or load another module.
#include "diag/log.h"

namespace {

struct ModuleStart {
    ModuleStart() { orvantis::startModuleLog(); }
} const g_moduleStart;

}  // namespace
