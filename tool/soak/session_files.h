// The plug-in's file operations in random sessions: lets one fail, and tells what it has left open.
// Implemented by session_files_win32.cpp and session_files_posix.cpp. One object at a time; main thread only,
// while no call is inside the plug-in.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tool/soak/session_plan.h"

namespace simhost::tool {

class SessionFiles {
 public:
    /// `inPlugin` is any address inside the plug-in, which must outlive this object.
    explicit SessionFiles(const void* inPlugin);
    SessionFiles(const SessionFiles&) = delete;
    SessionFiles& operator=(const SessionFiles&) = delete;
    ~SessionFiles();

    /// Nothing fails, and what is held now is not told of later.
    void begin();
    /// Operations are counted from here on for the fault, if there is one.
    void strike(const std::optional<ReadFault>& fault);
    /// How often the fault has struck.
    std::uint64_t struck() const;
    /// What is held that was not at begin(), of the file at this UTF-8 path or otherwise; empty for nothing.
    std::string heldOf(const std::string& pathUtf8) const;

 private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace simhost::tool
