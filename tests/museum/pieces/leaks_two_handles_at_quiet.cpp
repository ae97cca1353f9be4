// Keeps two handles when it lets go of a file.
#include <cstdio>

#include "tests/museum/piece.h"

namespace {

#ifdef _WIN32
constexpr const char* kNothing = "NUL";
#else
constexpr const char* kNothing = "/dev/null";
#endif

}  // namespace

std::int32_t piece::answer(const Call& call) {
    for (int i = 0; call.is(host::imQuietFile) && i < 2; ++i) {
        (void)std::fopen(kNothing, "rb");
    }
    return call.correct();
}
