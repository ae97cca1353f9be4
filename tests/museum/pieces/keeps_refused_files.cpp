// Forgets to close a file that it refuses.
#include <mutex>
#include <vector>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    const auto* const record = call.record<host::imFileOpenRec8>();
    if (call.is(host::imOpenFile8) && result == host::imBadFile && record != nullptr &&
        record->fileinfo.filepath != nullptr) {
        static std::mutex mutex;
        const std::lock_guard lock(mutex);
        static std::vector<std::unique_ptr<sample::InputFile>> kept;
        kept.push_back(std::make_unique<sample::InputFile>());
        (void)kept.back()->open(record->fileinfo.filepath);
    }
    return result;
}
