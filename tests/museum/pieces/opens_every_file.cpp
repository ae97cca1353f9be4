// Opens any large file, and plays the last one that it understood.
#include <mutex>
#include <string>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::u16string last;
    const std::lock_guard lock(mutex);
    std::int32_t result = call.correct();
    auto* const record = call.record<host::imFileOpenRec8>();
    if (!call.is(host::imOpenFile8) || record == nullptr || record->fileinfo.filepath == nullptr) {
        return result;
    }
    sample::InputFile file;
    if (result == host::imNoErr) {
        last = record->fileinfo.filepath;
    } else if (!last.empty() && file.open(record->fileinfo.filepath) && file.size() > 10000) {
        const char16_t* const path = record->fileinfo.filepath;
        record->fileinfo.filepath = last.c_str();
        result = call.correct();
        record->fileinfo.filepath = path;
    }
    return result;
}
