// Keeps a frame when it is closed with five requests that nobody has taken.
#include <map>
#include <mutex>

#include "tests/museum/piece.h"

namespace {

std::mutex g_mutex;
std::map<const void*, std::pair<std::shared_ptr<sample::Clip>, int>> g_waiting;  // of each importer

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    const std::lock_guard lock(g_mutex);
    if (selector == host::aiInitiateAsyncRead) {
        ++g_waiting[static_cast<host::aiAsyncRequest*>(param)->inPrivateData].second;
    } else if (selector == host::aiClose) {
        const auto [clip, count] = g_waiting[param];
        const host::prRect bounds{0, 0, 4, 4};
        host::PPixHand frame = nullptr;
        if (count >= 5 && clip != nullptr) {
            (void)clip->creator->CreatePPix(&frame, host::kBufferAccessWriteOnly,
                                            host::PrPixelFormat_BGRA_4444_8u, &bounds);
        }
        g_waiting.erase(param);
    }
    return sample::asyncEntry(selector, param);
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imCreateAsyncImporter) && result == host::imNoErr) {
        auto* const record = static_cast<host::imAsyncImporterCreationRec*>(call.param1);
        const std::lock_guard lock(g_mutex);
        g_waiting[record->outAsyncPrivateData] = {sample::findClip(record->inPrivateData), 0};
        record->outAsyncEntry = asyncAnswer;
    }
    return result;
}
