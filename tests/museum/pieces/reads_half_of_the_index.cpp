// Takes an index for a number of 16 bits.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imGetIndFormat)) {
        const auto half = reinterpret_cast<std::uintptr_t>(call.param1) & 0xFFFF;
        return Call{call.selector, call.parms, reinterpret_cast<void*>(half), call.param2}.correct();
    }
    return call.correct();
}
