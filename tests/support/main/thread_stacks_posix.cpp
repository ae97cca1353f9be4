// See thread_stacks.h. A signal makes each thread write down its own frames; what is printed is made of them
// afterwards, so that the handler needs no lock that a hanging thread may hold.

#include <dirent.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/main/thread_stacks.h"

namespace orvantis::test {

namespace {

constexpr int kMostFrames = 64;
// For all of the printing: symbols of large programs take their time.
constexpr unsigned kMostSeconds = 60;

std::array<void*, kMostFrames> g_frames;
int g_count = 0;
std::atomic<bool> g_written = false;

int stackSignal() {
    return SIGRTMIN + 5;
}

void writeDownFrames(int /*signal*/) {
    const int before = errno;
    g_count = backtrace(g_frames.data(), kMostFrames);
    g_written = true;
    errno = before;
}

std::vector<pid_t> otherThreads() {
    std::vector<pid_t> threads;
    DIR* const folder = opendir("/proc/self/task");
    if (folder == nullptr) {
        return threads;
    }
    while (const dirent* const entry = readdir(folder)) {
        const auto thread = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
        if (thread > 0 && thread != gettid()) {
            threads.push_back(thread);
        }
    }
    closedir(folder);
    return threads;
}

// Function and line, by the binary utilities' own program. False without it.
bool printSource(const std::string& module, std::uintptr_t offset) {
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "0x%zx", static_cast<std::size_t>(offset));
    std::string path = module;
    std::string name = "addr2line";
    std::string options = "-Cfpie";
    const std::array<char*, 5> arguments{name.data(), options.data(), path.data(), text.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    pid_t child = 0;
    const bool started =
        posix_spawnp(&child, name.c_str(), &actions, nullptr, arguments.data(), environ) == 0;
    if (started) {
        (void)waitpid(child, nullptr, 0);
    }
    posix_spawn_file_actions_destroy(&actions);
    return started;
}

void printFrame(int number, void* frame) {
    Dl_info info{};
    if (dladdr(frame, &info) == 0 || info.dli_fname == nullptr) {
        std::fprintf(stderr, "  #%d %p\n", number, frame);
        return;
    }
    const auto offset =
        reinterpret_cast<std::uintptr_t>(frame) - reinterpret_cast<std::uintptr_t>(info.dli_fbase);
    std::fprintf(stderr, "  #%d %s+0x%zx ", number, info.dli_fname, static_cast<std::size_t>(offset));
    std::fflush(stderr);
    // One less: the frame is where the call returns to, which may be the next line.
    if (!printSource(info.dli_fname, offset - 1)) {
        std::fprintf(stderr, "\n");
    }
}

}  // namespace

void prepareThreadStacks() {
    // The first call loads a library, which the handler must not.
    (void)backtrace(g_frames.data(), kMostFrames);
    struct sigaction action {};
    action.sa_handler = writeDownFrames;
    action.sa_flags = SA_RESTART;
    (void)sigaction(stackSignal(), &action, nullptr);
}

void printThreadStacks() {
    (void)std::signal(SIGALRM, SIG_DFL);
    (void)alarm(kMostSeconds);
    for (const pid_t thread : otherThreads()) {
        g_written = false;
        const bool sent = syscall(SYS_tgkill, getpid(), thread, stackSignal()) == 0;
        // A thread that blocks signals does not answer.
        for (int i = 0; sent && !g_written && i < 200; ++i) {
            (void)usleep(5000);
        }
        std::fprintf(stderr, "Thread %d%s\n", static_cast<int>(thread), g_written ? ":" : ": no answer");
        // Ahead of the thread's own frames stand the handler and the system's call of it.
        for (int i = 2; g_written && i < g_count; ++i) {
            printFrame(i - 2, g_frames[static_cast<std::size_t>(i)]);
        }
    }
    (void)alarm(0);
}

bool anotherThreadWorks() {
    // What this question itself costs, and the sanitizers' own threads, stay below.
    constexpr std::int64_t kLittle = 5'000'000;
    static std::int64_t before = 0;
    timespec time{};
    (void)clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    const std::int64_t now = std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
    const bool worked = now - before > kLittle;
    before = now;
    if (worked) {
        return true;
    }
    for (const pid_t thread : otherThreads()) {
        std::ifstream stat("/proc/self/task/" + std::to_string(thread) + "/stat");
        const std::string text{std::istreambuf_iterator<char>(stat), {}};
        // The state stands behind the name, which may hold anything but is in parentheses.
        const std::size_t name = text.rfind(')');
        const char state = name == std::string::npos || name + 2 >= text.size() ? 'S' : text[name + 2];
        if (state != 'S') {
            return true;
        }
    }
    return false;
}

}  // namespace orvantis::test
