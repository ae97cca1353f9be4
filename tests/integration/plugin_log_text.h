// The plug-in's log as text that tests compare with: time, thread and addresses masked, the rest letter for
// letter.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/log_capture.h"

/// What LogCapture::takeBytes gives, as text. The log must be switched on and written to one file.
class LogText {
 public:
    /// `capture` must outlive this. Paths in `folderUtf8` are shown as "<folder>/name".
    LogText(orvantis::test::LogCapture& capture, std::string folderUtf8)
        : m_capture(&capture), m_folder(std::move(folderUtf8)) {}

    /// The lines since the last call of a function of this object, as they compare with a raw string:
    ///     "\nfirst line\nsecond line\n"
    /// Addresses are shown as <address>, null ones as <null>. A line that ends in a blank gets a '$' behind
    /// it, so that the blank can be seen and no editor takes it away. The path behind "Application: " is
    /// shown as <host>.
    std::string news();
    /// What news() says behind the first line that is `line`, for tests whose subject comes there. Throws
    /// std::runtime_error when no line is.
    std::string newsBehind(std::string_view line);
    /// news(), one text for each thread that wrote, in the order of its first line.
    std::vector<std::string> newsByThread();
    /// news() as single lines.
    std::vector<std::string> newLines();

 private:
    struct Line {
        std::uint32_t thread;
        std::string text;
    };
    std::vector<Line> take();

    orvantis::test::LogCapture* m_capture;
    std::string m_folder;
};

/// One line with its addresses masked as LogText does it.
std::string maskedAddresses(std::string_view line);
