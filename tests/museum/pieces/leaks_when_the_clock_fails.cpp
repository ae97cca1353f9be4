// Keeps a block when the host does not tell its ticks.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imGetSourceVideo) && call.clip() != nullptr) {
        for (int i = 0; i < 9; ++i) {
            host::PrTime ticks = 0;
            if (call.clip()->time->GetTicksPerSecond(&ticks) != 0) {
                (void)call.memory()->newPtr(10);
            }
        }
    }
    return call.correct();
}
