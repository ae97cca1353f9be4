// By the hooks of the native twin of the plug-in's file.
#include <dirent.h>

#include <cstdlib>

#include "fileio/file_hooks_posix.h"
#include "tool/soak/session_files.h"

namespace simhost::tool {
namespace {

// Of this process, one more for the question itself.
std::uint64_t descriptors() {
    std::uint64_t count = 0;
    if (DIR* const folder = opendir("/proc/self/fd")) {
        while (readdir(folder) != nullptr) {
            ++count;
        }
        (void)closedir(folder);
    }
    return count;
}

}  // namespace

struct SessionFiles::State {
    orvantis::test::FileHooks hooks;
    orvantis::test::FileOperationHook* failing = nullptr;
    std::uint64_t openBefore = 0;
    std::uint64_t descriptorsBefore = 0;

    std::uint64_t open() const { return hooks.opened - hooks.closes; }
};

SessionFiles::SessionFiles(const void* /*inPlugin*/) : m_state(std::make_unique<State>()) {
    const std::string address = std::to_string(reinterpret_cast<std::uintptr_t>(&m_state->hooks));
    (void)setenv(orvantis::test::kFileHooksVariable, address.c_str(), 1);
}

SessionFiles::~SessionFiles() {
    (void)unsetenv(orvantis::test::kFileHooksVariable);
}

void SessionFiles::begin() {
    m_state->openBefore = m_state->open();
    m_state->descriptorsBefore = descriptors();
    strike({});
}

void SessionFiles::strike(const std::optional<ReadFault>& fault) {
    orvantis::test::FileHooks& hooks = m_state->hooks;
    for (auto* hook : {&hooks.reads, &hooks.seeks, &hooks.opens}) {
        hook->failAt = 0;
        hook->count = 0;
        hook->failFromThere = false;
    }
    m_state->failing = nullptr;
    if (fault) {
        m_state->failing = fault->kind == ReadFault::Kind::kRead   ? &hooks.reads
                           : fault->kind == ReadFault::Kind::kSeek ? &hooks.seeks
                                                                   : &hooks.opens;
        m_state->failing->failFromThere = fault->fromThenOn;
        m_state->failing->failAt = fault->nth;
    }
}

std::uint64_t SessionFiles::struck() const {
    const auto* hook = m_state->failing;
    if (hook == nullptr || hook->count < hook->failAt) {
        return 0;
    }
    return hook->failFromThere ? hook->count - hook->failAt + 1 : 1;
}

std::string SessionFiles::heldOf(const std::string& /*pathUtf8*/) const {
    const std::uint64_t held = m_state->open() - m_state->openBefore;
    if (held != 0) {
        return std::to_string(held) + " open files";
    }
    const std::uint64_t now = descriptors();
    return now == m_state->descriptorsBefore ? std::string()
                                             : std::to_string(now) + " file descriptors instead of " +
                                                   std::to_string(m_state->descriptorsBefore);
}

}  // namespace simhost::tool
