// Which asynchronous importers live, and how many host calls each is serving. The host may close an importer
// while other calls on it are still running, so closing waits until they have left.
#pragma once

#include <memory>

#include "async/orvantis_async_importer.h"

namespace orvantis {

/// Gives the importer to the host, which knows it by the returned address until it is closed. Any thread.
OrvantisAsyncImporter* publishAsyncImporter(std::unique_ptr<OrvantisAsyncImporter> importer);

/// Waits until every call in flight on `importer` has left and hands it back for destruction; null when it
/// does not live (closed already, or never published). A call that comes after this one finds no importer.
/// Any thread.
std::unique_ptr<OrvantisAsyncImporter> retireAsyncImporter(const OrvantisAsyncImporter* importer);

/// One host call on an importer, counted for its duration.
class AsyncCall {
 public:
    /// Throws std::logic_error when `importer` is null or does not live.
    explicit AsyncCall(void* importer);
    ~AsyncCall();
    AsyncCall(const AsyncCall&) = delete;
    AsyncCall& operator=(const AsyncCall&) = delete;

    OrvantisAsyncImporter& importer() const noexcept { return *m_importer; }

 private:
    OrvantisAsyncImporter* m_importer;
};

}  // namespace orvantis
