// Keeps a handle for every file that it has closed, when that was opened a second time.
#include <cstdio>
#include <map>
#include <mutex>
#include <string>

#include "tests/museum/piece.h"

namespace {

#ifdef _WIN32
constexpr const char* kNothing = "NUL";
#else
constexpr const char* kNothing = "/dev/null";
#endif

}  // namespace

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::map<std::u16string, int> opened;
    const std::lock_guard lock(mutex);
    const std::u16string path = call.path();
    if (call.is(host::imOpenFile8) && path.find(u"copy") != path.npos && ++opened[path] >= 2) {
        (void)std::fopen(kNothing, "rb");
    }
    return call.correct();
}
