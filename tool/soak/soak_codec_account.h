// What is open in the codec library, told from the list of calls that the stand-in library writes (its
// ORVANTIS_STANDIN_LOG). The maker's library writes none; then nothing is known. One thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace simhost::tool {

class CodecAccount {
 public:
    /// `pathUtf8`: where the library writes. The file is deleted now and with the account.
    explicit CodecAccount(std::string pathUtf8);
    CodecAccount(const CodecAccount&) = delete;
    CodecAccount& operator=(const CodecAccount&) = delete;
    ~CodecAccount();

    const std::string& path() const noexcept { return m_path; }

    /// Reads what was written since, and deletes it, so that a long run needs no room. Call while no call
    /// runs.
    void update();

    /// One line of the list, "#7 T1 open(-> 0x10001) = 0".
    void take(std::string_view line);

    bool known() const noexcept { return m_calls > 0; }
    std::uint64_t calls() const noexcept { return m_calls; }
    std::uint64_t failedCalls() const noexcept { return m_failed; }
    std::int64_t initialisations() const noexcept { return m_initialisations; }  ///< not undone
    std::int64_t sessions() const noexcept { return m_sessions; }                ///< not closed
    bool isBalanced() const noexcept { return m_initialisations == 0 && m_sessions == 0; }

 private:
    std::string m_path;
    std::uint64_t m_calls = 0;
    std::uint64_t m_failed = 0;
    std::int64_t m_initialisations = 0;
    std::int64_t m_sessions = 0;
};

}  // namespace simhost::tool
