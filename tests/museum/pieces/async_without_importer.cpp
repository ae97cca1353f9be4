// Says that it has made an asynchronous importer, and has not.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imCreateAsyncImporter) && call.param1 != nullptr) {
        return host::imNoErr;
    }
    return call.correct();
}
