#include "tests/rescue/interrupt_this.h"

#include <unistd.h>

#include <csignal>

namespace simhost::tool {

void takeOwnConsole() {}

void interruptThisProcess() {
    (void)::kill(::getpid(), SIGINT);
}

}  // namespace simhost::tool
