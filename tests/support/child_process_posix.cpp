// See child_process.h.

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

#include "tests/support/child_process.h"

extern char** environ;

namespace orvantis::test {

ChildProcess::ChildProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments)
    : m_process(0) {
    std::vector<std::string> words{program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    pid_t id = 0;
    if (::posix_spawn(&id, program.c_str(), nullptr, nullptr, pointers.data(), environ) != 0) {
        throw std::runtime_error("cannot start " + program.string());
    }
    m_process = id;
}

ChildProcess::~ChildProcess() {
    (void)wait();
}

int ChildProcess::wait() {
    if (m_process != 0) {
        int status = 0;
        while (::waitpid(static_cast<pid_t>(m_process), &status, 0) < 0 && errno == EINTR) {
        }
        m_process = 0;
        m_exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return m_exitCode;
}

std::filesystem::path thisProgram() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

std::uint32_t thisProcessId() {
    return static_cast<std::uint32_t>(::getpid());
}

std::uint32_t thisThreadId() {
    return static_cast<std::uint32_t>(::gettid());
}

}  // namespace orvantis::test
