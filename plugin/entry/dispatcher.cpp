#include "entry/dispatcher.h"

#include <atomic>
#include <stdexcept>

#include "async/async_entry.h"
#include "diag/compiler.h"
#include "diag/log.h"
#include "entry/plugin_selectors.h"
#include "host/records.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "importer/file_selectors.h"
#include "importer/media_selectors.h"

namespace orvantis {

namespace {

/// Set after the read and never cleared. Two first calls at once may both read the switch, which does no
/// harm.
std::atomic<bool> g_logSwitchRead{false};

/// A number that the host carries in a pointer parameter; only the low 32 bits count.
std::uint32_t numberIn(const void* parameter) noexcept {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(parameter));
}

template <class Record>
Record& recordIn(void* parameter) {
    if (parameter == nullptr) {
        throw std::logic_error("record is NULL");
    }
    return *static_cast<Record*>(parameter);
}

host::ImporterResult route(std::uint32_t selector, const host::imStdParms* stdParms, void* param1,
                           void* param2) {
    switch (selector) {
        case host::imInit:
            return init(stdParms, recordIn<host::imImportInfoRec>(param1));
        case host::imShutdown:
            return shutdown();
        case host::imQuietFile:
            return quietFile(static_cast<host::imFileRef*>(param1), param2);
        case host::imCloseFile:
            return closeFile(static_cast<host::imFileRef*>(param1), param2);
        case host::imAnalysis:
            return analysis(recordIn<host::imAnalysisRec>(param2));
        case host::imDataRateAnalysis:
            return dataRateAnalysis(recordIn<host::imDataRateAnalysisRec>(param2));
        case host::imGetIndFormat:
            return getIndFormat(numberIn(param1), static_cast<host::imIndFormatRec*>(param2));
        case host::imImportAudio7:
            return importAudio7(recordIn<host::imImportAudioRec7>(param2));
        case host::imGetIndPixelFormat:
            return getIndPixelFormat(numberIn(param1), recordIn<host::imIndPixelFormatRec>(param2));
        case host::imGetSupports8:
            return host::ImporterResult::malSupports8;
        case host::imGetInfo8:
            return getInfo8(recordIn<host::imFileInfoRec8>(param2));
        case host::imOpenFile8:
            return openFile8(stdParms, static_cast<host::imFileRef*>(param1),
                             recordIn<host::imFileOpenRec8>(param2));
        case host::imCreateAsyncImporter:
            return createAsyncImporter(stdParms, recordIn<host::imAsyncImporterCreationRec>(param1));
        case host::imGetSourceVideo:
            return getSourceVideo(recordIn<host::imSourceVideoRec>(param2));
        case host::imGetSubTypeNames:
            return getSubTypeNames(stdParms, numberIn(param1),
                                   static_cast<host::imSubTypeDescriptionRec**>(param2));
        case host::imGetAudioChannelLayout:
            return getAudioChannelLayout(recordIn<host::imGetAudioChannelLayoutRec>(param2));
        default:
            // Selectors above imGetAudioChannelLayout, negative ones included, come here too.
            return host::ImporterResult::imUnsupported;
    }
}

// Apart, so that a call with the log off passes two tests and goes straight on.

ORVANTIS_COLD host::ImporterResult routeAndLog(std::int32_t selector, const host::imStdParms* stdParms,
                                               void* param1, void* param2) {
    const auto code = static_cast<std::uint32_t>(selector);
    logMessage("----------------------");
    logMessage("[%s] (%d)", host::selectorName(code), selector);
    const host::ImporterResult result = route(code, stdParms, param1, param2);
    logMessage("    [%s] (%d)", host::errorName(result), host::numberOf(result));
    return result;
}

ORVANTIS_COLD host::ImporterResult readSwitchAndDispatch(std::int32_t selector,
                                                         const host::imStdParms* stdParms, void* param1,
                                                         void* param2) {
    readLogSwitch();
    g_logSwitchRead.store(true, std::memory_order_release);
    return dispatch(selector, stdParms, param1, param2);
}

}  // namespace

host::ImporterResult dispatch(std::int32_t selector, const host::imStdParms* stdParms, void* param1,
                              void* param2) {
    if (!g_logSwitchRead.load(std::memory_order_acquire)) [[unlikely]] {
        return readSwitchAndDispatch(selector, stdParms, param1, param2);
    }
    if (logEnabled()) [[unlikely]] {
        return routeAndLog(selector, stdParms, param1, param2);
    }
    return route(static_cast<std::uint32_t>(selector), stdParms, param1, param2);
}

}  // namespace orvantis
