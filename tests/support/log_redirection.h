// Gives this process, and every module loaded into it, a log switch and a profile folder of its own, so that
// tests which run side by side neither share a log nor touch the user's settings. Windows: HKEY_CURRENT_USER
// is replaced for this process by a private key, which also holds the place of the profile folder. Native
// builds: environment variables that plugin/diag/log_platform_posix.cpp reads. Used by LogCapture; one at a
// time per process.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace orvantis::test {

class LogRedirection {
 public:
    /// No switch value, and `profile` (an existing folder) as the profile folder.
    explicit LogRedirection(const std::filesystem::path& profile);
    /// Removes the redirection. A log that is still open stays where it is.
    ~LogRedirection();
    LogRedirection(const LogRedirection&) = delete;
    LogRedirection& operator=(const LogRedirection&) = delete;

    void setSwitch(std::uint32_t value);  ///< EnableAdobeLog as a REG_DWORD
    void removeSwitch();
#ifdef _WIN32
    /// EnableAdobeLog with any registry type (REG_SZ, REG_BINARY, ...) and any bytes.
    void setSwitch(std::uint32_t type, const void* bytes, std::uint32_t size);
#endif
    /// Moves the profile folder. A folder that does not exist makes the lookup fail.
    void setProfile(const std::filesystem::path& profile);

    /// Where the log's folder lookup really ends up: the redirected folder, or the user's own on a system
    /// that does not let itself be redirected. Empty when the lookup fails.
    std::filesystem::path effectiveProfile() const;

    /// Call first in a child process that was started while a redirection was in force: applies it there too.
    /// Without one it does nothing.
    static void inherit();

 private:
    std::string m_key;  ///< the private key's path; unused in native builds
};

}  // namespace orvantis::test
