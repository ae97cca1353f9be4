#include "clip.h"

#include <map>
#include <mutex>

namespace sample {
namespace {

std::mutex g_mutex;
std::map<const void*, std::shared_ptr<Clip>> g_clips;

}  // namespace

void addClip(const std::shared_ptr<Clip>& clip) {
    const std::lock_guard lock(g_mutex);
    g_clips.emplace(clip.get(), clip);
}

std::shared_ptr<Clip> findClip(const void* privateData) {
    const std::lock_guard lock(g_mutex);
    const auto found = g_clips.find(privateData);
    return found == g_clips.end() ? nullptr : found->second;
}

void removeClip(const void* privateData) {
    const std::lock_guard lock(g_mutex);
    g_clips.erase(privateData);
}

void removeAllClips() {
    const std::lock_guard lock(g_mutex);
    g_clips.clear();
}

}  // namespace sample
