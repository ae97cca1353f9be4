#include <filesystem>
#include <iterator>

#include "tests/integration/thread_count.h"

unsigned threadCount() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<unsigned>(std::distance(begin(tasks), end(tasks)));
}
