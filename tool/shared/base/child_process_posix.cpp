// Child processes for native builds, in the place of tool/shared/base/child_process_win32.cpp.
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "tool/shared/base/child_process.h"

extern char** environ;

namespace simhost::tool {
namespace {

std::uint32_t exitCodeOf(int status) {
    return static_cast<std::uint32_t>(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
}

// Waits until the process has ended or the time is over, without taking its exit code.
void waitForEnd(pid_t process, std::chrono::milliseconds patience) {
    const int watched = static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
    if (watched >= 0) {
        pollfd wanted{watched, POLLIN, 0};
        (void)::poll(&wanted, 1, static_cast<int>(patience.count()));
        (void)::close(watched);
    } else {
        (void)::poll(nullptr, 0, static_cast<int>(std::min<std::int64_t>(patience.count(), 20)));
    }
}

}  // namespace

std::string thisProgramFile() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

void endWithParent() {
    (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const std::string& outputUtf8) {
    std::vector<std::string> words{thisProgramFile()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    (void)::posix_spawn_file_actions_init(&actions);
    (void)::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputUtf8.c_str(),
                                             O_WRONLY | O_CREAT | O_TRUNC, 0600);
    (void)::posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t id = 0;
    const int error = ::posix_spawn(&id, words.front().c_str(), &actions, nullptr, pointers.data(), environ);
    (void)::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error("cannot start '" + words.front() + "': " + std::strerror(error));
    }
    m_process = id;
}

ChildProcess::~ChildProcess() {
    kill();
}

std::optional<std::uint32_t> ChildProcess::waitFor(std::chrono::milliseconds patience) {
    if (m_process == 0) {
        return m_exitCode;
    }
    const auto process = static_cast<pid_t>(m_process);
    int status = 0;
    pid_t ended = ::waitpid(process, &status, WNOHANG);
    if (ended == 0 && patience.count() > 0) {
        waitForEnd(process, patience);
        ended = ::waitpid(process, &status, WNOHANG);
    }
    if (ended == 0 || (ended < 0 && errno == EINTR)) {
        return std::nullopt;
    }
    m_process = 0;
    m_exitCode = ended < 0 ? 255 : exitCodeOf(status);
    return m_exitCode;
}

double ChildProcess::worked() const {
    clockid_t clock{};
    timespec time{};
    if (m_process == 0 || ::clock_getcpuclockid(static_cast<pid_t>(m_process), &clock) != 0 ||
        ::clock_gettime(clock, &time) != 0) {
        return 0;
    }
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void ChildProcess::kill() {
    if (m_process != 0) {
        (void)::kill(static_cast<pid_t>(m_process), SIGKILL);
        while (!waitFor(std::chrono::milliseconds(1000))) {
        }
    }
}

}  // namespace simhost::tool
