// The diagnostic log: one process-wide, printf-style call that every folder reports through. Off unless the
// user has switched it on in the registry; then each line goes, unbuffered, to a fresh numbered file in the
// user's profile. Nothing in the plug-in reads the log back, and no failure of the log ever reaches the host.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "diag/compiler.h"

namespace orvantis {

namespace detail {
/// Only the registry switch sets it; a late reader merely misses a line.
extern std::atomic<bool> g_logEnabled;
}  // namespace detail

/// True when the registry switch has turned the log on. Callers whose arguments are costly to build test this
/// first, and so do those that log several lines for every frame. Any thread; costs one load.
inline bool logEnabled() noexcept {
    return detail::g_logEnabled.load(std::memory_order_relaxed);
}

/// Reads the registry switch (HKEY_CURRENT_USER, Software\Orvantis, EnableAdobeLog). It can only turn the log
/// on. Called once, by the first call of the process that enters the plug-in, before anything is logged.
void readLogSwitch();

/// Writes one line. Returns at once, with nothing formatted, while the log is off. A line for which there is
/// no memory is lost, without a word to the caller: destructors log. Any thread.
ORVANTIS_COLD void logMessage(const char* format, ...) noexcept ORVANTIS_PRINTF(1, 2);

/// Writes "Log closed", closes the file and forgets the log. A later logMessage would open a new one.
void closeLog() noexcept;

/// At load: names the logger, takes over the build-time settings, logs "Module init" (silently: the switch
/// has not been read), and registers the exit handler that logs "Module destroy" and closes the log at
/// unload.
void startModuleLog();

/// Tells the exit handler that the process ends and not only the module: the system has ended all other
/// threads by force, wherever they were and whatever locks they held. The handler then writes its lines
/// without any lock. Called by the thread that ends the process, before exit handlers run.
void noteProcessEnd() noexcept;

}  // namespace orvantis
