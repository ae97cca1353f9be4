#include "tests/support/captured_log.h"

#include <cstdlib>
#include <stdexcept>

#include "diag/log.h"
#include "tests/support/log_capture.h"

namespace orvantis::test {

namespace {

// Closes the log before its folder goes.
struct ProcessLog {
    LogCapture capture;

    ProcessLog() { readLogSwitch(); }
    ~ProcessLog() { closeLog(); }
};

LogCapture& processCapture() {
    static ProcessLog log;
    return log.capture;
}

}  // namespace

CapturedLog::CapturedLog() {
    processCapture();
    logMessage("captured from here on");  // opens the log, whose opening lines are no test's business
    clear();
}

void CapturedLog::clear() {
    processCapture().takeLines();
    m_lines.clear();
}

std::vector<std::string> CapturedLog::lines() {
    const std::string header = "[T] [#] ";
    for (const std::string& line : processCapture().takeLines()) {
        if (!line.starts_with(header)) {
            throw std::runtime_error("log line without a header: " + line);
        }
        m_lines.push_back(line.substr(header.size()));
    }
    return m_lines;
}

std::vector<std::string> CapturedLog::linesWithoutSuites() {
    std::vector<std::string> result = lines();
    std::erase_if(result, [](const std::string& line) {
        return line.starts_with("Acquiring suite: ") || line.starts_with("Releasing suite: ");
    });
    return result;
}

std::vector<std::string> CapturedLog::take() {
    std::vector<std::string> result = lines();
    m_lines.clear();
    return result;
}

std::vector<std::string> CapturedLog::takeWithoutSuites() {
    std::vector<std::string> result = linesWithoutSuites();
    m_lines.clear();
    return result;
}

}  // namespace orvantis::test
