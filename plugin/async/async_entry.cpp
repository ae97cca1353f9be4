#include "async/async_entry.h"

#include <exception>
#include <memory>
#include <stdexcept>
#include <utility>

#include "async/async_calls.h"
#include "async/orvantis_async_importer.h"
#include "diag/log.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "importer/importer_calls.h"

namespace orvantis {

namespace {

template <class Record>
const Record& recordOf(const void* record) {
    if (record == nullptr) {
        throw std::logic_error("record is NULL");
    }
    return *static_cast<const Record*>(record);
}

host::AsyncResult dispatchAsync(std::int32_t selector, void* record) {
    switch (selector) {
        case host::aiInitiateAsyncRead: {
            const auto& request = recordOf<host::aiAsyncRequest>(record);
            const AsyncCall call(request.inPrivateData);
            return call.importer().onInitiateAsyncRead(request.inSourceRec);
        }
        case host::aiFlush: {
            const AsyncCall call(record);
            return call.importer().onFlush();
        }
        case host::aiGetFrame: {
            const auto& request = recordOf<host::imSourceVideoRec>(record);
            const AsyncCall call(request.inPrivateData);
            return call.importer().onGetFrame(request);
        }
        case host::aiClose:
            retireAsyncImporter(static_cast<const OrvantisAsyncImporter*>(record)).reset();
            return host::AsyncResult::aiNoError;
        default:
            return host::AsyncResult::aiUnsupported;
    }
}

}  // namespace

host::ImporterResult createAsyncImporter(const host::imStdParms* stdParms,
                                         host::imAsyncImporterCreationRec& record) {
    const ImporterCall call(record.inPrivateData);
    const OrvantisImporter& synchronous = call.importer();
    auto importer = std::make_unique<OrvantisAsyncImporter>(stdParms);
    const host::ImporterResult result = importer->openLike(synchronous);
    if (result != host::ImporterResult::imNoErr) {
        return result;
    }
    OrvantisAsyncImporter* const published = publishAsyncImporter(std::move(importer));
    record.outAsyncEntry = &xAsyncImportEntry;
    record.outAsyncPrivateData = published;
    return host::ImporterResult::imNoErr;
}

std::int32_t xAsyncImportEntry(std::int32_t selector, void* record) {
    try {
        return host::numberOf(dispatchAsync(selector, record));
    } catch (const std::exception& exception) {
        logMessage("xAsyncImportEntry: FATAL: Unhandled exception during %s (%d): %s",
                   host::asyncSelectorName(static_cast<std::uint32_t>(selector)), selector, exception.what());
        return host::kUnhandledException;
    }
}

}  // namespace orvantis
