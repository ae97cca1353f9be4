// What the code under test logs from here on. The log is switched on by the first object of the process and
// stays on, as it does in the plug-in; all objects of a process read one log file in a folder that is removed
// at the end.
#pragma once

#include <string>
#include <vector>

namespace orvantis::test {

class CapturedLog {
 public:
    CapturedLog();
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    /// The lines since construction or the last clear(), without time and thread.
    std::vector<std::string> lines();
    /// Those of them that are not about suites, for tests of which suites are a side issue: they belong to
    /// another folder, and the first use of a suite brings them.
    std::vector<std::string> linesWithoutSuites();
    /// lines() and clear() in one.
    std::vector<std::string> take();
    std::vector<std::string> takeWithoutSuites();
    void clear();

 private:
    std::vector<std::string> m_lines;
};

}  // namespace orvantis::test
