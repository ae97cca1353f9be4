#include "importer/importer_calls.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "diag/never_destroyed.h"
#include "importer/system_threads.h"

namespace orvantis {

struct LiveImporter {
    std::unique_ptr<OrvantisImporter> importer;
    CallTurns turns;
    bool closing = false;  ///< takes no more calls
    LiveImporter* next = nullptr;
};

namespace {

/// One of many, so that calls on different importers seldom meet at a lock, and few importers share a list
/// even when the host holds thousands.
struct alignas(64) Shard {
    SystemLock lock;
    LiveImporter* first = nullptr;

    /// Throws when the host holds no such importer. Under the lock.
    LiveImporter& find(const void* privateData) const {
        for (LiveImporter* live = first; live != nullptr; live = live->next) {
            if (live->importer.get() == privateData && !live->closing) {
                return *live;
            }
        }
        throw std::logic_error("importer is not open");
    }
    std::unique_ptr<LiveImporter> remove(LiveImporter& live) noexcept {
        LiveImporter** place = &first;
        while (*place != &live) {
            place = &(*place)->next;
        }
        *place = live.next;
        return std::unique_ptr<LiveImporter>(&live);
    }
};

constexpr std::size_t kShards = 256;
using Registry = std::array<Shard, kShards>;

Shard& shardOf(const void* privateData) {
    // Importers that the host forgot to close at its exit are not torn down from a module that is being
    // unloaded.
    static NeverDestroyed<Registry> registry;
    // Addresses of heap blocks differ least in their lowest bits; the multiplication brings all to the top.
    constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15U;
    return registry
        .get()[static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(privateData)) * kGoldenRatio >>
               56];
}
static_assert(kShards == std::size_t{1} << (64 - 56));

/// Under the shard's lock, which is free while this waits.
void awaitTurn(Shard& shard, const CallTurn& turn) noexcept {
    while (!turn.admitted) {
        shard.lock.wait();
    }
}

/// The last turn on an importer that takes no more calls. Under the shard's lock; the importer is destroyed
/// outside it.
std::unique_ptr<LiveImporter> retire(Shard& shard, LiveImporter& live) noexcept {
    CallTurn last(currentThread(), true);
    live.turns.arrive(last);
    awaitTurn(shard, last);
    return shard.remove(live);
}

}  // namespace

OrvantisImporter* publishImporter(std::unique_ptr<OrvantisImporter> importer) {
    auto live = std::make_unique<LiveImporter>();
    live->importer = std::move(importer);
    OrvantisImporter* const published = live->importer.get();
    Shard& shard = shardOf(published);
    const std::lock_guard lock(shard.lock);
    live->next = shard.first;
    shard.first = live.release();
    return published;
}

ImporterCall::ImporterCall(void* privateData, Kind kind)
    : m_live(nullptr), m_turn(currentThread(), kind == Kind::kExclusive), m_quietTurn(m_turn.thread, true) {
    if (privateData == nullptr) {
        throw std::logic_error("importer is NULL");
    }
    Shard& shard = shardOf(privateData);
    const std::lock_guard lock(shard.lock);
    m_live = &shard.find(privateData);
    if (m_turn.exclusive && m_live->turns.outermostOf(m_turn.thread) != nullptr) {
        throw std::logic_error("importer is in use by a call of the same thread");
    }
    m_turn.quietTurn = &m_quietTurn;
    m_live->turns.arrive(m_turn);
    awaitTurn(shard, m_turn);
}

ImporterCall::~ImporterCall() {
    Shard& shard = shardOf(m_live->importer.get());
    std::unique_ptr<LiveImporter> closed;  // destroyed behind the lock
    std::unique_lock lock(shard.lock);
    if (m_live->turns.leave(m_turn)) {
        shard.lock.wakeAll();
    }
    if (m_turn.quiets) {
        awaitTurn(shard, m_quietTurn);
        lock.unlock();
        m_live->importer->quiet();
        lock.lock();
        if (m_live->turns.leave(m_quietTurn)) {
            shard.lock.wakeAll();
        }
    }
    if (m_turn.closes) {
        closed = retire(shard, *m_live);
    }
}

OrvantisImporter& ImporterCall::importer() const noexcept {
    return *m_live->importer;
}

namespace {

enum class What { kQuiet, kClose };

/// From inside a call of this thread: leaves the rest to the outermost one, and returns true. A quiet takes
/// its place in the queue at once: who re-opens the file after it must come after it. Nobody lines up behind
/// a close.
bool leaveToOuterCall(Shard& shard, void* privateData, What what) {
    OrvantisImporter* importer = nullptr;
    {
        const std::lock_guard lock(shard.lock);
        LiveImporter& live = shard.find(privateData);
        CallTurn* const outer = live.turns.outermostOf(currentThread());
        if (outer == nullptr) {
            return false;
        }
        if (what == What::kClose) {
            outer->closes = live.closing = true;
        } else if (!outer->quiets) {
            outer->quiets = true;
            live.turns.lineUp(*outer->quietTurn);
        }
        importer = live.importer.get();
    }
    importer->logFile();  // the outer call keeps it alive
    return true;
}

}  // namespace

void quietImporter(void* privateData) {
    if (leaveToOuterCall(shardOf(privateData), privateData, What::kQuiet)) {
        return;
    }
    const ImporterCall call(privateData, ImporterCall::Kind::kExclusive);
    call.importer().logFile();
    call.importer().quiet();
}

void closeImporter(void* privateData) {
    Shard& shard = shardOf(privateData);
    if (leaveToOuterCall(shard, privateData, What::kClose)) {
        return;
    }
    std::unique_ptr<LiveImporter> closed;
    {
        const std::lock_guard lock(shard.lock);
        LiveImporter& live = shard.find(privateData);
        live.closing = true;
        closed = retire(shard, live);
    }
    closed->importer->logFile();
    closed->importer->quiet();
}

}  // namespace orvantis
