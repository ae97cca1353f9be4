#include "entry/error_suite.h"

#include <memory>
#include <string>
#include <utility>

#include "diag/never_destroyed.h"
#include "diag/text.h"

namespace orvantis {

namespace {

using ErrorSuiteRef = TypedSuiteRef<host::ErrorSuite>;

/// Null before imInit and after imShutdown. A host that unloads the plug-in without imShutdown has taken its
/// suites down already, and they must not be called from there.
std::unique_ptr<ErrorSuiteRef>& g_errorSuite() {
    static NeverDestroyed<std::unique_ptr<ErrorSuiteRef>> slot;
    return slot.get();
}

}  // namespace

void holdErrorSuite(const host::SPBasicSuite* basicSuite) {
    auto suite = std::make_unique<ErrorSuiteRef>(basicSuite, host::kErrorSuiteName, host::kErrorSuiteVersion);
    suite->acquire();
    g_errorSuite().reset();
    g_errorSuite() = std::move(suite);
}

void dropErrorSuite() {
    const std::unique_ptr<ErrorSuiteRef> suite = std::move(g_errorSuite());
}

void postErrorEvent(const char* title, const char* description) {
    if (!g_errorSuite()) {
        return;
    }
    const std::u16string wideTitle = utf16FromUtf8(title);
    const std::u16string wideDescription = utf16FromUtf8(description);
    g_errorSuite()->get().SetEventStringUnicode(host::kEventTypeError, wideTitle.c_str(),
                                                wideDescription.c_str());
}

}  // namespace orvantis
