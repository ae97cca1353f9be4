// The process-wide log state: the switch, the log that the first line opens, and the module's start and end.

#include "diag/log.h"

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include "diag/diagnostic_log.h"
#include "diag/never_destroyed.h"

namespace orvantis {

namespace {
constexpr bool kEnabledAtStart = false;
}

// Outside the state below, whose first use has to be guarded: a test of the switch is one load.
constinit std::atomic<bool> detail::g_logEnabled = kEnabledAtStart;

namespace {

#ifdef ORVANTIS_LOG_TO_CONSOLE
constexpr bool kLogToConsole = true;
#else
constexpr bool kLogToConsole = false;
#endif

struct LogState {
    std::unique_ptr<DiagnosticLog> log;  ///< null until the first line while enabled
    const char* name = "orvantis_pr";    ///< set before the first line
    bool console = false;                ///< set before the first line

    /// Guards `log`, from before a line is written to after it: two first lines open one file, and closing
    /// takes no line from under its writer. Lines are written one by one anyway, so nothing is lost by it.
    /// Not a shared mutex: that of the mingw-w64 runtime fails when its first users meet.
    std::mutex guard;
};

LogState& logState() {
    // Worker threads and the destructors of other static objects may log until the very end.
    static NeverDestroyed<LogState> state;
    return state.get();
}

ORVANTIS_PRINTF(2, 0)
void writeLine(LogState& state, const char* format, std::va_list arguments) {
    const std::lock_guard lock(state.guard);
    if (state.log == nullptr) {
        state.log = std::make_unique<DiagnosticLog>(state.name, state.console);
    }
    state.log->write(format, arguments);
}

// A thread can be inside the log while its module is unloaded, but not for long. A host that never comes back
// from unloading is worse than a log without its last lines.
bool lockComesFree(std::mutex& mutex) {
    using namespace std::chrono_literals;
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (mutex.try_lock()) {
            mutex.unlock();
            return true;
        }
        std::this_thread::sleep_for(10ms);
    }
    return false;
}

// Set by the thread that ends the process, read by it.
constinit bool g_processEnds = false;

// The only thread left: no lock can be waited for, and none is needed. The file is the system's to close.
void endLogOfProcess() noexcept {
    DiagnosticLog* const log = logState().log.get();
    if (log == nullptr) {
        return;
    }
    log->writeLast("Module destroy");
    log->writeLast("Log closed");
}

// The exit handler. noexcept as exit handlers have to be; nothing that it calls lets an exception out.
void endModuleLog() noexcept {
    if (g_processEnds) {
        endLogOfProcess();
        return;
    }
    if (!lockComesFree(logState().guard)) {
        return;
    }
    logMessage("Module destroy");
    closeLog();
}

}  // namespace

void readLogSwitch() {
    const std::optional<std::uint32_t> value = log_platform::readSwitchValue();
    if (value && *value != 0) {
        detail::g_logEnabled.store(true, std::memory_order_relaxed);
    }
}

void logMessage(const char* format, ...) noexcept {
    if (!logEnabled()) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    try {
        writeLine(logState(), format, arguments);
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
        // Without memory the line is lost. It must not be more than that: destructors log, and what a handler
        // has done or handed over must not be undone for a line about it.
    }
    va_end(arguments);
}

void closeLog() noexcept {
    LogState& state = logState();
    try {
        const std::lock_guard lock(state.guard);
        const std::unique_ptr<DiagnosticLog> log =
            std::move(state.log);  // closed even if its last line is lost
        if (log != nullptr) {
            log->writeLine("Log closed");
        }
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
    }
}

void noteProcessEnd() noexcept {
    g_processEnds = true;
}

void startModuleLog() {
    LogState& state = logState();
    state.name = "orvantis_pr_importer";
    detail::g_logEnabled.store(kEnabledAtStart, std::memory_order_relaxed);
    state.console = kLogToConsole;
    logMessage("Module init");
    // Inside a DLL this registers with the DLL's own exit list, which runs at unload.
    static const int registered = std::atexit(endModuleLog);
    (void)registered;
}

}  // namespace orvantis
