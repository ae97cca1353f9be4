// Hands its own memory to the host, which will free it.
#include "sample/descriptions.h"
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static const host::imSubTypeDescriptionRec row{sample::kFileType, u"Plain BGRA"};
    if (call.is(host::imGetSubTypeNames) && call.param2 != nullptr) {
        *static_cast<const void**>(call.param2) = &row;
        return host::imNoErr;
    }
    return call.correct();
}
