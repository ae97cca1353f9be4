// Compiled like the plug-in, so that plain memory is watched.
#include "tests/schedules/scenarios/known_programs.h"

#include <memory>
#include <stdexcept>

#include "diag/atomic.h"
#include "diag/mutex.h"
#include "diag/waiting.h"

namespace schedules {

namespace {

using orvantis::Atomic;
using orvantis::ConditionVariable;
using orvantis::Future;
using orvantis::Mutex;
using orvantis::Promise;

// Two threads of two operations each take three steps each: to the first operation, to the second, to the
// end. There are C(6, 3) = 20 rows of these, two of which, A B A B A B and B A B A B A, have four
// preemptions.

void twiceTwoOperations(Stage& stage) {
    Atomic<int> value{0};
    stage.thread("A", [&] {
        value = 1;
        value = 2;
    });
    stage.thread("B", [&] {
        value = 3;
        value = 4;
    });
    stage.run();
}

void readersOnly(Stage& stage) {
    // Nothing changes: no place to change threads at, and only the order of starting is left.
    const Atomic<int> value{7};
    stage.thread("A", [&] { Stage::expect(value == 7 && value == 7, "value"); });
    stage.thread("B", [&] { Stage::expect(value == 7 && value == 7, "value"); });
    stage.run();
}

void guardedByOneMutex(Stage& stage) {
    // Only the taking of the mutex is a place, what is done under it by all is none: two steps each, C(4, 2).
    Mutex mutex;
    Atomic<int> value{0};
    const auto work = [&] {
        const std::lock_guard lock(mutex);
        value = value + 1;
    };
    stage.thread("A", work);
    stage.thread("B", work);
    stage.run();
    Stage::expect(value == 2, "value");
}

void lostUpdate(Stage& stage) {
    Atomic<int> value{0};
    const auto work = [&] { value = value + 1; };
    stage.thread("A", work);
    stage.thread("B", work);
    stage.run();
    Stage::expect(value == 2, "two additions");
}

void plainRace(Stage& stage) {
    int value = 0;
    int* const shared = &value;
    auto block = std::make_unique<int>(0);
    const auto work = [&block] { ++*block; };
    stage.thread("A", work);
    stage.thread("B", work);
    stage.run();
    Stage::expect(*shared == 0, "value");
}

void handedOverWithoutOrder(Stage& stage) {
    auto block = std::make_unique<int>(0);
    Atomic<bool> ready{false};
    stage.thread("writer", [&] {
        *block = 1;
        ready.store(true, std::memory_order_relaxed);
    });
    stage.thread("reader", [&] {
        if (ready.load(std::memory_order_acquire)) {
            Stage::expect(*block == 1, "value");
        }
    });
    stage.run();
}

void handedOver(Stage& stage) {
    auto block = std::make_unique<int>(0);
    Atomic<bool> ready{false};
    stage.thread("writer", [&] {
        *block = 1;
        ready.store(true, std::memory_order_release);
    });
    stage.thread("reader", [&] {
        if (ready.load(std::memory_order_acquire)) {
            Stage::expect(*block == 1, "value");
        }
    });
    stage.run();
}

void twoMutexes(Stage& stage) {
    Mutex first;
    Mutex second;
    stage.thread("A", [&] {
        const std::lock_guard one(first);
        const std::lock_guard other(second);
    });
    stage.thread("B", [&] {
        const std::lock_guard one(second);
        const std::lock_guard other(first);
    });
    stage.run();
}

void wakeThatIsLost(Stage& stage) {
    Mutex mutex;
    ConditionVariable changed;
    Atomic<bool> ready{false};
    stage.thread("waits", [&] {
        if (ready) {
            return;
        }
        std::unique_lock lock(mutex);
        changed.wait(lock);
    });
    stage.thread("wakes", [&] {
        ready = true;
        changed.notify_one();
    });
    stage.run();
}

void wakesOneOfTwo(Stage& stage) {
    Mutex mutex;
    ConditionVariable changed;
    int tickets = 0;
    const auto waits = [&] {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return tickets > 0; });
        --tickets;
    };
    stage.thread("waits A", waits);
    stage.thread("waits B", waits);
    stage.thread("wakes", [&] {
        const std::lock_guard lock(mutex);
        tickets = 2;
        changed.notify_one();
    });
    stage.run();
}

void useBehindTheEnd(Stage& stage) {
    auto* const block = new int(0);
    Atomic<bool> gone{false};
    stage.thread("deletes", [&] {
        delete block;
        gone = true;
    });
    stage.thread("uses", [&] {
        if (gone) {
            *block = 1;
        }
    });
    stage.run();
}

void leak(Stage& stage) {
    Atomic<int*> kept{nullptr};
    const auto work = [&] { kept = new int(1); };
    stage.thread("A", work);
    stage.thread("B", work);
    stage.run();
    delete kept.load();
}

void exceptionLeaves(Stage& stage) {
    stage.thread("A", [] { throw std::runtime_error("out"); });
    stage.run();
}

void exceptionThroughFuture(Stage& stage) {
    // Each thread handles one of its own while the other one does.
    Promise<int> promise;
    Future<int> future = promise.get_future();
    Atomic<int> steps{0};
    stage.thread("throws", [&] {
        try {
            steps = 1;
            throw std::runtime_error("first");
        } catch (const std::runtime_error&) {
            steps = 2;
            promise.set_exception(std::current_exception());
        }
    });
    stage.thread("takes", [&] {
        try {
            static_cast<void>(future.get());
            Stage::expect(false, "an exception");
        } catch (const std::runtime_error& error) {
            steps = 3;
            Stage::expect(std::string_view(error.what()) == "first", "the exception's text");
        }
    });
    stage.run();
}

void neverEnds(Stage& stage) {
    Atomic<bool> ready{false};
    stage.thread("spins", [&] {
        while (!ready) {
        }
    });
    stage.thread("sets", [&] { ready = true; });
    stage.run();
}

constexpr KnownProgram kPrograms[] = {
    {{"two-operations-twice", "", twiceTwoOperations}, "", 18},
    {{"readers-only", "", readersOnly}, "", 2},
    {{"guarded-by-one-mutex", "", guardedByOneMutex}, "", 6},
    {{"handed-over", "", handedOver}, "", 6},
    {{"exception-through-future", "", exceptionThroughFuture}, "", 0},
    {{"lost-update", "", lostUpdate}, "wrong result: two additions", 0},
    {{"plain-race", "", plainRace}, "data race", 0, true},
    {{"handed-over-without-order", "", handedOverWithoutOrder}, "data race", 0, true},
    {{"two-mutexes", "", twoMutexes}, "deadlock", 0},
    {{"wake-that-is-lost", "", wakeThatIsLost}, "deadlock", 0},
    {{"wakes-one-of-two", "", wakesOneOfTwo}, "deadlock", 0},
    {{"use-behind-the-end", "", useBehindTheEnd}, "use of freed memory", 0, true},
    {{"leak", "", leak}, "left behind: 1 blocks of memory", 0, true},
    {{"exception-leaves", "", exceptionLeaves}, "an exception leaves a thread", 0},
    {{"never-ends", "", neverEnds}, "the schedule does not end", 0},
};

}  // namespace

std::span<const KnownProgram> knownPrograms() {
    return kPrograms;
}

}  // namespace schedules
