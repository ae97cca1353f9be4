// The exported entry point: guard, call, return.
#include "entry/import_entry.h"

#include <exception>

#include "diag/format.h"
#include "diag/log.h"
#include "entry/dispatcher.h"
#include "entry/error_suite.h"
#include "host/result_codes.h"
#include "host/selectors.h"

namespace {

/// Tells log and user about an escaped exception. What goes wrong here must not keep the answer from the
/// host.
void reportException(std::int32_t selector, const std::exception& exception) noexcept {
    try {
        const std::string text = orvantis::formatString(
            "FATAL: Unhandled exception during [%s] (%d): %s",
            host::selectorName(static_cast<std::uint32_t>(selector)), selector, exception.what());
        orvantis::logMessage("%s", text.c_str());
        orvantis::postErrorEvent("OrvantisImporter: Internal error", text.c_str());
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
    }
}

}  // namespace

std::int32_t xImportEntry(std::int32_t selector, host::imStdParms* stdParms, void* param1, void* param2) {
    try {
        return host::numberOf(orvantis::dispatch(selector, stdParms, param1, param2));
    } catch (const std::exception& exception) {
        reportException(selector, exception);
        return host::kUnhandledException;
    }
}
