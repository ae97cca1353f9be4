// Takes an empty file for the clip that it has opened before.
#include <filesystem>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    std::error_code error;
    const std::filesystem::path file(call.path());
    return call.is(host::imOpenFile8) && std::filesystem::file_size(file, error) == 0 ? call.openLastGood()
                                                                                      : call.correct();
}
