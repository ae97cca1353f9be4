// The messages of this folder's code in the order of the log, without time and thread. The log stays on for
// the rest of the process, so tests that need it off are a program of their own.
#pragma once

#include <string>
#include <vector>

#include "tests/support/log_capture.h"

namespace orvantis::audio_test {

using Lines = std::vector<std::string>;

/// One at a time. Create it ahead of what logs, and destroy it last.
class LogLines {
 public:
    LogLines();
    ~LogLines();
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    /// The lines since the last call. Those about host suites are left out: they belong to another folder,
    /// and the first use of a suite brings them.
    Lines take();
    void clear() { (void)take(); }

 private:
    test::LogCapture m_capture;
};

}  // namespace orvantis::audio_test
