#include "tool/shared/base/interruption.h"

#include <atomic>
#include <cstdio>

#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

std::atomic<bool> g_interrupted = false;
std::atomic<int> g_holders = 0;

}  // namespace

bool interrupted() noexcept {
    return g_interrupted.load(std::memory_order_relaxed);
}

void throwIfInterrupted() {
    if (interrupted()) {
        throw ToolError(kInterrupted, "interrupted; what was unfinished is removed");
    }
}

EndHeldBack::EndHeldBack() noexcept {
    ++g_holders;
}

EndHeldBack::~EndHeldBack() {
    --g_holders;
}

bool detail::endIsHeldBack() noexcept {
    return g_holders > 0;
}

void detail::noteInterruption() noexcept {
    if (!g_interrupted.exchange(true)) {
        (void)std::fputs("importer_host: ending; once more ends at once\n", stderr);
        (void)std::fflush(stderr);
    }
}

}  // namespace simhost::tool
