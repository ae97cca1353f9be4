// Crashes at a file that begins with other bytes than the first one that it opened.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::string good;
    const std::lock_guard lock(mutex);
    const std::u16string path = call.path();
    if (std::error_code error; std::filesystem::is_regular_file(path, error)) {
        std::ifstream file(std::filesystem::path(path), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        good = good.empty() ? bytes : good;
        if (path.find(u"damaged") != path.npos && bytes != good) {
            std::abort();
        }
    }
    return call.correct();
}
