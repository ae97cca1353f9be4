// A process that logs as the plug-in does, with the log redirection of the test that started it.
//   diag_log_child module N    module start, switch, N lines "line <i>", normal end
//   diag_log_child crash       module start, switch, one line, then the process ends at once without any
//   handler diag_log_child silent      module start, a line, but the switch is never read

#include <cstdlib>
#include <string>
#include <string_view>

#include "diag/log.h"
#include "tests/support/log_redirection.h"

int main(int argc, char** argv) {
    using namespace orvantis;
    const std::string_view mode = argc > 1 ? argv[1] : "";
    test::LogRedirection::inherit();
    startModuleLog();
    if (mode == "module" && argc > 2) {
        readLogSwitch();
        const int count = std::atoi(argv[2]);
        for (int i = 0; i < count; ++i) {
            logMessage("line %d", i);
        }
        return 0;
    }
    if (mode == "crash") {
        readLogSwitch();
        logMessage("last words");
        std::_Exit(3);
    }
    if (mode == "silent") {
        logMessage("unheard");
        return 0;
    }
    return 2;
}
