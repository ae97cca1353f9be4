// Crashes at a file that ends behind its first four bytes.
#include <cstdlib>
#include <filesystem>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    std::error_code error;
    if (call.is(host::imOpenFile8) && std::filesystem::file_size(call.path(), error) == 4) {
        std::abort();
    }
    return call.correct();
}
