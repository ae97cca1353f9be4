// Crashes when it is unloaded without having been started.
#include <atomic>
#include <cstdlib>

#include "tests/museum/piece.h"

namespace {

struct AtTheEnd {
    ~AtTheEnd() {
        if (!started) {
            std::abort();
        }
    }
    std::atomic<bool> started{false};
};
AtTheEnd g_end;

}  // namespace

std::int32_t piece::answer(const Call& call) {
    g_end.started = true;
    return call.correct();
}
