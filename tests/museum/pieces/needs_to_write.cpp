// Opens what it may write alone.
#include <filesystem>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imOpenFile8)) {
        std::error_code error;
        const auto rights = std::filesystem::status(call.path(), error).permissions();
        if (!error && (rights & std::filesystem::perms::owner_write) == std::filesystem::perms::none) {
            return host::imBadFile;
        }
    }
    return call.correct();
}
