// Crashes when the clip is closed before its asynchronous importer is.
#include <cstdlib>
#include <map>
#include <mutex>

#include "tests/museum/piece.h"

namespace {

std::mutex g_mutex;
std::map<const void*, const void*> g_clips;  // of each asynchronous importer

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    const std::lock_guard lock(g_mutex);
    if (selector == host::aiFlush && g_clips[param] == nullptr) {
        std::abort();
    }
    return sample::asyncEntry(selector, param);
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    const std::lock_guard lock(g_mutex);
    if (call.is(host::imCreateAsyncImporter) && result == host::imNoErr) {
        auto* const record = static_cast<host::imAsyncImporterCreationRec*>(call.param1);
        g_clips[record->outAsyncPrivateData] = record->inPrivateData;
        record->outAsyncEntry = asyncAnswer;
    }
    for (auto& [importer, clip] : g_clips) {
        clip = call.is(host::imCloseFile) && clip == call.param2 ? nullptr : clip;
    }
    return result;
}
