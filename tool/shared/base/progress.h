// A progress bar on the error stream with the time left, redrawn at most ten times a second, and at
// the end. Main thread only.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace simhost::tool {

class Progress {
 public:
    /// Draws nothing unless `enabled`.
    Progress(bool enabled, std::string what, std::uint64_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    /// Clears the bar.
    ~Progress();
    /// Throws a ToolError once the program is to end.
    void advance(std::uint64_t count = 1);

 private:
    void draw() const;

    bool m_enabled;
    std::string m_what;
    std::uint64_t m_total;
    std::uint64_t m_done = 0;
    std::chrono::steady_clock::time_point m_started = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point m_nextDraw;
};

}  // namespace simhost::tool
