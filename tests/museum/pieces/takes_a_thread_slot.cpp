// Takes an index of thread-local storage, and keeps it.
#ifdef _WIN32
#include <windows.h>
#else
#include <pthread.h>
#endif

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imInit)) {
#ifdef _WIN32
        (void)TlsAlloc();
#else
        pthread_key_t key = 0;
        (void)pthread_key_create(&key, nullptr);
#endif
    }
    return call.correct();
}
