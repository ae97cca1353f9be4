// Shows nothing any more where it was started once another thread has closed a file.
#include <atomic>
#include <thread>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static const std::thread::id first = std::this_thread::get_id();
    static std::atomic<bool> closedElsewhere{false};
    const bool elsewhere = std::this_thread::get_id() != first;
    if (call.is(host::imInit)) {
        closedElsewhere = false;
    } else if (call.is(host::imCloseFile) && elsewhere) {
        closedElsewhere = true;
    } else if (call.is(host::imGetSourceVideo) && !elsewhere && closedElsewhere) {
        return host::imOtherErr;
    }
    return call.correctWithoutAsync();
}
