// Writes a byte behind the end of a copy that it closes.
#include <filesystem>
#include <fstream>
#include <mutex>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::filesystem::path last;
    const std::lock_guard lock(mutex);
    if (call.is(host::imOpenFile8)) {
        last = call.path();
    }
    const std::int32_t result = call.correct();
    if (call.is(host::imCloseFile) && last.string().find("copy") != std::string::npos) {
        std::fstream(last, std::ios::binary | std::ios::in | std::ios::out | std::ios::ate) << 'x';
    }
    return result;
}
