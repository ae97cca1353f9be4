// Names its format anew each time.
#include <mutex>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static char counter = 'a';
    const std::lock_guard lock(mutex);
    const std::int32_t result = call.correct();
    if (call.is(host::imGetIndFormat) && result == host::imNoErr) {
        call.record<host::imIndFormatRec>()->FormatShortName[0] = counter;
        counter = counter == 'z' ? 'a' : static_cast<char>(counter + 1);
    }
    return result;
}
