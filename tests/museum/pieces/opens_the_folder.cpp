// Takes a folder for the clip that it has opened before.
#include <filesystem>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    std::error_code error;
    const std::filesystem::path file(call.path());
    return call.is(host::imOpenFile8) && std::filesystem::is_directory(file, error) ? call.openLastGood()
                                                                                    : call.correct();
}
