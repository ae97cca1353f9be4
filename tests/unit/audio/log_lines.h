// The messages of this folder's code in the order of the log, without time and thread. The log stays on for
// the rest of the process, so tests that need it off are a program of their own.
#pragma once

#include <string>
#include <vector>

#include "tests/support/captured_log.h"

namespace orvantis::audio_test {

using Lines = std::vector<std::string>;

/// One at a time. Create it ahead of what logs.
class LogLines {
 public:
    /// The lines since the last call. Those about host suites are left out: they belong to another folder,
    /// and the first use of a suite brings them.
    Lines take() {
        Lines lines = m_log.linesWithoutSuites();
        m_log.clear();
        return lines;
    }
    void clear() { m_log.clear(); }

 private:
    test::CapturedLog m_log;
};

}  // namespace orvantis::audio_test
