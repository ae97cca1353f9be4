// Refuses a path with letters that are not English.
#include <algorithm>
#include <string>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::u16string path = call.path();
    const bool foreign = std::any_of(path.begin(), path.end(), [](char16_t letter) { return letter > 126; });
    return call.is(host::imOpenFile8) && foreign ? host::imBadFile : call.correct();
}
