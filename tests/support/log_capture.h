// Switches the diagnostic log on for this process, into a profile folder of the test's own, and reads the
// files back. Depends on nothing of the log itself: the log may live in the test program or in a plug-in that
// the test loads. Create it before the first call that enters the plug-in, and, to remove the files at the
// end, destroy it after the log was closed (closeLog, or unloading the plug-in).
#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/log_redirection.h"
#include "tests/support/temp_folder.h"

namespace orvantis::test {

class LogCapture {
 public:
    enum class Switch { kOn, kMissing };

    explicit LogCapture(Switch initial = Switch::kOn);

    /// The switch and the profile folder, for tests of the log itself.
    LogRedirection& redirection() noexcept { return m_redirection; }

    /// The profile folder, and the folder of the log files in it.
    const std::filesystem::path& profile() const noexcept { return m_profile; }
    std::filesystem::path logFolder() const { return m_profile / "orvantis" / "adobe"; }

    /// The log files made since this object exists, sorted by name.
    std::vector<std::filesystem::path> files() const;

    /// All lines of the one log file, headers masked (maskedLine); empty when there is no file. Throws
    /// std::runtime_error when there are several files or a line does not end in CR LF.
    std::vector<std::string> lines() const;

    /// The lines that came since the last call of this function or takeBytes(). A line that is being written
    /// while this looks comes whole with a later call.
    std::vector<std::string> takeLines();

    /// The same as the bytes of whole lines, headers and line ends as they are. Reads no byte of the file
    /// twice. Throws std::runtime_error when there are several files.
    std::string takeBytes();

 private:
    TempFolder m_folder;
    LogRedirection m_redirection;
    std::filesystem::path m_profile;
    std::set<std::filesystem::path> m_strangers;  ///< files that were there before
    std::uintmax_t m_read = 0;                    ///< bytes of the file
    std::string m_begun;                          ///< those of them behind the last line end
};

/// The lines of a log file's bytes without their CR LF, headers masked. Throws std::runtime_error when the
/// bytes hold a CR or LF alone or do not end in CR LF.
std::vector<std::string> logLines(std::string_view bytes);

/// "[2026-11-15 22:10:09] [5312] text" as "[T] [#] text"; a line without exactly such a header as it is.
std::string maskedLine(std::string_view line);

/// The thread number in a line's header; 0 without a header.
std::uint32_t threadOfLine(std::string_view line);

}  // namespace orvantis::test
