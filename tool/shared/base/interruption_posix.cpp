// Interruption for native builds, in the place of tool/shared/base/interruption_win32.cpp. A thread waits for
// the signals, so that what it does at the end is not bound to what signal handlers may do.
#include "tool/shared/base/interruption.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <thread>

#include "tool/shared/base/temporary_path.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
void watchForInterruption(std::chrono::milliseconds patience) {
    sigset_t signals;
    (void)sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        (void)sigaddset(&signals, signal);
    }
    // Every later thread has this mask too.
    (void)pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals, patience] {
        int signal = 0;
        (void)sigwait(&signals, &signal);
        detail::noteInterruption();
        const auto whole = std::chrono::duration_cast<std::chrono::seconds>(patience);
        const timespec time{whole.count(), std::chrono::nanoseconds(patience - whole).count()};
        // A wait that a debugger, a stop or a leak checker broke off (EINTR) is no end of patience.
        while (sigtimedwait(&signals, nullptr, &time) < 0 && (errno == EINTR || detail::endIsHeldBack())) {
        }
        removeTemporaryPaths();
        std::_Exit(kInterrupted);
    }).detach();
}

}  // namespace simhost::tool
