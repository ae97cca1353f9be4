#include "async/async_calls.h"

#include <cstddef>
#include <map>
#include <stdexcept>
#include <utility>

#include "diag/mutex.h"
#include "diag/never_destroyed.h"
#include "diag/waiting.h"

namespace orvantis {

namespace {

struct Published {
    std::unique_ptr<OrvantisAsyncImporter> importer;
    std::size_t calls = 0;
    bool closing = false;
};

/// Outlives every importer, so that a late call can be turned away without touching freed memory.
struct Registry {
    Mutex mutex;
    ConditionVariable callLeft;
    std::map<const void*, Published> importers;
};

Registry& registry() {
    // Importers that the host forgot to close at its exit are not torn down from a module that is being
    // unloaded.
    static NeverDestroyed<Registry> instance;
    return instance.get();
}

}  // namespace

OrvantisAsyncImporter* publishAsyncImporter(std::unique_ptr<OrvantisAsyncImporter> importer) {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    Published& published = all.importers[importer.get()];
    published.importer = std::move(importer);
    return published.importer.get();
}

std::unique_ptr<OrvantisAsyncImporter> retireAsyncImporter(const OrvantisAsyncImporter* importer) {
    Registry& all = registry();
    std::unique_lock lock(all.mutex);
    const auto found = all.importers.find(importer);
    if (found == all.importers.end() || found->second.closing) {
        return nullptr;
    }
    found->second.closing = true;
    // What no call has asked for so far nobody will ask for: those that are inside wait less.
    OrvantisAsyncImporter& closing = *found->second.importer;
    lock.unlock();
    closing.dropPending();
    lock.lock();
    all.callLeft.wait(lock, [&] { return found->second.calls == 0; });
    std::unique_ptr<OrvantisAsyncImporter> retired = std::move(found->second.importer);
    all.importers.erase(found);
    return retired;
}

AsyncCall::AsyncCall(void* importer) : m_importer(nullptr) {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    const auto found = all.importers.find(importer);
    if (found == all.importers.end() || found->second.closing) {
        throw std::logic_error("async importer is NULL");
    }
    ++found->second.calls;
    m_importer = found->second.importer.get();
}

AsyncCall::~AsyncCall() {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    --all.importers.find(m_importer)->second.calls;
    all.callLeft.notify_all();
}

}  // namespace orvantis
