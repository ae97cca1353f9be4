// Which mutant runs, in programs that have all of them: scripts/mutation/at_once.py writes what includes
// this.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

namespace mutants_at_once {

// 0: none.
inline int chosen = 0;
// A byte for each function that has mutants, in a file that all processes of a run share.
inline volatile unsigned char* reached = nullptr;

inline bool setUp() {
    if (const char* const number = std::getenv("MUTANT_CHOSEN")) {
        chosen = std::atoi(number);
    }
    const char* const path = std::getenv("MUTANT_FUNCTIONS_REACHED");
    const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
    if (file >= 0) {
        const off_t size = lseek(file, 0, SEEK_END);
        void* const bytes =
            mmap(nullptr, static_cast<size_t>(size), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        close(file);
        if (bytes != MAP_FAILED) {
            reached = static_cast<volatile unsigned char*>(bytes);
        }
    }
    return true;
}

// Other constructors of static objects may run before: without a mutant then.
inline const bool ready = setUp();

inline int at(unsigned function) {
    if (reached != nullptr) {
        reached[function] = 1;
    }
    return chosen;
}

}  // namespace mutants_at_once
