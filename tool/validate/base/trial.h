// One run of one check in a child process: what it has to work with, and what it found. Main thread of the
// child only, unless a function says otherwise.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "tool/validate/base/outcome.h"

namespace simhost::tool::validate {

struct ClipFile {
    std::string path;   ///< UTF-8, absolute
    bool made = false;  ///< by the tool, for want of others
};

/// What all checks of one process share.
struct TrialSetting {
    std::string plugin;         ///< UTF-8 path
    std::string libraryFolder;  ///< searched first for what the plug-in imports; empty for none
    std::string workFolder;     ///< of this process alone: what lies in it goes with it
    std::vector<ClipFile> clips;
    std::vector<std::string> lostPhases;  ///< work that ended an earlier process, see Trial::phase
    /// Told of each phase that begins, and with an empty name that it is over.
    std::function<void(const std::string&)> atPhase;
};

/// Ends a check that does not apply; the text says why.
class Skipped : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

class Trial {
 public:
    Trial(const TrialSetting& setting, const std::string& checkId, std::uint64_t seed);

    const TrialSetting& setting() const noexcept { return m_setting; }
    /// The same numbers whatever ran before.
    std::mt19937_64& random() noexcept { return m_random; }
    std::uint64_t draw(std::uint64_t below);

    /// What is found several times is told once; a file in the work folder is called by its name, since it
    /// goes with the process. Any thread.
    void fail(Finding finding);
    /// Any thread.
    void warn(Finding finding);
    [[noreturn]] static void skip(const std::string& reason) { throw Skipped(reason); }
    bool hasFindings() const;
    std::vector<Finding> findings() const;

    /// Runs work that many checks build on, under a name. When that work has ended a process before, the
    /// check is skipped: one crash shall cost one check.
    void phase(const std::string& name, const std::function<void()>& work);

    /// A path in the work folder that nothing has been written to.
    std::string freshPath(const std::string& name);

 private:
    std::string clipWords(const std::string& path) const;

    const TrialSetting& m_setting;
    std::mt19937_64 m_random;
    mutable std::mutex m_mutex;
    std::vector<Finding> m_findings;
};

}  // namespace simhost::tool::validate
