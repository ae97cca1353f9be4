// The first step onto a stack is made by the context functions of the system, every other one by a jump
// without system calls.
#include "tests/schedules/scheduler/fibre.h"

#include <cxxabi.h>
#include <ucontext.h>

#include <cstring>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/common_interface_defs.h>
#define ORVANTIS_SCHEDULES_ASAN 1
#endif
#endif

namespace schedules {

namespace {

Fibre* g_entering = nullptr;

#ifdef ORVANTIS_SCHEDULES_ASAN
// Of the fibre that was left last: the sanitizer says where its stack lies when the next one is entered.
const void* g_mainStack = nullptr;
std::size_t g_mainStackBytes = 0;
#endif

}  // namespace

void Fibre::prepare(std::byte* stack, void (*body)()) noexcept {
    m_stack = stack;
    m_body = body;
    m_entered = false;
}

void Fibre::enter() noexcept {
    m_entered = true;
    g_entering = this;
    ucontext_t context{};
    getcontext(&context);
    context.uc_stack.ss_sp = m_stack;
    context.uc_stack.ss_size = kStackBytes;
    context.uc_link = nullptr;
    makecontext(
        &context,
        [] {
#ifdef ORVANTIS_SCHEDULES_ASAN
            const void* stack = nullptr;
            std::size_t bytes = 0;
            __sanitizer_finish_switch_fiber(nullptr, &stack, &bytes);
            if (g_mainStack == nullptr) {
                g_mainStack = stack;
                g_mainStackBytes = bytes;
            }
#endif
            for (void (*const body)() = g_entering->m_body;;)
                body();
        },
        0);
    setcontext(&context);
}

// The place jumped back to is in this very call, whose frame stays on the fibre's stack.
__attribute__((noinline)) void Fibre::switchTo(Fibre& next) noexcept {
    auto* const exceptions = reinterpret_cast<Exceptions*>(abi::__cxa_get_globals());
    m_exceptions = *exceptions;
    *exceptions = next.m_exceptions;
#ifdef ORVANTIS_SCHEDULES_ASAN
    const void* const stack = next.m_stack != nullptr ? next.m_stack : g_mainStack;
    __sanitizer_start_switch_fiber(&m_shadowStack, stack,
                                   next.m_stack != nullptr ? kStackBytes : g_mainStackBytes);
#endif
    if (__builtin_expect(_setjmp(m_place) == 0, 1)) {
        if (next.m_entered) {
            _longjmp(next.m_place, 1);
        }
        next.m_exceptions = {};
        next.enter();
    }
#ifdef ORVANTIS_SCHEDULES_ASAN
    __sanitizer_finish_switch_fiber(m_shadowStack, nullptr, nullptr);
#endif
}

}  // namespace schedules
