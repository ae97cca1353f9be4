// Writes to a block without a look whether the host gave one.
#include "sample/descriptions.h"
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imGetSubTypeNames) && call.param2 != nullptr) {
        constexpr auto kBytes = static_cast<std::uint32_t>(sizeof(host::imSubTypeDescriptionRec));
        auto* const row = static_cast<host::imSubTypeDescriptionRec*>(call.memory()->newPtr(kBytes));
        *row = {sample::kFileType, u"Plain BGRA"};
        *static_cast<void**>(call.param2) = row;
        return host::imNoErr;
    }
    return call.correct();
}
