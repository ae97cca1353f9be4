#include "log_lines.h"

#include <string_view>

#include "diag/log.h"

namespace orvantis::audio_test {

LogLines::LogLines() {
    readLogSwitch();
    logMessage("-- the log opens with this line, and with some of its own --");
    clear();
}

LogLines::~LogLines() {
    closeLog();
}

Lines LogLines::take() {
    constexpr std::string_view kHeader = "[T] [#] ";
    Lines messages;
    for (const std::string& line : m_capture.takeLines()) {
        const std::string message =
            line.starts_with(kHeader) ? line.substr(kHeader.size()) : "no header: " + line;
        if (!message.starts_with("Acquiring suite: ") && !message.starts_with("Releasing suite: ")) {
            messages.push_back(message);
        }
    }
    return messages;
}

}  // namespace orvantis::audio_test
