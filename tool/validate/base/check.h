// One check of the validator: a rule that the host holds importers to, and what tries it. A check registers
// itself when the program starts, from the file that it is written in.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace simhost::tool::validate {

class Trial;

inline constexpr int kLowestLevel = 1;
inline constexpr int kHighestLevel = 10;

struct Check {
    std::string id;      ///< "group.name", for people and scripts: never changed once released
    int level = 1;       ///< 1 nothing works without it, 10 takes long or is for the strictest
    std::string rule;    ///< one sentence
    std::string reason;  ///< why the host needs it
    /// Tries it, and notes what is wrong in the trial. Runs in a child process, on its main thread.
    std::function<void(Trial&)> body;
};

/// The part of an id before the dot.
std::string_view checkGroup(const Check& check) noexcept;

class Registered {
 public:
    explicit Registered(Check check);
};

/// All of them, by group in the order in which a host uses a plug-in, then by level and id. Main thread only.
const std::vector<Check>& allChecks();

/// The check of that id, or null.
const Check* findCheck(std::string_view id);

}  // namespace simhost::tool::validate
