#include "tests/tool/running_tool.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

extern char** environ;

RunningTool::RunningTool(const std::vector<std::string>& arguments) {
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    std::vector<std::string> all = arguments;
    all.insert(all.begin(), ORVANTIS_BUILT_TOOL);
    std::vector<char*> words;
    for (std::string& word : all) {
        words.push_back(word.data());
    }
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    (void)posix_spawn_file_actions_init(&actions);
    (void)posix_spawn_file_actions_adddup2(&actions, pipe[1], 2);
    pid_t process = 0;
    const int failed = posix_spawn(&process, ORVANTIS_BUILT_TOOL, &actions, nullptr, words.data(), environ);
    (void)posix_spawn_file_actions_destroy(&actions);
    (void)::close(pipe[1]);
    m_process = process;
    m_errors = pipe[0];
    if (failed != 0) {
        throw std::runtime_error("cannot start the tool");
    }
}

RunningTool::~RunningTool() {
    if (m_process != 0) {
        (void)::kill(static_cast<pid_t>(m_process), SIGKILL);
        (void)::waitpid(static_cast<pid_t>(m_process), nullptr, 0);
    }
    (void)::close(static_cast<int>(m_errors));
}

bool RunningTool::waitFor(const std::string& text) {
    std::string read;
    std::array<char, 256> block{};
    while (read.find(text) == std::string::npos) {
        const ssize_t count = ::read(static_cast<int>(m_errors), block.data(), block.size());
        if (count <= 0) {
            return false;
        }
        read.append(block.data(), static_cast<std::size_t>(count));
    }
    return true;
}

void RunningTool::interrupt() const {
    (void)::kill(static_cast<pid_t>(m_process), SIGINT);
}

int RunningTool::wait() {
    (void)waitFor("\x01");  // which never comes: up to the stream's end
    int status = 0;
    (void)::waitpid(static_cast<pid_t>(m_process), &status, 0);
    m_process = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}
